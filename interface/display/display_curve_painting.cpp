// What a curve looks like.

#include <algorithm>
#include <cmath>

#include "gui/graphics/curve_shapes.hpp"
#include "interface/display/compression.hpp"
#include "interface/display/display_curve.hpp"

namespace vanta::interface {

void DisplayCurve::paintStrip(gui::Canvas& canvas, const gui::Rect& area, int stripWidth) {
    if (!enabled_) return;
    painted_ = std::min(static_cast<int>(area.right), stripWidth);
    // A curve starts at a whole device pixel, where a column need not: then the one before it does.
    const float inPixels = area.left * canvas.scale();
    const int before = inPixels == std::floor(inPixels) ? 0 : 1;
    gui::Rect aligned = area;
    aligned.left -= static_cast<float>(before);
    const gui::Canvas::State saved = canvas.state();
    canvas.clip = canvas.clip.value().intersected(area);
    paint(canvas, gui::Graph(table_, kTableLead - before), aligned, 255);
    canvas.setState(saved);
}

void DisplayCurve::paintTable(gui::Canvas& canvas, const gui::Rect& area, int alpha) const {
    paint(canvas, gui::Graph(table_, kTableLead), area, alpha);
}

void DisplayCurve::paintHalved(gui::Canvas& canvas, const gui::Rect& area) const {
    paint(canvas, gui::Graph(halved_, kTableLead), area, 255);
}

void DisplayCurve::paintRest(gui::Canvas& canvas, const gui::Rect& area, int alpha) const {
    const float position = restPosition();
    if (!enabled_ || !(position >= area.top && position < area.bottom)) return;
    paint(canvas, gui::Cubic({0.0f, position}, 0.0f, {area.width(), position}, 0.0f), area, alpha);
}

void DisplayCurve::paint(gui::Canvas& canvas, const gui::Curve& shape, const gui::Rect& area,
                         int alpha) const {
    const gui::Gradient gradient = lineGradient.value().scaled(alpha);
    gui::CurveSet set;
    gui::CurveEntry& entry = set.entries[0];
    entry.curve = &shape;
    entry.above = aboveColor.value().withAlpha(alpha);
    entry.line = lineColor.value().withAlpha(alpha);
    entry.lineGradient = gradient.isEmpty() ? nullptr : &gradient;
    entry.below = belowColor.value().withAlpha(alpha);
    entry.lineWidth = lineWidth;
    set.top = entry.above;
    set.bottom = bottomColor.value().withAlpha(alpha);
    gui::Rect shaded = area;
    shaded.top += static_cast<float>(topMargin);
    shaded.bottom -= static_cast<float>(bottomMargin);
    canvas.drawCurves(set, shaded, {area.left, area.top}, gui::Canvas::CurveOrientation::OverX);
}

}  // namespace vanta::interface
