#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vanta {

std::vector<std::string> splitAtCommas(std::string_view text);

/// Shortens a label step by step until it has at most `maxLength` characters: known words, then the first
/// letters of all words but the last, then the vowels of the last. 0 means no limit.
std::string abbreviate(std::string text, int maxLength);

struct Replacement {
    std::string_view what;
    std::string_view by;
};
/// Replaces every occurrence.
void replaceAll(std::string& text, const Replacement& replacement);

}  // namespace vanta
