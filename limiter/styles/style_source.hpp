#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "limiter/styles/engine_layout.hpp"
#include "limiter/styles/style_error.hpp"
#include "limiter/styles/style_values.hpp"

namespace vanta {

/// Reads a style's source text, of which each line is one of
///
///     # a comment, also after the other forms
///     Num Active Detectors = 2                          a count or a number, by its full name
///     Detector 1 Mode = Smart Clipping                  a choice, by its label
///     3. Trigger Input to Det 1 Input (0.14655)         a slot: number, source, target, stored Level
///
/// A slot's Level is 0.5 where none is given, a minus in front of it inverts the slot, and "bypassed" after
/// it keeps the slot off; the number may be left out. What the text does not name keeps its default.
/// Gives all values in table order. Throws StyleError with one line `file:line: fault` for everything that
/// is wrong: unknown names and labels, numbers out of range, values given twice or for elements that are
/// not active, a slot list that differs from Num Active Slots, and whatever checkStyle() finds.
std::vector<float> parseStyleSource(const EngineLayout& layout, std::string_view text,
                                    std::string_view fileName);

/// The source text of a full set of values: all that differ from their defaults, in table order, then the
/// slots. Values of inactive elements follow as comments, as the engine makes no use of them. The values
/// must be free of faults.
std::string writeStyleSource(const EngineLayout& layout, StyleValues values);

}  // namespace vanta
