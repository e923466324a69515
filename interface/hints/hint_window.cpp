#include "interface/hints/hint_window.hpp"

#include <algorithm>
#include <cmath>

#include "gui/controls/picture.hpp"
#include "gui/graphics/canvas.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::interface {
namespace {

/// From the edges of the picture, its shadow included, to the text.
struct Margins {
    float left = 15.0f;
    float top = 10.0f;
    float right = 35.0f;
    float bottom = 15.0f;
};
constexpr Margins kMargins;
constexpr float kWidestText = 340.0f;
/// The bars at both ends of the window, and some air.
constexpr float kTopEdge = 56.0f;
constexpr float kBottomEdge = 34.0f;
constexpr int kCrossAlpha = 128;
/// Of the cross, from the right top.
constexpr gui::Point kCrossAt{24.0f, 11.0f};

/// What the pointer is over, down the tree; empty for nothing but the window.
gui::Rect hoveredBounds(const gui::Control& root) {
    const gui::Control* control = &root;
    while (control->hovered() && control->hovered() != control) control = control->hovered();
    return control == &root ? gui::Rect{} : control->windowBounds();
}

bool overlap(const gui::Rect& a, const gui::Rect& b) {
    return !a.isEmpty() && !b.isEmpty() && !a.intersected(b).isEmpty();
}

}  // namespace

HintWindow::HintWindow(gui::UserInterface& interface)
    : AnimatedControl(interface),
      background_(gui::loadPicture(interface, "HelpHintBackground.png")),
      cross_(gui::loadPicture(interface, "IconRemove.png")),
      text_(interface.createText()) {
    text_->fontSize = 8.25f;
    text_->color = gui::Color::of(0xFFF0E9E6);
    text_->lineStyle = gui::Text::LineStyle::WordWrap;
    visible = false;
    anchor = gui::anchor::kBottom;
    parent = &interface.rootControl();
}

void HintWindow::show(const std::string& shown, bool sticky) {
    sticky_ = sticky;
    alpha = sticky ? kStickyAlpha : 255;
    hitThreshold = sticky ? 0 : 255;
    text_->text = shown;
    place();
    toFront();
    visible = true;
    markDirty();
}

void HintWindow::place() {
    const gui::Rect room = ui().rootControl().content();
    const float beside = kMargins.left + kMargins.right;
    text_->maxWidth = std::max(std::min(kWidestText, room.width() - beside - 16.0f), 60.0f);
    bounds = placeFor(std::ceil(text_->width()) + beside,
                      std::ceil(text_->height()) + kMargins.top + kMargins.bottom);
}

/// Above the bottom bar, or below the top bar if what it speaks of is down there.
gui::Rect HintWindow::placeFor(float width, float height) const {
    const gui::Rect room = ui().rootControl().content();
    const float x = std::max(std::round((room.width() - width) / 2.0f), 0.0f);
    const float low = std::max(std::round(room.bottom - kBottomEdge - height), 0.0f);
    const gui::Rect below = gui::Rect::ofSize(x, low, width, height);
    const gui::Rect above = gui::Rect::ofSize(x, std::min(kTopEdge, low), width, height);
    return overlap(below, hoveredBounds(ui().rootControl())) ? above : below;
}

int HintWindow::alphaAt(gui::Point) {
    return sticky_ ? 255 : 0;
}

void HintWindow::refreshTree() {
    if (visible) place();
    AnimatedControl::refreshTree();
}

void HintWindow::paint(gui::Canvas& canvas) {
    canvas.drawStretched(*background_, localBounds(), background_->logicalRect());
    canvas.drawText(*text_, {kMargins.left, kMargins.top});
    if (sticky_) {
        canvas.drawBitmap(*cross_, gui::Point{localBounds().right - kCrossAt.x, kCrossAt.y}, kCrossAlpha);
    }
}

}  // namespace vanta::interface
