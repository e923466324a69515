#pragma once

#include "limiter/processor/style_routing.hpp"
#include "limiter/styles/engine_layout.hpp"
#include "limiter/styles/style_values.hpp"

namespace vanta {

/// What the path around the engine must know of a style that nobody has written an entry for, from its
/// wiring: the last two VCAs through which audio reaches Output. Without any, the first VCA that does not
/// run, which turns nothing down. No Convolver is tapped.
StyleRouting patchRouting(const EngineLayout& layout, StyleValues values);

}  // namespace vanta
