#pragma once

#include <string>

#include "audiofile/file_format.hpp"

namespace vanta {

/// What the user chose by name; null for an empty one. UsageError for an unknown name lists the known ones.
const FileType* chosenFileType(const std::string& name);
const FileSubtype* chosenFileSubtype(const std::string& name);

}  // namespace vanta
