#include "gui/tree/control.hpp"

#include <algorithm>
#include <cmath>

#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

/// Sizes that differ by no more are the same to the layout.
constexpr float kSizeTolerance = 0.01f;

}  // namespace

Control::Control(UserInterface& interface) : Component(interface) {}

Control::~Control() {
    observers_.clear();
    if (!ui().isDestroying()) {
        releaseCapture();
        if (focused_ == this) ui().rootControl().forgetFocus(*this);
    }
    destroying_ = true;
    while (!children_.empty()) {
        Control* child = children_.back();
        children_.pop_back();
        child->parent = nullptr;
    }
    parent = nullptr;
}

void Control::propertyChanged(AbstractProperty& property) {
    if (&property == &bounds) {
        boundsChanged();
    } else if (&property == &alpha) {
        if (visible) looksChanged();
        report(Change::Alpha);
    } else if (&property == &visible) {
        if (alpha > 0) looksChanged();
        report(Change::Visibility);
    } else if (&property == &opaque) {
        recomputeOpaque();
    } else if (&property == &enabled) {
        focusRingChanged();
    } else if (&property == &parent) {
        parentChanged();
    }
}

void Control::linkRemoved(Component* other) {
    std::erase_if(observers_, [&](Control* observer) { return static_cast<Component*>(observer) == other; });
}

void Control::boundsChanged() {
    const UpdateBlock block(*this);
    const Rect& now = bounds.value();
    const Point shift = now.origin() - placedBounds_.origin();
    const Point growth{now.width() - localBounds_.width(), now.height() - localBounds_.height()};
    markDirty(localBounds_);
    localBounds_ = {0.0f, 0.0f, now.width(), now.height()};
    // What was to be painted stays where it was in the parent.
    if (!previousBounds_.isEmpty()) previousBounds_ = previousBounds_.translated({-shift.x, -shift.y});
    placedBounds_ = now;
    markDirty(localBounds_);
    if (std::abs(growth.x) > kSizeTolerance || std::abs(growth.y) > kSizeTolerance) {
        layoutChildren(growth);
        resized();
        recomputeOpaque();
    }
    focusRingChanged();
    report(Change::Bounds);
}

/// The area must be painted although `markDirty` takes nothing from a control that has just vanished.
void Control::looksChanged() {
    previousBounds_ = previousBounds_.united(localBounds_);
    requestUpdate();
    recomputeOpaque();
    focusRingChanged();
}

/// A control on the way to the keyboard's has moved, or come and gone.
void Control::focusRingChanged() {
    if (focused_ && !ui().isDestroying()) ui().rootControl().focusRingMoved();
}

void Control::report(Change change) {
    if (previousParent_ && change != Change::Parent) previousParent_->childChanged(this, change);
    for (std::size_t i = 0; i < observers_.size(); ++i) observers_[i]->childChanged(this, change);
}

void Control::childChanged(Control* child, Change change) {
    // A child that moves takes along what it covers.
    const bool coverMoved = change == Change::Bounds && child && !child->opaqueRect_.isEmpty();
    if (change == Change::OpaqueRegion || coverMoved) recomputeOpaque();
}

void Control::addObserver(Control& observer) {
    link(*this, observer);
    observers_.push_back(&observer);
}

void Control::removeObserver(Control& observer) {
    std::erase(observers_, &observer);
}

void Control::setBounds(const Rect& rect) {
    if (!isSame(rect, bounds)) bounds = rect;
}

void Control::setPosition(Point point) {
    const Rect& now = bounds.value();
    setBounds(Rect::ofSize(point.x, point.y, now.width(), now.height()));
}

void Control::setSize(float width, float height) {
    const Rect& now = bounds.value();
    setBounds(Rect::ofSize(now.left, now.top, width, height));
}

void Control::layoutChildren(Point growth) {
    for (std::size_t i = 0; i < children_.size(); ++i) {
        Control& child = *children_[i];
        if (child.anchor == anchor::kTopLeft) continue;
        child.setBounds(anchoredBounds(child.bounds, child.anchor, growth));
    }
}

void Control::refreshTree() {
    for (std::size_t i = 0; i < children_.size(); ++i) children_[i]->refreshTree();
}

Point Control::toWindow(Point point) const {
    for (const Control* control = this; control->previousParent_; control = control->previousParent_) {
        point = point + control->placedBounds_.origin();
    }
    return point;
}

Rect Control::toWindow(const Rect& rect) const {
    return rect.translated(toWindow(Point{}));
}

}  // namespace vanta::gui
