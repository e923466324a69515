#include "gui/tree/root_control.hpp"

#include <utility>

#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/bitmap_error.hpp"
#include "gui/tree/timer.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

constexpr Color kBareGround = Color::of(0xFFC0C0C0);
/// How far the picture of the focus ring goes beyond the control, in logical units.
constexpr float kRingMargin = 3.0f;
/// In place of the picture where that is missing.
constexpr Color kPlainRing = Color::of(0xFFFFBBA9);
constexpr float kPlainRingWidth = 1.5f;

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
    paintFocus(canvas);
}

void RootControl::paintFocus(Canvas& canvas) {
    const Control* control = focusedControl();
    if (const Bitmap* own = control ? control->focusPicture() : nullptr) {
        canvas.drawBitmap(*own, Point{focusRing_.left, focusRing_.top});
        return;
    }
    if (!focusPicture_) {
        focusPicture_ = ui().createBitmap();
        try {
            focusPicture_->load("FocusRing");
        } catch (const EBitmap&) {
            focusPicture_ = ui().createBitmap();
        }
    }
    if (focusPicture_->isEmpty()) {
        canvas.drawFrame(outset(focusRing_, -kPlainRingWidth), kPlainRing, kPlainRingWidth);
    } else {
        canvas.drawStretched(*focusPicture_, focusRing_, focusPicture_->logicalRect());
    }
}

Rect RootControl::focusRingBounds() const {
    Control* control = focusedControl();
    if (!control || !control->isReachable()) return {};
    if (control->focusPicture()) return control->windowBounds();
    const Rect surrounded = control->focusBounds();
    if (surrounded.isEmpty()) return {};
    return outset(control->toWindow(surrounded), kRingMargin);
}

void RootControl::focusRingMoved() {
    const Rect now = focusRingBounds();
    if (isSame(now, focusRing_)) return;
    const UpdateBlock block(*this);
    markDirty(std::exchange(focusRing_, now));
    markDirty(now);
}

}  // namespace vanta::gui
