#include <algorithm>
#include <cmath>

#include "gui/tree/user_interface.hpp"
#include "interface/meters/display_grid.hpp"
#include "interface/meters/level_text.hpp"

namespace vanta::interface {
namespace {

using gui::Rect;

bool meet(const Rect& a, const Rect& b) {
    return !a.intersected(b).isEmpty();
}

Rect turned(const Rect& rect) {
    return {rect.top, rect.left, rect.bottom, rect.right};
}

/// What is left of a level line when the areas that it fully crosses are cut out of it.
std::vector<Rect> cutBy(const std::vector<Rect>& areas, const Rect& line) {
    std::vector<Rect> pieces{line};
    for (const Rect& area : areas) {
        if (!(area.top <= line.top && area.bottom >= line.bottom)) continue;
        std::vector<Rect> left;
        for (const Rect& piece : pieces) {
            const Rect before{piece.left, piece.top, std::min(piece.right, area.left), piece.bottom};
            const Rect after{std::max(piece.left, area.right), piece.top, piece.right, piece.bottom};
            if (!before.isEmpty()) left.push_back(before);
            if (!after.isEmpty()) left.push_back(after);
        }
        pieces = std::move(left);
    }
    return pieces;
}

}  // namespace

void DisplayGrid::paint(gui::Canvas& canvas) {
    ticks();
    if (showLines) {
        for (const Tick& tick : ticks_) paintLine(canvas, tick);
    }
    if (!showLabels) return;
    if (state_ != State::LabelsPainted) paintLabels();
    if (!labels_->isEmpty()) canvas.drawBitmap(*labels_, labelOrigin_);
}

void DisplayGrid::paintLine(gui::Canvas& canvas, const Tick& tick) const {
    const bool isVertical = orientation == Orientation::Vertical;
    const Rect& all = control_.localBounds();
    const Rect inset = isVertical ? margins.value() : turned(margins);
    const float width = isVertical ? all.width() : all.height();
    const Rect line{inset.left, tick.position, width - inset.right, tick.position + 1.0f / deviceScale()};

    std::vector<Rect> areas;
    if (exemptLevel.value() != tick.level) areas = exclusions;
    if (!isVertical) std::ranges::transform(areas, areas.begin(), turned);
    for (const Rect& piece : cutBy(areas, line))
        canvas.fillRect(isVertical ? piece : turned(piece), lineColor);
}

std::string DisplayGrid::numberOf(const Tick& tick) const {
    return signedNumber(format, tick.level + numberShift);
}

/// The part of the control that the numbers can take, `longest` across the scale.
Rect DisplayGrid::labelStrip(float longest) const {
    const Rect& all = control_.localBounds();
    const bool isInside = labelPosition == LabelPosition::Inside;
    if (orientation == Orientation::Horizontal) {
        if (!isInside) return {0.0f, labelInset, all.right, labelInset + longest};
        const float bottom = all.bottom - margins.value().bottom - labelInset;
        return {0.0f, bottom - longest, all.right, bottom};
    }
    const float from = isInside ? margins.value().left : 0.0f;
    const float room = all.width() - from - (isInside ? margins.value().right : 0.0f);
    const float left = from + gui::alignedOffset(labelAlignment, room, longest, labelInset);
    return {left, 0.0f, left + longest, all.bottom};
}

/// Of the number of a line.
Rect DisplayGrid::labelBounds(const Tick& tick, gui::Text& text) const {
    const float width = text.width(), height = text.height();
    const float middle = tick.position + 0.5f / deviceScale();
    const Rect strip = labelStrip(orientation == Orientation::Vertical ? width : height);
    if (orientation == Orientation::Vertical) {
        return Rect::ofSize(strip.left, middle - height / 2.0f, width, height);
    }
    return Rect::ofSize(middle - width / 2.0f, strip.top, width, height);
}

bool DisplayGrid::hasRoom(const Tick& tick, const Rect& bounds) const {
    const float edge = std::min(labelInset.value(), 2.0f);
    const Rect& all = control_.localBounds();
    if (bounds.left < edge || bounds.top < edge) return false;
    if (bounds.right > all.right - edge || bounds.bottom > all.bottom - edge) return false;
    if (exemptLevel.value() == tick.level) return true;
    return std::ranges::none_of(exclusions.value(), [&](const Rect& area) { return meet(area, bounds); });
}

void DisplayGrid::paintLabels() {
    state_ = State::LabelsPainted;
    text_->fontSize = fontSize.value();
    struct Number {
        std::string text;
        Rect bounds;
        bool isExempt;
    };
    std::vector<Number> numbers;
    Rect extentOfAll{};
    numberAreas_.clear();
    for (const Tick& tick : ticks_) {
        if (!tick.labelled) continue;
        text_->text = numberOf(tick);
        const Rect bounds = labelBounds(tick, *text_);
        if (!hasRoom(tick, bounds)) continue;
        extentOfAll = extentOfAll.united(bounds);
        numberAreas_.push_back(bounds);
        numbers.push_back({text_->text, bounds, exemptLevel.value() == tick.level});
    }
    // On a whole unit, with a unit to spare: a glyph may reach beyond its advance.
    const Rect strip{std::floor(extentOfAll.left) - 1.0f, std::floor(extentOfAll.top) - 1.0f,
                     std::ceil(extentOfAll.right) + 1.0f, std::ceil(extentOfAll.bottom) + 1.0f};
    labelOrigin_ = strip.origin();
    labels_->setLogicalSize(numbers.empty() ? 0.0f : strip.width(), numbers.empty() ? 0.0f : strip.height());
    if (numbers.empty()) return;
    labels_->fill();
    for (const Number& number : numbers) {
        text_->text = number.text;
        gui::Color color = labelColor;
        if (number.isExempt) color.alpha = 255;
        text_->color = color;
        const gui::Point at = number.bounds.origin() - labelOrigin_;
        // Centred by the capitals: the room of descenders would lift every number off its line.
        labels_->canvas().drawText(*text_, {at.x, at.y - text_->baselineOffset()});
    }
}

}  // namespace vanta::interface
