#pragma once

#include <string>
#include <string_view>

namespace vanta {

/// Columns of what the program prints for people.
inline constexpr std::size_t kLineWidth = 96;

/// Breaks a text at blanks into lines, each with `indent` blanks in front.
std::string wrapped(std::string_view text, std::size_t indent);

}  // namespace vanta
