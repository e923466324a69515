#pragma once

#include <algorithm>
#include <string_view>

namespace vanta {

// Characters of ASCII, whatever the locale; bytes of UTF-8 are none of these and stay as they are.

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
constexpr char lowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
/// Compares without regard to the case of letters.
constexpr bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lowerCase(x) == lowerCase(y); });
}

/// Without the blanks, tabs and line ends around it.
constexpr std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace vanta
