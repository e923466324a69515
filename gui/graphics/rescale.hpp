#pragma once

#include <span>
#include <vector>

#include "gui/graphics/pixel.hpp"

namespace vanta::gui {

/// Rows of pixels without gaps.
struct PixelBlock {
    std::vector<Pixel> pixels;
    int width = 0;
    int height = 0;
};

/// A picture made for one density, brought to another: `factor` times as large, rounded.
///  - Half the size is the mean of each two by two pixels.
///  - Three quarters of the size keep lines of one pixel: of four columns or rows three are made, and where a
///    strong edge runs through the middle of the four, the one made there takes a side instead of mixing.
///  - Anything else is the nearest pixel.
PixelBlock rescaled(std::span<const Pixel> source, int width, int height, float factor);

}  // namespace vanta::gui
