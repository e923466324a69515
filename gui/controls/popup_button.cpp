#include "gui/controls/popup_button.hpp"

#include "gui/tree/user_interface.hpp"

namespace vanta::gui {

PopupButton::PopupButton(UserInterface& interface, Animator* animatedBy, Style* sharedStyle)
    : Button(interface, animatedBy, sharedStyle), timer_(interface.createTimer()) {
    timer_->interval = kHoverMs;
    timer_->onTick.setHandler(this, &PopupButton::waited);
}

PopupButton::~PopupButton() {
    if (attached_) attached_->onMouseLeave.removeHandler(this, &PopupButton::panelLeft);
}

void PopupButton::propertyChanged(AbstractProperty& property) {
    Button::propertyChanged(property);
    if (&property == &panel) attachPanel();
}

void PopupButton::attachPanel() {
    if (attached_) {
        attached_->onMouseLeave.removeHandler(this, &PopupButton::panelLeft);
        unlink(*this, *attached_);
    }
    attached_ = panel;
    if (!attached_) return;
    link(*this, *attached_);
    attached_->onMouseLeave.addHandler(this, &PopupButton::panelLeft);
    attached_->visible = on.value();
}

void PopupButton::linkRemoved(Component* other) {
    if (other == static_cast<Component*>(attached_)) {
        attached_ = nullptr;
        panel = nullptr;
        on = false;
    }
    Button::linkRemoved(other);
}

int PopupButton::hotSpotAt(Point point) const {
    for (auto spot = hotSpots.rbegin(); spot != hotSpots.rend(); ++spot) {
        if (spot->area.contains(point)) return spot->index;
    }
    return -1;
}

int PopupButton::alphaAt(Point point) {
    return point.y < static_cast<float>(popupHeight) ? 0 : Button::alphaAt(point);
}

void PopupButton::click() {
    if (!toggle) on = !on;
    Button::click();
}

void PopupButton::toggled() {
    showPanel(on);
    Button::toggled();
}

void PopupButton::showPanel(bool shown) {
    if (!attached_) return;
    auto* animated = dynamic_cast<AnimatedControl*>(attached_);
    if (shown && animated && animated->animator()) {
        animated->alpha = 0;
        animated->fadeTo(255);
    }
    attached_->visible = shown;
}

void PopupButton::mouseEnter() {
    Button::mouseEnter();
    hovered_ = true;
    // The press that has closed a menu is over by now, but the pointer still stands here.
    if (popupBehavior == PopupBehavior::Hover && !ui().menuJustClosed()) startWaiting();
}

void PopupButton::mouseLeave() {
    Button::mouseLeave();
    hovered_ = false;
    timer_->running = false;
    if (on) startWaiting();
}

void PopupButton::startWaiting() {
    if (popupBehavior != PopupBehavior::Hover) return;
    timer_->running = false;
    timer_->running = true;
}

void PopupButton::waited(void*) {
    timer_->running = false;
    on = hovered_ || (on && attached_ && attached_->hovered());
}

}  // namespace vanta::gui
