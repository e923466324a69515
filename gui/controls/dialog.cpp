#include "gui/controls/dialog.hpp"

#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {

Dialog::Dialog(UserInterface& interface)
    : Control(interface), formerFocus_(interface.rootControl().focusedControl()) {
    RootControl& root = interface.rootControl();
    if (formerFocus_) link(*this, *formerFocus_);
    // What is held down loses the pointer.
    root.platformCancelMode();
    root.setFocus(nullptr);
    bounds = root.localBounds();
    anchor = anchor::kAll;
    parent = &root;
}

Dialog::~Dialog() {
    *alive_ = false;
    if (formerFocus_ && !ui().isDestroying() && formerFocus_->isReachable()) formerFocus_->takeFocus();
}

void Dialog::linkRemoved(Component* other) {
    if (other == static_cast<Component*>(formerFocus_)) formerFocus_ = nullptr;
    Control::linkRemoved(other);
}

}  // namespace vanta::gui
