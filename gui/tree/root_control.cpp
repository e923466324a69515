#include "gui/tree/root_control.hpp"

#include <utility>

#include "gui/graphics/canvas.hpp"
#include "gui/tree/timer.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

constexpr Color kBareGround = Color::of(0xFFC0C0C0);
/// Of the focus ring, in logical units.
constexpr float kRingGap = 2.0f;
constexpr float kRingWidth = 1.5f;
constexpr float kRingEdge = 1.0f;

Rect outset(const Rect& rect, float by) {
    return {rect.left - by, rect.top - by, rect.right + by, rect.bottom + by};
}

}  // namespace

RootControl::RootControl(UserInterface& interface)
    : Control(interface), LockedObject(std::make_unique<RecursiveCriticalSection>()) {}

RootControl::~RootControl() {
    *alive_ = false;
    wheelTimer_.reset();
    if (std::exchange(lockDepth_, 0) > 0) unlockObject();
}

void RootControl::enterMessage() {
    if (lockDepth_++ == 0) lockObject();
}

void RootControl::leaveMessage() {
    if (--lockDepth_ == 0) unlockObject();
}

RootControl::MessageScope::MessageScope(RootControl& root) : root_(root), alive_(root.alive_) {
    root_.enterMessage();
}

RootControl::MessageScope::~MessageScope() {
    if (*alive_) root_.leaveMessage();
}

RootControl::LockGivenAway::LockGivenAway(RootControl& root)
    : root_(root), alive_(root.alive_), depth_(std::exchange(root.lockDepth_, 0)) {
    if (depth_ > 0) root_.unlockObject();
}

RootControl::LockGivenAway::~LockGivenAway() {
    if (!*alive_ || depth_ == 0) return;
    root_.lockObject();
    root_.lockDepth_ = depth_;
}

void RootControl::propertyChanged(AbstractProperty& property) {
    if (&property == &fullScreen) {
        fullScreenChanging_ = true;
        if (fullScreen) {
            enterFullScreen();
        } else {
            leaveFullScreen();
        }
        fullScreenChanging_ = false;
    } else if (&property == &focusRingColor || &property == &focusEdgeColor) {
        markDirty(focusRing_);
    } else {
        Control::propertyChanged(property);
    }
}

Rect RootControl::takeDirtyRect() {
    return std::exchange(dirtyRect_, Rect{});
}

void RootControl::invalidate(const Rect& rect) {
    dirtyRect_ = dirtyRect_.united(rect);
}

void RootControl::paint(Canvas& canvas) {
    if (!ui().paintBackdrop(canvas)) canvas.fillRect(localBounds(), kBareGround);
}

void RootControl::drawTree(Canvas& canvas) {
    const Canvas::State state = canvas.state();
    Control::drawTree(canvas);
    if (focusRing_.isEmpty()) return;
    canvas.setState(state);
    const Rect inner = outset(focusRing_, -(kRingWidth + kRingEdge));
    canvas.drawFrame(inner, focusRingColor, kRingWidth);
    canvas.drawFrame(outset(inner, kRingWidth), focusEdgeColor, kRingEdge);
}

Rect RootControl::focusRingBounds() const {
    Control* control = focusedControl();
    if (!control || !control->isReachable()) return {};
    const Rect surrounded = control->focusBounds();
    if (surrounded.isEmpty()) return {};
    return outset(control->toWindow(surrounded), kRingGap + kRingWidth + kRingEdge);
}

void RootControl::focusRingMoved() {
    const Rect now = focusRingBounds();
    if (isSame(now, focusRing_)) return;
    const UpdateBlock block(*this);
    markDirty(std::exchange(focusRing_, now));
    markDirty(now);
}

}  // namespace vanta::gui
