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

}  // namespace vanta
