#include "gui/controls/image_select_button.hpp"

#include <algorithm>
#include <utility>

#include "gui/controls/picture.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {

ImageSelectButton::ImageSelectButton(UserInterface& interface, Animator* animatedBy, Style* sharedStyle)
    : Button(interface, animatedBy, sharedStyle) {
    setPictures({}, {}, 0);
}

void ImageSelectButton::setPictures(const std::string& offImage, const std::string& onImage, int count) {
    cells_ = {loadPicture(ui(), offImage), loadPicture(ui(), onImage), std::max(count, 0)};
    maximum = std::max(minimum + count - 1, minimum + 1);
    markDirty();
}

void ImageSelectButton::click() {
    if (!menu_ && cells_.count > 0) {
        menu_ = &ui().make<ImageMenu>(cells_, columns, value - minimum,
                                      toWindow(Point{0.0f, localBounds().height()}));
        link(*this, *menu_);
        menu_->onClosed.setHandler(this, &ImageSelectButton::menuClosed);
    }
    Button::click();
}

void ImageSelectButton::menuClosed(void*) {
    if (menu_->picked() >= 0) changeTo(minimum + menu_->picked());
    takeFocus();
    // The menu is still on the stack.
    ui().postDeferred(*this, 0);
}

void ImageSelectButton::deferredCall(int /*argument*/) {
    delete std::exchange(menu_, nullptr);
}

void ImageSelectButton::linkRemoved(Component* other) {
    if (other == static_cast<Component*>(menu_)) menu_ = nullptr;
    Button::linkRemoved(other);
}

bool ImageSelectButton::keyDown(const KeyPress& key) {
    if (Button::keyDown(key)) return true;
    const bool forwards = key.key == Key::Down || key.key == Key::Right;
    const bool backwards = key.key == Key::Up || key.key == Key::Left;
    if (!forwards && !backwards) return false;
    const int target = clamped(value + (forwards ? 1 : -1));
    if (target != value) changeTo(target);
    return true;
}

void ImageSelectButton::paint(Canvas& canvas) {
    Button::paint(canvas);
    const int index = value - minimum;
    if (index >= cells_.count) return;
    cells_.paint(canvas, index, false,
                 {alignedOffset(overlayAlignment, localBounds().width(), cells_.width(), overlayMargin),
                  (localBounds().height() - cells_.height()) / 2.0f});
}

}  // namespace vanta::gui
