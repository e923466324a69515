#include <algorithm>
#include <utility>
#include <vector>

#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

/// The order of Tab is that of the tree.
void collectStops(Control& control, std::vector<Control*>& stops) {
    if (control.takesFocus() && control.isReachable()) stops.push_back(&control);
    for (Control* child : control.children()) collectStops(*child, stops);
}

/// The whole tree, or what stands in front of it and keeps the keyboard for itself.
Control& focusScope(Control& root) {
    const auto& children = root.children();
    const auto holder = std::find_if(children.rbegin(), children.rend(), [](const Control* child) {
        return child->holdsFocus() && child->isReachable();
    });
    return holder == children.rend() ? root : **holder;
}

}  // namespace

void Control::setFocus(Control* control) {
    focused_ = control;
    if (previousParent_) previousParent_->setFocus(control ? this : nullptr);
}

void RootControl::setFocus(Control* control) {
    Control::setFocus(control);
    focusPathChanged();
}

Control* RootControl::focusedControl() const {
    const Control* control = this;
    while (control->focused_ && control->focused_ != control) control = control->focused_;
    return control->focused_;
}

void RootControl::focusPathChanged() {
    Control* now = focusedControl();
    Control* former = std::exchange(focusOwner_, now);
    if (former != now) {
        if (former) former->focusChanged(false);
        if (now) now->focusChanged(true);
        focusMoved();
    }
    focusRingMoved();
}

void RootControl::forgetFocus(const Control& control) {
    if (focusOwner_ == &control) focusOwner_ = nullptr;
}

bool RootControl::moveFocus(bool backwards) {
    std::vector<Control*> stops;
    collectStops(focusScope(*this), stops);
    if (stops.empty()) return false;
    if (backwards) std::reverse(stops.begin(), stops.end());
    const auto current = std::find(stops.begin(), stops.end(), focusedControl());
    const bool goesRound = current == stops.end() || current + 1 == stops.end();
    (goesRound ? stops.front() : *(current + 1))->takeFocus();
    return true;
}

bool RootControl::platformKey(const KeyPress& key) {
    Control* focusHolder = focusedControl();
    // Hidden by now: its keys are not its own any more.
    if (focusHolder && !focusHolder->isReachable()) {
        setFocus(nullptr);
        focusHolder = nullptr;
    }
    for (Control* control = focusHolder; control; control = control->previousParent_) {
        if (control->keyDown(key)) return true;
    }
    if (ui().keyHook && ui().keyHook->keyPressed(key)) return true;
    constexpr int kCommand = modifier::kCtrl | modifier::kAlt | modifier::kMeta;
    if (key.key == Key::Tab && !(key.modifiers & kCommand))
        return moveFocus(key.modifiers & modifier::kShift);
    if (key.key == Key::Escape && focusHolder) {
        setFocus(nullptr);
        return true;
    }
    return false;
}

}  // namespace vanta::gui
