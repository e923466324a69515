#include "gui/controls/button.hpp"

#include "gui/controls/picture.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

bool isPressKey(const KeyPress& key) {
    const bool isSpace = key.key == Key::Character && key.character == U' ';
    const bool isCommand = key.modifiers & (modifier::kCtrl | modifier::kAlt | modifier::kMeta);
    return (isSpace || key.key == Key::Return) && !isCommand;
}

}  // namespace

Button::Button(UserInterface& interface, Animator* animatedBy, Style* sharedStyle)
    : RolloverValueControl(interface, animatedBy),
      ButtonLook(this),
      style_(sharedStyle ? sharedStyle : &interface.make<Style>()),
      holdClock_(interface.createClock()),
      icon_(loadPicture(interface, {})) {
    // Two quick clicks are two clicks.
    doubleClickable = false;
    setTextCount(1);
    copyFrom(*style_);
}

void Button::setTextCount(int count) {
    while (static_cast<int>(texts_.size()) < count) {
        std::unique_ptr<Text> added = ui().createText();
        added->fontSize = 8.25f;
        added->color = style_->textColor.value();
        if (!texts_.empty()) added->copyStyleFrom(*texts_.front());
        added->text = std::string{};
        added->onChange.setHandler(this, &Button::textChanged);
        texts_.push_back(std::move(added));
    }
    texts_.resize(static_cast<std::size_t>(count));
}

void Button::setIcon(const std::string& imageName) {
    icon_ = loadPicture(ui(), imageName);
    markDirty();
}

void Button::propertyChanged(AbstractProperty& property) {
    if (&property == &on) {
        markDirty();
        toggled();
    } else if (&property == &lineCount) {
        setTextCount(lineCount);
        markDirty();
    } else if (&property == &dragProxy) {
        if (dragProxy) link(*this, *dragProxy);
    } else {
        RolloverValueControl::propertyChanged(property);
        markDirty();
    }
}

void Button::linkRemoved(Component* other) {
    if (other == static_cast<Component*>(dragProxy.value())) dragProxy = nullptr;
    RolloverValueControl::linkRemoved(other);
}

int Button::alphaAt(Point point) {
    const Rect& all = localBounds();
    const float inset = hitInset;
    if (!Rect{all.left + inset, all.top + inset, all.right - inset, all.bottom - inset}.contains(point))
        return 0;
    return solid ? 255 : opacityAt(*style_->normal, point);
}

void Button::setState(State state) {
    if (state == state_) return;
    state_ = state;
    markDirty();
    pressStateChanged();
}

void Button::mouseEnter() {
    if (!isChanging()) setState(State::Hover);
    RolloverValueControl::mouseEnter();
}

void Button::mouseLeave() {
    if (!isChanging()) setState(State::Normal);
    RolloverValueControl::mouseLeave();
}

void Button::mouseDown(int button, Point point, int modifiers) {
    RolloverValueControl::mouseDown(button, point, modifiers);
    const bool isDoubleClick = (modifiers & modifier::kDoubleClick) && doubleClickable;
    if (button != kLeftPress || isDoubleClick || isChanging()) return;
    beginEndChange(GesturePhase::Begin, 0);
    setState(State::Pressed);
    holding_ = toggle && momentary && !on;
    if (holding_) {
        on = true;
        holdClock_->reset();
    }
    if (dragProxy) handOver(button, point, modifiers);
}

/// The press was the beginning of a drag of something else.
void Button::handOver(int button, Point point, int modifiers) {
    Control& proxy = *dragProxy.value();
    beginEndChange(GesturePhase::End, 0);
    setState(State::Normal);
    ui().rootControl().setMouseCapture(nullptr);
    proxy.routePress(button, toWindow(point) - proxy.toWindow(Point{}), modifiers);
}

void Button::mouseMove(Point point, int modifiers) {
    RolloverValueControl::mouseMove(point, modifiers);
    if (!isChanging() || buttonStyle == ButtonStyle::StaysDown) return;
    setState(isInside(point) ? State::Pressed : State::Normal);
}

/// Afterwards the interface may have gone: a click may open a menu.
void Button::mouseUp(int button, Point point, int modifiers) {
    const bool isOurs = button == kLeftPress && isChanging();
    if (isOurs) {
        const bool inside = isInside(point);
        if (holding_ && holdClock_->elapsed() > kHoldMs) on = false;
        if (inside && toggle && !holding_) on = toggledState();
        holding_ = false;
        setState(inside ? State::Hover : State::Normal);
    }
    const std::shared_ptr<EventRelay> relay = ui().relay();
    RolloverValueControl::mouseUp(button, point, modifiers);
    if (isOurs && relay->isOpen()) beginEndChange(GesturePhase::End, 0);
}

bool Button::keyDown(const KeyPress& key) {
    if (!isPressKey(key)) return false;
    if (isChanging()) return true;  // the pointer has it
    const std::shared_ptr<EventRelay> relay = ui().relay();
    beginEndChange(GesturePhase::Begin, 0);
    if (toggle) on = toggledState();
    click();
    if (relay->isOpen()) beginEndChange(GesturePhase::End, 0);
    return true;
}

}  // namespace vanta::gui
