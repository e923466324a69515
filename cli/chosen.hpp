#pragma once

#include <optional>
#include <string>

#include "audiofile/file_format.hpp"
#include "foundation/channel_layout.hpp"

namespace vanta {

/// What the user chose by name; nothing for an empty one. UsageError for an unknown name lists the known
/// ones.
std::optional<ChannelLayout> chosenLayout(const std::string& name);
const FileType* chosenFileType(const std::string& name);
const FileSubtype* chosenFileSubtype(const std::string& name);

}  // namespace vanta
