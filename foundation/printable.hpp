#pragma once

#include <string>
#include <string_view>

namespace vanta {

/// Text from elsewhere, such as the name of a file, that is safe to show on a terminal: control characters
/// are written as \xNN, line ends as \n. UTF-8 stays.
std::string printable(std::string_view text);

}  // namespace vanta
