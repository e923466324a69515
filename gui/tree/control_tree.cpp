#include <algorithm>
#include <utility>

#include "gui/tree/control.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {

void Control::parentChanged() {
    Control* next = parent;
    if (next == previousParent_) return;
    if (next && (next == this || isAncestorOf(*next))) {
        parent = previousParent_;
        return;
    }
    if (Control* former = std::exchange(previousParent_, nullptr)) former->removeChild(*this);
    previousParent_ = next;
    if (next) next->insertChild(*this);
    report(Change::Parent);
}

void Control::insertChild(Control& child) {
    const auto count = static_cast<int>(children_.size());
    const int index = insertIndex_ < 0 ? count : std::min(insertIndex_, count);
    children_.insert(children_.begin() + index, &child);
    if (child.visible && child.alpha > 0) markDirty(child.placedBounds_);
    childChanged(&child, Change::Added);
    recomputeOpaque();
}

void Control::removeChild(Control& child) {
    // While a control goes down nothing edits its children under it.
    if (destroying_) return;
    std::erase(children_, &child);
    if (hovered_ == &child) {
        if (!ui().isDestroying()) child.clearHoverChain();
        hovered_ = this;
    }
    if (focused_ == &child) {
        focused_ = nullptr;
        if (!ui().isDestroying()) ui().rootControl().focusPathChanged();
    }
    if (ui().isDestroying()) return;
    if (child.visible && child.alpha > 0) markDirty(child.placedBounds_);
    childChanged(&child, Change::Removed);
    recomputeOpaque();
}

void Control::removeAllChildren() {
    if (children_.empty()) return;
    destroying_ = true;
    while (!children_.empty()) {
        Control* child = children_.back();
        child->removeAllChildren();
        children_.pop_back();
        // The children of the next one say that the paths have changed, and both are walked.
        if (hovered_ == child) hovered_ = this;
        if (focused_ == child) focused_ = nullptr;
        delete child;
    }
    destroying_ = false;
    // An interface that goes has lost its root first.
    if (ui().isDestroying()) return;
    ui().rootControl().focusPathChanged();
    markDirty(localBounds_);
    childChanged(nullptr, Change::Removed);
    recomputeOpaque();
}

void Control::moveChild(Control& child, int index) {
    const auto found = std::find(children_.begin(), children_.end(), &child);
    if (found == children_.end() || index < 0 || index > static_cast<int>(children_.size())) return;
    const auto place = children_.begin() + std::min(index, static_cast<int>(children_.size()) - 1);
    if (place > found) {
        std::rotate(found, found + 1, place + 1);
    } else {
        std::rotate(place, found, found + 1);
    }
    if (child.visible && child.alpha > 0) markDirty(child.placedBounds_);
}

void Control::toFront() {
    if (previousParent_)
        previousParent_->moveChild(*this, static_cast<int>(previousParent_->children_.size()));
}

bool Control::isAncestorOf(const Control& other) const {
    for (const Control* control = other.previousParent_; control; control = control->previousParent_) {
        if (control == this) return true;
    }
    return false;
}

bool Control::isShown() const {
    for (const Control* control = this; control; control = control->previousParent_) {
        if (!control->visible || control->alpha <= 0) return false;
    }
    return true;
}

bool Control::isReachable() const {
    for (const Control* control = this; control; control = control->previousParent_) {
        if (!control->enabled) return false;
    }
    return isShown() && !localBounds_.isEmpty();
}

}  // namespace vanta::gui
