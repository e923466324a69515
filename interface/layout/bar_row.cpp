#include "interface/layout/bar_row.hpp"

#include <algorithm>

namespace vanta::interface {
namespace {

constexpr float kHeight = 20.0f;

}  // namespace

BarRow::BarRow(ControlFactory& usedFactory, gui::Control& parent) : factory_(usedFactory) {
    bar_ = &factory_.add<gui::ControlBar>(gui::Rect::ofSize(0.0f, 0.0f, 1.0f, kHeight));
    bar_->parent = &parent;
    // A bar is nothing that could be hit, but what it holds is.
    bar_->hitThreshold = -1;
}

gui::Control& BarRow::addGap(float width) {
    gui::Control& gap = factory_.add<gui::Control>(gui::Rect::ofSize(0.0f, 0.0f, width, 1.0f));
    gap.parent = bar_;
    gap.hitThreshold = 255;
    return gap;
}

void BarRow::setFlexible(gui::Control& control, float least, float most) {
    flexible_ = &control;
    least_ = least;
    most_ = most;
}

float BarRow::leastWidth() const {
    float width = flexible_ ? least_ : 0.0f;
    for (const gui::Control* child : bar_->children()) {
        if (child->visible && child != flexible_) width += child->localBounds().width();
    }
    return width;
}

void BarRow::place(float left, float top, float width, float spare) {
    if (flexible_) flexible_->setWidth(std::clamp(width - spare - leastWidth() + least_, least_, most_));
    bar_->setBounds(gui::Rect::ofSize(left, top, width, kHeight));
}

}  // namespace vanta::interface
