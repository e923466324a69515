#include "interface/meters/display_grid_link.hpp"

#include <algorithm>
#include <cmath>

#include "gui/graphics/curve_shapes.hpp"
#include "interface/meters/joining_line.hpp"
#include "interface/meters/level_reading.hpp"

namespace vanta::interface {

DisplayGridLink::DisplayGridLink(gui::UserInterface& interface, gui::Animator* animatedBy)
    : AnimatedControl(interface, animatedBy) {
    if (animatedBy) animatedBy->add(this, nullptr, nullptr);
}

DisplayGridLink::~DisplayGridLink() {
    if (animator()) animator()->forget(this);
}

void DisplayGridLink::setGrids(DisplayGrid* from, DisplayGrid* to) {
    from_ = from;
    to_ = to;
    linesChanged();
}

void DisplayGridLink::linesChanged() {
    valid_ = false;
    markDirty();
}

void DisplayGridLink::propertyChanged(AbstractProperty& property) {
    AnimatedControl::propertyChanged(property);
    if (&property == &soften) valid_ = false;
    const AbstractProperty* looks[] = {&lineColor,    &fillColor, &linkColor, &linkWidth,
                                       &linkGradient, &textColor, &soften};
    if (std::ranges::find(looks, &property) != std::end(looks)) markDirty();
}

/// From the coordinates of a grid to those of this control, along the scale.
float DisplayGridLink::shiftOf(const DisplayGrid& grid) const {
    const gui::Point shift = grid.control().toWindow(gui::Point{}) - toWindow(gui::Point{});
    return isVertical() ? shift.y : shift.x;
}

DisplayGridLink::Basis DisplayGridLink::basis() const {
    return {from_->revision(), to_->revision(), shiftOf(*from_), shiftOf(*to_), strip()};
}

float DisplayGridLink::farPosition(float displayLevel) const {
    return to_->positionOf(displayLevel) + shiftOf(*to_);
}

float DisplayGridLink::nearPosition(float displayLevel) const {
    return from_->positionOf(displayLevel) + shiftOf(*from_);
}

/// 0 at the start of the far scale, 1 at its end.
float DisplayGridLink::placeOf(float farPosition) const {
    const gui::Rect& all = to_->control().localBounds();
    const gui::Rect& inset = to_->margins;
    const float start = isVertical() ? inset.top : inset.left;
    const float end = isVertical() ? all.height() - inset.bottom : all.width() - inset.right;
    return (farPosition - shiftOf(*to_) - start) / std::max(end - start, 1.0f);
}

std::vector<float> DisplayGridLink::wayOf(float displayLevel) const {
    const float far = farPosition(displayLevel);
    const JoiningWay way{nearPosition(displayLevel), far, placeOf(far), soften};
    return joiningTable(way, isVertical() ? strip().width() : strip().height());
}

bool DisplayGridLink::isWithin(float position) const {
    const gui::Rect area = strip();
    return isVertical() ? position >= area.top && position < area.bottom
                        : position >= area.left && position < area.right;
}

void DisplayGridLink::findLines() {
    lines_.clear();
    for (const Tick& tick : to_->ticks()) {
        const float level = tick.level - to_->labelShift;
        // One that begins beyond the strip would come out of nowhere.
        if (isWithin(nearPosition(level))) lines_.push_back(wayOf(level));
    }
    basis_ = basis();
    valid_ = true;
}

void DisplayGridLink::animate() {
    if (!isShown() || !from_ || !to_) return;
    if (valid_ && basis() != basis_) {
        valid_ = false;
        markDirty();
    }
    const float level = source ? source->value(wave::LevelSource::Current) : kSilence;
    if (isSameReading(level, lastLevel_)) return;
    lastLevel_ = level;
    markDirty();
}

void DisplayGridLink::drawWay(gui::Canvas& canvas, const std::vector<float>& way, gui::Color color,
                              float width) const {
    gui::Graph graph{way};
    const auto over =
        isVertical() ? gui::Canvas::CurveOrientation::OverX : gui::Canvas::CurveOrientation::OverY;
    const gui::Rect area = strip();
    const gui::Point origin = isVertical() ? gui::Point{area.left, 0.0f} : gui::Point{0.0f, area.top};
    canvas.drawCurve(graph, color, {}, {}, width, area, origin, over);
}

void DisplayGridLink::paint(gui::Canvas& canvas) {
    if (!from_ || !to_) return;
    if (!valid_ || basis() != basis_) findLines();
    if (fillColor.value().alpha > 0) canvas.fillRect(strip(), fillColor);
    for (const std::vector<float>& way : lines_) drawWay(canvas, way, lineColor, 1.0f);
    if (!source || isSilence(lastLevel_) || !isWithin(nearPosition(lastLevel_))) return;
    const gui::Gradient& gradient = linkGradient;
    const gui::Color color =
        gradient.isEmpty() ? linkColor.value() : gradient.at(placeOf(farPosition(lastLevel_)));
    drawWay(canvas, wayOf(lastLevel_), color, linkWidth);
}

}  // namespace vanta::interface
