#pragma once

#include <array>
#include <optional>

#include "gui/graphics/geometry.hpp"

namespace vanta::gui {

/// An antialiased line as a grid of four by four points in device pixels: full colour at the four in the
/// middle, none at those around, and in between whatever interpolation gives.
struct LineShape {
    /// Runs along y: x and y change their roles in all that follows.
    bool isSteep;
    /// Of the columns along x, from left to right.
    std::array<float, 4> along;
    /// Of the line's upper edge of pixels, at each column.
    std::array<float, 4> middle;
    /// Of the rows, counted from `middle`.
    std::array<float, 4> across;

    /// How much of the pixel with this centre it covers, 0 to 1.
    float coverage(float x, float y) const;
};

/// Nothing for a line that has no length, or no width.
std::optional<LineShape> lineShape(Point from, Point to, float width, float scale);

}  // namespace vanta::gui
