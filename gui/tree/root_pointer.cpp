#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "gui/tree/root_control.hpp"
#include "gui/tree/timer.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

/// A wheel that is silent for this long has ended its gesture.
constexpr int kWheelSilenceMs = 500;
/// What decides whether a left press is a secondary one.
constexpr int kSecondaryMask =
    modifier::kSecondaryClick | modifier::kShift | modifier::kAlt | modifier::kCtrl | modifier::kMeta;

bool isStill(float value) {
    return std::abs(value) <= std::numeric_limits<float>::epsilon();
}

}  // namespace

Point RootControl::targetPoint(Point windowPoint) {
    return windowPoint - mouseTarget().toWindow(Point{});
}

/// Afterwards the root, and the interface, may have gone.
void RootControl::routeMoveToTarget(Point point, int modifiers) {
    const std::shared_ptr<const bool> alive = alive_;
    ui().hints().beginMove();
    const bool wasCaptured = mouseCapture_ != nullptr;
    mouseTarget().routeMove(targetPoint(point), modifiers);
    // The capture has ended inside the call: whoever is under the pointer has not heard of it.
    if (*alive && wasCaptured && !mouseCapture_) routeMove(point, modifiers);
    if (*alive) ui().hints().endMove();
}

int RootControl::withHostModifiers(int modifiers) {
    return ui().mouseHook ? ui().mouseHook->withHostModifiers(modifiers) : modifiers;
}

void RootControl::platformMouseDown(int button, Point point, int modifiers) {
    modifiers = withHostModifiers(modifiers);
    if (ui().mouseHook && !ui().mouseHook->mousePressed(button, point, modifiers)) return;
    if (button == kLeftPress) {
        if ((modifiers & kSecondaryMask) == modifier::kSecondaryClick) {
            button = kRightPress;
            modifiers &= ~modifier::kSecondaryClick;
            secondaryPress_ = true;
        } else {
            leftDown_ = true;
        }
    }
    const std::shared_ptr<const bool> alive = alive_;
    const int menuOpenings = ui().menuGuard().openings();
    // The move comes first so that the hover is right when the press comes.
    routeMoveToTarget(point, modifiers);
    if (*alive) mouseTarget().routePress(button, targetPoint(point), modifiers);
    if (*alive) ui().menuGuard().pressRouted(menuOpenings);
}

void RootControl::platformMouseMove(Point point, int modifiers) {
    modifiers = withHostModifiers(modifiers);
    const std::shared_ptr<const bool> alive = alive_;
    routeMoveToTarget(point, modifiers);
    if (*alive) ui().menuGuard().moveRouted();
}

void RootControl::platformMouseUp(int button, Point point, int modifiers) {
    modifiers = withHostModifiers(modifiers);
    if (std::exchange(secondaryPress_, false)) {
        button = kRightPress;
        modifiers &= ~modifier::kSecondaryClick;
    }
    leftDown_ = false;
    const std::shared_ptr<const bool> alive = alive_;
    routeMoveToTarget(point, modifiers);
    if (*alive) mouseTarget().routeRelease(button, targetPoint(point), modifiers);
}

void RootControl::platformMouseLeave() {
    if (mouseCapture_ && mouseCapture_->capture_ == Capture::Wheel) setMouseCapture(nullptr);
    if (!mouseCapture_) setHovered(nullptr);
}

void RootControl::platformCancelMode() {
    if (!std::exchange(leftDown_, false)) return;
    mouseTarget().routeRelease(kLeftPress, {-1.0f, -1.0f}, 0);
}

void RootControl::platformWheel(Point point, int modifiers, WheelMove move) {
    if (isStill(move.pixels.x) && isStill(move.pixels.y)) return;
    modifiers = withHostModifiers(modifiers);
    const std::shared_ptr<const bool> alive = alive_;
    if (!wheelTimer_) {
        wheelTimer_ = ui().createTimer();
        wheelTimer_->interval = kWheelSilenceMs;
        wheelTimer_->onTick.setHandler(this, &RootControl::endWheel);
    }
    if (!wheelTimer_->running) startWheel(point, modifiers);
    if (!*alive) return;
    move.amount.x = std::clamp(move.amount.x, -1.0f, 1.0f);
    move.amount.y = std::clamp(move.amount.y, -1.0f, 1.0f);
    const bool handled = routeWheelToTarget(WheelPhase::Move, point, modifiers, move);
    if (!*alive) return;
    if (handled) {
        wheelTimer_->running = false;
        wheelTimer_->running = true;
    } else {
        // Who has taken the beginning must see an end.
        const bool begun = mouseCapture_ && mouseCapture_->capture_ == Capture::Wheel;
        if (begun || wheelTimer_->running) endWheel(nullptr);
    }
}

/// The pointer may never have moved here: only a control that it hovers over can hold it for the gesture.
void RootControl::startWheel(Point point, int modifiers) {
    const std::shared_ptr<const bool> alive = alive_;
    routeMoveToTarget(point, modifiers);
    if (*alive) routeWheelToTarget(WheelPhase::Begin, point, modifiers, {});
}

bool RootControl::routeWheelToTarget(WheelPhase phase, Point point, int modifiers, const WheelMove& move) {
    return mouseTarget().routeWheel(phase, targetPoint(point), modifiers, move);
}

void RootControl::endWheel(void* /*sender*/) {
    wheelTimer_->running = false;
    mouseTarget().routeWheel(WheelPhase::End, {}, 0, {});
}

void RootControl::setMouseCapture(Control* control) {
    if (control == mouseCapture_) return;
    if (mouseCapture_) {
        if (wheelTimer_ && wheelTimer_->running) endWheel(nullptr);
        mouseCapture_->capture_ = Capture::None;
    }
    mouseCapture_ = control;
}

}  // namespace vanta::gui
