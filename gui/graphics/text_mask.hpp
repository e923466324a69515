#pragma once

#include <array>
#include <cstdint>

#include "gui/graphics/color.hpp"

namespace vanta::gui {

/// What black text on white covers, by the value of a pixel. Light text is lifted, because coverage mixes
/// linearly in values that are not linear in light, which thins light strokes and not dark ones.
const std::array<std::uint8_t, 256>& textCoverage(Color color);

}  // namespace vanta::gui
