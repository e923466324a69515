#include "gui/controls/toggle_button.hpp"

#include <algorithm>

namespace vanta::gui {

ToggleButton::ToggleButton(UserInterface& interface, Animator* animatedBy, Style* sharedStyle)
    : Button(interface, animatedBy, sharedStyle) {
    toggle = true;
    maximum = 1;
}

ToggleButton::~ToggleButton() {
    for (Button* button : buttons_) {
        if (button) button->onToggled.removeHandler(this, &ToggleButton::memberToggled);
    }
}

void ToggleButton::addButton(Button& button) {
    link(*this, button);
    button.toggle = true;
    button.onToggled.addHandler(this, &ToggleButton::memberToggled);
    buttons_.push_back(&button);
    maximum = std::max(static_cast<int>(buttons_.size()) - 1, minimum + 1);
    showValue();
}

void ToggleButton::linkRemoved(Component* other) {
    std::replace_if(
        buttons_.begin(), buttons_.end(),
        [&](Button* button) { return static_cast<Component*>(button) == other; },
        static_cast<Button*>(nullptr));
    Button::linkRemoved(other);
}

void ToggleButton::propertyChanged(AbstractProperty& property) {
    Button::propertyChanged(property);
    if (&property == &onValue) showValue();
}

void ToggleButton::valueChanged(AbstractProperty& property) {
    showValue();
    Button::valueChanged(property);
}

void ToggleButton::showValue() {
    if (showing_) return;
    showing_ = true;
    on = value == onValue;
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        if (buttons_[i]) buttons_[i]->on = static_cast<int>(i) == value - minimum;
    }
    showing_ = false;
}

void ToggleButton::toggled() {
    if (!showing_) choose(on ? onValue : offValue());
    Button::toggled();
}

void ToggleButton::memberToggled(void* sender) {
    if (showing_) return;
    const auto at = std::find(buttons_.begin(), buttons_.end(), static_cast<Button*>(sender));
    if (at == buttons_.end()) return;
    if ((*at)->on) choose(minimum + static_cast<int>(at - buttons_.begin()));
    showValue();  // the one that is on stays on
}

/// Within the gesture of a press, or as one of its own where a member was pressed.
void ToggleButton::choose(int target) {
    if (isChanging()) {
        jumpTo(target);
    } else {
        changeTo(target);
    }
}

bool ToggleButton::keyDown(const KeyPress& key) {
    if (Button::keyDown(key)) return true;
    // Return is no typing here.
    return key.key != Key::Return && RolloverValueControl::keyDown(key);
}

}  // namespace vanta::gui
