#pragma once

#include <cstddef>

#include "gui/graphics/geometry.hpp"
#include "gui/graphics/pixel.hpp"

namespace vanta::gui {

/// Pixels that somebody else owns, drawn on within `clip`, which lies within them.
struct PixelView {
    Pixel* pixels;
    std::ptrdiff_t rowLength;
    DeviceRect clip;

    Pixel* at(int x, int y) const { return pixels + y * rowLength + x; }
};

/// Lays a pixel over a run of others, and stores it where it hides them.
void blendRun(Pixel pixel, Pixel* target, int count);

}  // namespace vanta::gui
