#pragma once

#include <span>
#include <string>
#include <vector>

#include "limiter/styles/engine_layout.hpp"

namespace vanta {

/// What is wrong with a style, and at which of its values.
struct StyleFault {
    int position;
    std::string message;
};

/// Every fault of a full set of values in table order: a value outside its range, a count above what is
/// built or counted, a slot at an element that is not active, a connection made twice, a slot that would
/// close a loop, which the engine would leave off without a word, and a style that is silent.
std::vector<StyleFault> checkStyle(const EngineLayout& layout, std::span<const float> values);

/// Whether what the parameter belongs to is active; true for everything that no count switches.
bool isActive(const EngineLayout& layout, std::span<const float> values, int position);

/// "Num Active Detectors is 2", the reason why an element of this kind may be inactive.
std::string activeCountText(const EngineLayout& layout, std::span<const float> values, ElementKind kind);

}  // namespace vanta
