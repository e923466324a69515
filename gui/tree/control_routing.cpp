#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "gui/tree/control.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

/// While the wheel holds the pointer for a control, it may tremble by this much, in logical units.
constexpr float kWheelCaptureReach = 4.0f;

bool isMoving(float amount) {
    return std::abs(amount) > std::numeric_limits<float>::epsilon();
}

}  // namespace

bool Control::isInside(Point point) {
    if (!visible || !enabled || !localBounds_.contains(point)) return false;
    return alphaAt(point) * alpha > hitThreshold * 255;
}

Control* Control::childAt(Point point) {
    for (std::size_t i = children_.size(); i-- > 0;) {
        Control* child = children_[i];
        if (child->isInside(point - child->placedBounds_.origin())) return child;
    }
    return nullptr;
}

void Control::takeCapture(Capture capture) {
    ui().rootControl().setMouseCapture(this);
    capture_ = capture;
}

void Control::releaseCapture() {
    if (capture_ != Capture::None && !ui().isDestroying()) ui().rootControl().setMouseCapture(nullptr);
}

void Control::routePress(int button, Point point, int modifiers) {
    if (capture_ == Capture::Wheel) releaseCapture();
    if (Control* child = childAt(point)) {
        child->routePress(button, point - child->placedBounds_.origin(), modifiers);
        return;
    }
    if (button == kLeftPress) {
        setFocus(nullptr);
        if (capture_ == Capture::None) takeCapture(Capture::Press);
    }
    ui().showHint({});
    mouseDown(button, point, modifiers);
}

void Control::routeMove(Point point, int modifiers) {
    if (capture_ == Capture::Wheel) {
        const Point travel = toWindow(point) - pressPoint_;
        if (std::abs(travel.x) > kWheelCaptureReach || std::abs(travel.y) > kWheelCaptureReach)
            releaseCapture();
    }
    Control* child = capture_ == Capture::None ? childAt(point) : nullptr;
    if (child) {
        setHovered(child);
        child->routeMove(point - child->placedBounds_.origin(), modifiers);
    } else {
        setHovered(this);
        mouseMove(point, modifiers);
    }
}

void Control::routeRelease(int button, Point point, int modifiers) {
    Control* child = capture_ == Capture::None ? childAt(point) : nullptr;
    if (child) {
        child->routeRelease(button, point - child->placedBounds_.origin(), modifiers);
        return;
    }
    if (button == kLeftPress) releaseCapture();
    mouseUp(button, point, modifiers);
}

bool Control::routeWheel(WheelPhase phase, Point point, int modifiers, const WheelMove& move) {
    if (capture_ == Capture::None) {
        Control* child = childAt(point);
        if (child && child->routeWheel(phase, point - child->placedBounds_.origin(), modifiers, move))
            return true;
    }
    const bool handled = wheel(phase, point, modifiers, move);
    if (handled && phase != WheelPhase::End) {
        if (capture_ == Capture::None && hovered_) {
            takeCapture(Capture::Wheel);
            pressPoint_ = toWindow(point);
        }
        ui().showHint({});
    }
    return handled;
}

void Control::cancelMouse() {
    routeRelease(kLeftPress, {-32.0f, 0.0f}, 0);
}

void Control::setHovered(Control* control) {
    if (control == hovered_) return;
    Control* former = std::exchange(hovered_, control);
    if (former && former != this) former->clearHoverChain();
    if (!control) {
        leaveHover();
    } else if (!former) {
        mouseEnter();
        if (!hint.value().empty()) ui().showHint(hint);
    }
}

/// From the bottom up, so that a control is left before its parent.
void Control::clearHoverChain() {
    if (!hovered_) return;
    if (hovered_ != this) hovered_->clearHoverChain();
    hovered_ = nullptr;
    leaveHover();
}

void Control::leaveHover() {
    if (!hint.value().empty()) ui().hints().leave();
    mouseLeave();
}

void Control::mouseDown(int button, Point point, int modifiers) {
    lastMouse_ = point;
    if (button == kLeftPress) {
        if (movable) {
            dragging_ = true;
            pressPoint_ = point;
        }
        if ((modifiers & modifier::kDoubleClick) && doubleClickable) {
            doubleClick();
        } else {
            pressed_ = true;
        }
    } else if (button == kRightPress) {
        rightPressed_ = true;
    }
    onMouseDown.raise(this);
}

void Control::mouseUp(int /*button*/, Point point, int /*modifiers*/) {
    lastMouse_ = point;
    dragging_ = false;
    onMouseUp.raise(this);
    const bool wasPressed = std::exchange(pressed_, false);
    const bool wasRightPressed = std::exchange(rightPressed_, false);
    if (!isInside(point)) return;
    if (wasPressed) {
        click();
    } else if (wasRightPressed) {
        rightClick();
    }
}

void Control::mouseMove(Point point, int /*modifiers*/) {
    if (dragging_) dragTo(point);
    lastMouse_ = point;
    onMouseMove.raise(this);
}

/// The grabbed point stays within the parent.
void Control::dragTo(Point point) {
    if (!previousParent_) return;
    const Point least = Point{} - placedBounds_.origin() - pressPoint_;
    const Rect& room = previousParent_->localBounds_;
    const auto limit = [](float offset, float low, float length) {
        return std::min(std::max(offset, low), low + std::max(length, 0.0f));
    };
    const Point offset = point - pressPoint_;
    bounds = placedBounds_.translated(
        {limit(offset.x, least.x, room.width()), limit(offset.y, least.y, room.height())});
}

bool Control::wheel(WheelPhase phase, Point point, int modifiers, const WheelMove& move) {
    if (phase != WheelPhase::Move) return false;
    const auto offer = [&](auto take, float value, WheelAxis axis) {
        return isMoving(value) && (this->*take)(point, modifiers, value, axis);
    };
    return offer(&Control::wheelAmount, move.amount.x, WheelAxis::Horizontal) ||
           offer(&Control::wheelAmount, move.amount.y, WheelAxis::Vertical) ||
           offer(&Control::wheelPixels, move.pixels.x, WheelAxis::Horizontal) ||
           offer(&Control::wheelPixels, move.pixels.y, WheelAxis::Vertical);
}

}  // namespace vanta::gui
