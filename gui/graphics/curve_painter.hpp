#pragma once

#include "gui/graphics/canvas.hpp"
#include "gui/graphics/curve.hpp"
#include "gui/graphics/pixel_view.hpp"

namespace vanta::gui {

/// Paints curves and what fills the area around them. `area` and `origin` are in device pixels; `alpha` 0 to
/// 255 fades all of it.
void paintCurves(const PixelView& view, const CurveSet& set, const DeviceRect& area, DevicePoint origin,
                 Canvas::CurveOrientation orientation, int alpha, float scale);

}  // namespace vanta::gui
