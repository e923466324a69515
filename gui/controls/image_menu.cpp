#include "gui/controls/image_menu.hpp"

#include <algorithm>

#include "gui/controls/picture.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

constexpr float kMargin = 8.0f;
constexpr float kGap = 2.0f;

}  // namespace

void ImageCells::paint(Canvas& canvas, int index, bool chosen, Point at) const {
    const Point source{width() * static_cast<float>(index), 0.0f};
    canvas.drawBitmap(chosen ? *on : *off, Rect::ofSize(at.x, at.y, width(), height()), source);
}

ImageMenu::ImageMenu(UserInterface& interface, const ImageCells& shownCells, int columnCount, int chosenIndex,
                     Point anchorPoint)
    : Control(interface),
      cells_(shownCells),
      columns_(std::max(columnCount, 1)),
      highlighted_(chosenIndex),
      background_(loadPicture(interface, "MenuBackground")),
      active_(loadPicture(interface, "MenuItemActive")) {
    const Rect& room = interface.rootControl().localBounds();
    const int rows = (cells_.count + columns_ - 1) / columns_;
    const float width = static_cast<float>(columns_) * (cells_.width() + kGap) - kGap + 2.0f * kMargin;
    const float height = static_cast<float>(rows) * (cells_.height() + kGap) - kGap + 2.0f * kMargin;
    panel_ = Rect::ofSize(std::max(std::min(anchorPoint.x, room.right - width), 0.0f),
                          std::max(std::min(anchorPoint.y, room.bottom - height), 0.0f), width, height);
    bounds = room;
    anchor = anchor::kAll;
    parent = &interface.rootControl();
    takeFocus();
}

Rect ImageMenu::cellBounds(int index) const {
    const auto column = static_cast<float>(index % columns_), row = static_cast<float>(index / columns_);
    return Rect::ofSize(panel_.left + kMargin + column * (cells_.width() + kGap),
                        panel_.top + kMargin + row * (cells_.height() + kGap), cells_.width(),
                        cells_.height());
}

int ImageMenu::cellAt(Point point) const {
    for (int i = 0; i < cells_.count; ++i) {
        if (cellBounds(i).contains(point)) return i;
    }
    return -1;
}

void ImageMenu::highlight(int index) {
    if (index == highlighted_) return;
    highlighted_ = index;
    markDirty(panel_);
}

/// Hidden at once; whoever opened it deletes it.
void ImageMenu::close(int picked) {
    if (!visible) return;
    picked_ = picked;
    visible = false;
    onClosed.raise(this);
}

void ImageMenu::mouseMove(Point point, int modifiers) {
    Control::mouseMove(point, modifiers);
    highlight(cellAt(point));
}

void ImageMenu::mouseUp(int button, Point point, int modifiers) {
    Control::mouseUp(button, point, modifiers);
    const int cell = cellAt(point);
    // Between two pictures nothing is meant.
    if (cell >= 0 || !panel_.contains(point)) close(cell);
}

bool ImageMenu::keyDown(const KeyPress& key) {
    const auto step = [&](int by) { highlight(std::clamp(highlighted_ + by, 0, cells_.count - 1)); };
    switch (key.key) {
        case Key::Left:
            step(-1);
            return true;
        case Key::Right:
            step(1);
            return true;
        case Key::Up:
            step(-columns_);
            return true;
        case Key::Down:
            step(columns_);
            return true;
        case Key::Return:
            close(highlighted_);
            return true;
        case Key::Escape:
            close(-1);
            return true;
        default:
            return false;
    }
}

void ImageMenu::paint(Canvas& canvas) {
    canvas.drawStretched(*background_, panel_, background_->logicalRect());
    for (int i = 0; i < cells_.count; ++i) {
        const Rect cell = cellBounds(i);
        if (i == highlighted_) canvas.drawStretched(*active_, cell, active_->logicalRect());
        cells_.paint(canvas, i, i == highlighted_, cell.origin());
    }
}

}  // namespace vanta::gui
