#pragma once

#include <array>
#include <string_view>

#include "limiter/styles/name_list.hpp"

namespace vanta {

struct StyleRow {
    std::string_view name;
    std::string_view summary;  ///< one line for lists: what the style is good for
};

/// The styles in the order of the Style parameter. "Modern" has its source in resources/styles/modern.style
/// and its record in the resource "modern.limiter".
inline constexpr auto kStyleTable = std::to_array<StyleRow>({
    {"Transparent", "stays out of the way of the mix and its dynamics"},
    {"Punchy", "keeps the attack of drums up front"},
    {"Dynamic", "brings transients forward, then catches them in a second stage"},
    {"Allround", "a good starting point for any material"},
    {"Aggressive", "for the highest levels, with smart clipping of the shortest peaks"},
    {"Modern", "loud and clean, in two stages"},
    {"Bus", "for groups and drums, with audible glue"},
    {"Safe", "avoids distortion above all; Lookahead and Attack have no effect"},
});

/// Their names, separated by commas: the labels of the Style parameter.
inline constexpr std::string_view kStyleNames = NamesOf<kStyleTable>::value;

}  // namespace vanta
