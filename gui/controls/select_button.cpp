#include "gui/controls/select_button.hpp"

#include <algorithm>

#include "gui/tree/user_interface.hpp"

namespace vanta::gui {

SelectButton::SelectButton(UserInterface& interface, Animator* animatedBy, Style* sharedStyle)
    : Button(interface, animatedBy, sharedStyle), menu_(interface.createPopupMenu()), mapper_(interface) {
    menu_->onChange.addHandler(this, &SelectButton::menuChanged);
    menu_->onPicked.addHandler(this, &SelectButton::picked);
}

SelectButton::~SelectButton() {
    setMirrored(nullptr);
}

void SelectButton::setMirrored(SelectButton* other) {
    if (mirrored_) {
        mirrored_->menu_->onChange.removeHandler(this, &SelectButton::menuChanged);
        mirrored_->menu_->onPicked.removeHandler(this, &SelectButton::picked);
        unlink(*this, *mirrored_);
    }
    mirrored_ = other;
    if (!mirrored_) return;
    link(*this, *mirrored_);
    mirrored_->menu_->onChange.addHandler(this, &SelectButton::menuChanged);
    mirrored_->menu_->onPicked.addHandler(this, &SelectButton::picked);
}

int SelectButton::addItem(const std::string& text, const std::string& shortText) {
    const int index = menu_->itemCount();
    menu_->addItem(std::make_unique<SelectMenuItem>(text, shortText.empty() ? text : shortText, index));
    maximum = std::max(minimum + index, minimum + 1);
    return index;
}

void SelectButton::menuChanged(void*) {
    if (refreshPending_) return;
    refreshPending_ = true;
    ui().postDeferred(*this, 0);
}

void SelectButton::deferredCall(int /*argument*/) {
    refreshCaption();
    refreshPending_ = false;
}

void SelectButton::valueChanged(AbstractProperty& property) {
    refreshCaption();
    Button::valueChanged(property);
}

void SelectButton::propertyChanged(AbstractProperty& property) {
    Button::propertyChanged(property);
    if (&property == &mirror) setMirrored(mirror);
    if (&property == &indeterminate || &property == &multipleText || &property == &emptyText ||
        &property == &mirror) {
        refreshCaption();
    }
}

void SelectButton::linkRemoved(Component* other) {
    if (other == static_cast<Component*>(mirrored_)) {
        mirrored_ = nullptr;  // and its menu with it
        mirror = nullptr;
    }
    Button::linkRemoved(other);
}

std::string SelectButton::caption() const {
    if (indeterminate) return multipleText;
    const int wanted = value - minimum;
    if (!items().item(wanted)) return emptyText;
    int index = items().nextSelectable(wanted, 1);
    if (index < 0) index = items().nextSelectable(wanted, -1);
    const MenuItem* item = items().item(index);
    if (!item) return emptyText;
    const auto* selectable = dynamic_cast<const SelectMenuItem*>(item);
    return selectable ? selectable->shortText : item->caption();
}

void SelectButton::refreshCaption() {
    setCaption(caption());
    if (!mirror) menu_->checkOnly(indeterminate ? -1 : value - minimum);
}

void SelectButton::click() {
    const std::shared_ptr<EventRelay> relay = ui().relay();
    openMenu();
    if (relay->isOpen()) Button::click();
}

void SelectButton::openMenu() {
    PopupMenu& shown = mirror ? *mirror.value()->menu_ : *menu_;
    shown.show(toWindow(Point{0.0f, localBounds().height()}));
}

void SelectButton::picked(void* sender) {
    const auto* item = dynamic_cast<const SelectMenuItem*>(static_cast<MenuItem*>(sender));
    if (item) choose(item->index);
}

void SelectButton::choose(int itemIndex) {
    if (isChanging()) {
        jumpTo(minimum + itemIndex);
    } else {
        changeTo(minimum + itemIndex);
    }
}

int SelectButton::stepOver(int steps) const {
    if (steps == 0) return 0;
    const int from = value - minimum;
    const int target = items().nextSelectable(from + steps, steps > 0 ? 1 : -1);
    return target < 0 ? 0 : target - from;
}

bool SelectButton::wheel(WheelPhase phase, Point /*point*/, int modifiers, const WheelMove& move) {
    // A picture over the caption is a button of another kind.
    if (!style().overlayOff->isEmpty()) return false;
    mapper_.steps = steps();
    const int delta = stepOver(mapper_.wheel(phase, modifiers, move.amount.y, move.pixels.y));
    wheelGesture(phase, delta);
    return true;
}

bool SelectButton::keyDown(const KeyPress& key) {
    if (key.modifiers & modifier::kCtrl) return false;
    // Down the menu is towards higher values.
    const bool forwards = key.key == Key::Down || key.key == Key::Right;
    const bool backwards = key.key == Key::Up || key.key == Key::Left;
    if (!forwards && !backwards) return Button::keyDown(key);
    const int delta = stepOver(forwards ? 1 : -1);
    if (delta != 0) changeTo(value + delta);
    return true;
}

}  // namespace vanta::gui
