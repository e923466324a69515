#pragma once

#include <string>
#include <vector>

#include "limiter/styles/engine_layout.hpp"
#include "limiter/styles/style_values.hpp"

namespace vanta {

/// What is wrong with a style, and at which of its values.
struct StyleFault {
    int position;
    std::string message;
};

/// Every fault of a full set of values in table order: a value outside its range, a count above what is
/// built or counted, a slot at an element that is not active, a connection made twice, a slot that would
/// close a loop, which the engine would silently leave off, and a style that is silent.
std::vector<StyleFault> checkStyle(const EngineLayout& layout, StyleValues values);

/// Whether what the parameter belongs to is active; true for everything that no count switches.
bool isActive(const EngineLayout& layout, StyleValues values, int position);

/// "while Num Active Detectors is 2: raise it to 3", why the third one has no effect, and what to do about
/// it.
std::string whileInactiveText(const EngineLayout& layout, StyleValues values, ElementKind kind, int element);

}  // namespace vanta
