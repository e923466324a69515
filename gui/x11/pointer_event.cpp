#include "gui/x11/pointer_event.hpp"

#include "gui/tree/modifiers.hpp"

namespace vanta::gui {
namespace {

constexpr unsigned kFirstWheelButton = 4;

Point pointOf(int x, int y) {
    return {static_cast<float>(x), static_cast<float>(y)};
}

template <typename Event>
void takeCommon(const Event& event, PointerEvent& pointer) {
    pointer.window = event.window;
    pointer.position = pointOf(event.x, event.y);
    pointer.onScreen = pointOf(event.x_root, event.y_root);
    pointer.modifiers = toModifiers(event.state);
    pointer.time = event.time;
}

Point wheelClicks(unsigned button) {
    constexpr Point kClicks[] = {{0.0f, 1.0f}, {0.0f, -1.0f}, {-1.0f, 0.0f}, {1.0f, 0.0f}};
    const unsigned index = button - kFirstWheelButton;
    return index < 4 ? kClicks[index] : Point{};
}

bool isWheelButton(unsigned button) {
    return button >= kFirstWheelButton && button < kFirstWheelButton + 4;
}

}  // namespace

int toModifiers(unsigned state) {
    int modifiers = 0;
    if (state & ShiftMask) modifiers |= modifier::kShift;
    if (state & ControlMask) modifiers |= modifier::kCtrl;
    if (state & Mod1Mask) modifiers |= modifier::kAlt;
    if (state & Mod4Mask) modifiers |= modifier::kMeta | modifier::kAlt;
    if (state & Button1Mask) modifiers |= modifier::kLeftButton;
    if (state & Button2Mask) modifiers |= modifier::kMiddleButton;
    if (state & Button3Mask) modifiers |= modifier::kRightButton;
    return modifiers;
}

int buttonModifier(unsigned button) {
    switch (button) {
        case Button1:
            return modifier::kLeftButton;
        case Button2:
            return modifier::kMiddleButton;
        case Button3:
            return modifier::kRightButton;
        default:
            return 0;
    }
}

void takeButton(PointerEvent& pointer, unsigned button, bool pressed) {
    if (isWheelButton(button)) {
        pointer.kind = PointerEvent::Kind::Move;
        if (pressed) pointer.clicks = wheelClicks(button);
        return;
    }
    pointer.kind = pressed ? PointerEvent::Kind::Press : PointerEvent::Kind::Release;
    pointer.button = button;
    if (pressed) {
        pointer.modifiers |= buttonModifier(button);
    } else {
        pointer.modifiers &= ~buttonModifier(button);
    }
}

bool fromCore(const XEvent& event, PointerEvent& pointer) {
    switch (event.type) {
        case ButtonPress:
        case ButtonRelease:
            takeCommon(event.xbutton, pointer);
            takeButton(pointer, event.xbutton.button, event.type == ButtonPress);
            return true;
        case MotionNotify:
            takeCommon(event.xmotion, pointer);
            return true;
        case EnterNotify:
        case LeaveNotify:
            takeCommon(event.xcrossing, pointer);
            pointer.kind = event.type == EnterNotify ? PointerEvent::Kind::Enter : PointerEvent::Kind::Leave;
            pointer.byGrab = event.xcrossing.mode == NotifyGrab;
            return true;
        default:
            return false;
    }
}

}  // namespace vanta::gui
