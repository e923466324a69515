#pragma once

#include <optional>
#include <string>

#include "foundation/channel_layout.hpp"

namespace vanta {

/// The layout that the user chose by name; nothing for an empty one. UsageError for an unknown name lists the
/// known ones. Apart from cli/chosen.hpp, so that who handles no files needs no library for them.
std::optional<ChannelLayout> chosenLayout(const std::string& name);

}  // namespace vanta
