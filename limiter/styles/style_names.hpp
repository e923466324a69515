#pragma once

#include <array>
#include <string_view>

#include "limiter/styles/name_list.hpp"

namespace vanta {

/// The styles, for code that treats one in its own way. Presets, sessions and hosts store the position, so a
/// new one goes to the end, before Count.
enum class LimitingStyle { Transparent, Punchy, Dynamic, Allround, Aggressive, Modern, Bus, Safe, Count };

struct StyleRow {
    LimitingStyle style;  ///< its position in the table
    std::string_view name;
    std::string_view summary;  ///< one line for lists: what the style is good for
};

/// The styles in the order of the Style parameter. "Modern" has its source in resources/styles/modern.style
/// and its record in the resource "modern.limiter".
inline constexpr auto kStyleTable = std::to_array<StyleRow>({
    {LimitingStyle::Transparent, "Transparent", "stays out of the way of the mix and its dynamics"},
    {LimitingStyle::Punchy, "Punchy", "keeps the attack of drums up front"},
    {LimitingStyle::Dynamic, "Dynamic", "brings transients forward, then catches them in a second stage"},
    {LimitingStyle::Allround, "Allround", "a good starting point for any material"},
    {LimitingStyle::Aggressive, "Aggressive",
     "for the highest levels, with smart clipping of the shortest peaks"},
    {LimitingStyle::Modern, "Modern", "loud and clean, in two stages"},
    {LimitingStyle::Bus, "Bus", "for groups and drums, with audible glue"},
    {LimitingStyle::Safe, "Safe", "avoids distortion above all; Lookahead and Attack have no effect"},
});

inline constexpr int kStyleCount = static_cast<int>(kStyleTable.size());
static_assert(
    [] {
        int position = 0;
        for (const StyleRow& row : kStyleTable) {
            if (static_cast<int>(row.style) != position++) return false;
        }
        return position == static_cast<int>(LimitingStyle::Count);
    }(),
    "kStyleTable has one row for each enumerator, in their order");

/// Their names, separated by commas: the labels of the Style parameter.
inline constexpr std::string_view kStyleNames = NamesOf<kStyleTable>::value;

}  // namespace vanta
