#pragma once

#include <array>
#include <span>

#include "gui/graphics/color.hpp"
#include "gui/graphics/gradient.hpp"

namespace vanta::gui {

/// A line over x or, where it is drawn so, over y. In logical units.
class Curve {
public:
    virtual ~Curve() = default;
    virtual float valueAt(float x) const = 0;
};

struct CurveEntry {
    const Curve* curve = nullptr;
    Color above;  ///< just above the line
    Color line;
    const Gradient* lineGradient = nullptr;  ///< takes the place of `line`: over the height of the area
    Color below;                             ///< just below the line
    float lineWidth = 1.0f;                  ///< logical units
    int glowWidth = 0;                       ///< logical units
};

/// One curve, or two of which the first is the upper one, and what fills the area around them.
struct CurveSet {
    Color top;  ///< at the top of the area; from there to `above` of the upper curve
    int count = 1;
    std::array<CurveEntry, 2> entries;
    Color bottom;  ///< at the bottom of the area
};

}  // namespace vanta::gui
