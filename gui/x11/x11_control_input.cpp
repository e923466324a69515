#include <cmath>
#include <utility>

#include "gui/tree/modifiers.hpp"
#include "gui/tree/user_interface.hpp"
#include "gui/x11/x11_control.hpp"
#include "gui/x11/x11_interface.hpp"

namespace vanta::gui {
namespace {

/// The window had the focus and has lost it. Where the focus follows the pointer, the window under it is told
/// of changes between others too; and a grab of the keyboard alone does not end a press.
bool isRealLoss(const XFocusChangeEvent& event) {
    const bool byPointer = event.detail == NotifyPointer || event.detail == NotifyPointerRoot;
    return !byPointer && event.detail != NotifyInferior &&
           (event.mode == NotifyNormal || event.mode == NotifyWhileGrabbed);
}

/// What an embedder and its guest tell each other (XEmbed protocol 0).
enum XEmbed : long { EmbeddedNotify = 0, RequestFocus = 3, GivesFocus = 4, TakesFocus = 5 };
enum XEmbedFocus : long { FocusFirst = 1, FocusLast = 2 };

}  // namespace

Point X11Control::toLogical(Point device) const {
    const float scale = session_.backing.scale();
    return {device.x / scale, device.y / scale};
}

void X11Control::handleEvent(XEvent& event) {
    if (event.type == DestroyNotify) {
        lost(event.xdestroywindow.window);
        return;
    }
    // In full screen the window in the host waits.
    if (event.xany.window != window_) return;
    switch (event.type) {
        case Expose:
            markDirty();
            break;
        case MapNotify:
            mapped_ = true;
            markDirty();
            if (fullScreen) takeKeyboard();
            break;
        case UnmapNotify: {
            const MessageScope scope(*this);
            mapped_ = false;
            platformCancelMode();
            if (scope.rootIsAlive()) platformMouseLeave();
            break;
        }
        case ConfigureNotify:
            // One from before our own resize tells what is no longer so.
            if (static_cast<long>(event.xconfigure.serial - resizeRequest_) >= 0)
                newSize_ = DevicePoint{event.xconfigure.width, event.xconfigure.height};
            break;
        case kFocusOutEvent:
            if (isRealLoss(event.xfocus)) platformCancelMode();
            break;
        case kKeyPressEvent:
        case kKeyReleaseEvent:
            key(event.xkey);
            break;
        case ClientMessage:
            message(event.xclient);
            break;
        default:
            break;
    }
}

void X11Control::handlePointer(const PointerEvent& event) {
    if (event.window != window_) return;
    const MessageScope scope(*this);
    const bool onlyMoves = event.kind == PointerEvent::Kind::Move && event.clicks == Point{};
    if (onlyMoves || event.kind == PointerEvent::Kind::Enter) {
        pendingMove_ = event;
        return;
    }
    flushMove();
    if (!scope.rootIsAlive()) return;
    switch (event.kind) {
        case PointerEvent::Kind::Press:
            press(event);
            break;
        case PointerEvent::Kind::Release:
            if (event.button == Button1 || event.button == Button3) {
                platformMouseUp(event.button == Button1 ? kLeftPress : kRightPress, toLogical(event.position),
                                event.modifiers);
            }
            break;
        case PointerEvent::Kind::Leave:
            if (event.byGrab) platformCancelMode();
            if (scope.rootIsAlive()) platformMouseLeave();
            break;
        default:
            scroll(event);
            break;
    }
}

void X11Control::flushMove() {
    if (!pendingMove_) return;
    const PointerEvent move = *std::exchange(pendingMove_, std::nullopt);
    platformMouseMove(toLogical(move.position), move.modifiers);
}

void X11Control::press(const PointerEvent& event) {
    if (event.button != Button1 && event.button != Button3) return;
    const Point point = toLogical(event.position);
    const int doubleBit = isSecondClick(event, point) ? modifier::kDoubleClick : 0;
    platformMouseDown(event.button == Button1 ? kLeftPress : kRightPress, point, event.modifiers | doubleBit);
}

/// A third one begins anew.
bool X11Control::isSecondClick(const PointerEvent& event, Point point) {
    const std::optional<PointerEvent> first = std::exchange(lastPress_, event);
    if (!first || first->button != event.button) return false;
    const Point way = point - toLogical(first->position);
    const bool isSecond = event.time - first->time <= Time{UserInterface::kDoubleClickMs} &&
                          std::abs(way.x) <= UserInterface::kDoubleClickDistance &&
                          std::abs(way.y) <= UserInterface::kDoubleClickDistance;
    if (isSecond) lastPress_.reset();
    return isSecond;
}

void X11Control::scroll(const PointerEvent& event) {
    constexpr int kSideways = modifier::kCtrl | modifier::kShift;
    Point clicks = event.clicks;
    int modifiers = event.modifiers;
    if (clicks.y != 0.0f && (modifiers & kSideways) == kSideways) {
        clicks = {clicks.x + clicks.y, 0.0f};
        modifiers &= ~kSideways;
    }
    platformWheel(toLogical(event.position), modifiers,
                  wheelMeter_.measure(clicks, static_cast<std::int64_t>(event.time)));
}

void X11Control::setFocus(Control* control) {
    RootControl::setFocus(control);
    takeKeyboard();
}

void X11Control::focusMoved() {
    const Control* const owner = focusedControl();
    if (owner && owner->takesText()) {
        borrowKeyboard();
    } else {
        returnKeyboard();
    }
}

void X11Control::takeKeyboard() {
    if (window_ == kNoXid || !mapped_) return;
    if (embedder_ == kNoXid || storedWindow_ != kNoXid) {
        XSetInputFocus(display(), window_, RevertToParent, CurrentTime);
        return;
    }
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = embedder_;
    event.xclient.message_type = session_.display.atom("_XEMBED");
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(session_.display.eventTime());
    event.xclient.data.l[1] = RequestFocus;
    XSendEvent(display(), embedder_, kXFalse, NoEventMask, &event);
}

void X11Control::key(XKeyEvent& event) {
    const MessageScope scope(*this);
    const std::size_t code = event.keycode & 0xFFu;
    bool used = false;
    if (event.type == kKeyReleaseEvent) {
        used = usedKeys_[code];
        usedKeys_[code] = false;
    } else {
        for (const KeyPress& press : keys_.read(event)) {
            used = platformKey(press) || used;
            if (!scope.rootIsAlive()) return;
            if (!used && fullScreen && press.key == Key::Escape) {
                used = true;
                fullScreen = false;
            }
        }
        usedKeys_[code] = used;
    }
    if (!used) passOn(event);
}

/// An embedder hands on what is left of its keys when its own shortcuts have had theirs, digits and spaces
/// among them. So text is typed with the keyboard itself, which goes back where it was afterwards.
void X11Control::borrowKeyboard() {
    if (!isMapped() || embedder_ == kNoXid || storedWindow_ != kNoXid) return;
    if (keyboardLender_ == kNoXid) keyboardLender_ = keyboardOwner();
    XSetInputFocus(display(), window_, RevertToParent, CurrentTime);
}

/// Unless somebody has taken it meanwhile.
void X11Control::returnKeyboard() {
    const Window lender = std::exchange(keyboardLender_, kNoXid);
    if (lender != kNoXid && isMapped() && keyboardOwner() == window_)
        XSetInputFocus(display(), lender, RevertToParent, CurrentTime);
}

Window X11Control::keyboardOwner() const {
    Window owner = kNoXid;
    int revert = 0;
    XGetInputFocus(display(), &owner, &revert);
    return owner;
}

/// The host has shortcuts.
void X11Control::passOn(const XKeyEvent& event) {
    // What somebody has sent us was not wanted there; it would go back and forth for ever.
    if (parentWindow_ == kNoXid || event.send_event) return;
    XEvent passed{};
    passed.xkey = event;
    passed.xkey.window = parentWindow_;
    passed.xkey.subwindow = kNoXid;
    XSendEvent(display(), parentWindow_, kXTrue,
               event.type == kKeyReleaseEvent ? KeyReleaseMask : KeyPressMask, &passed);
}

void X11Control::message(const XClientMessageEvent& event) {
    X11Display& x = session_.display;
    if (event.message_type == x.atom("_XEMBED")) {
        embedderMessage(event);
    } else if (event.message_type == x.atom("WM_PROTOCOLS") &&
               static_cast<Atom>(event.data.l[0]) == x.atom("WM_DELETE_WINDOW")) {
        if (fullScreen) {
            fullScreen = false;
        } else {
            owner_.closeRequested();
        }
    }
}

void X11Control::embedderMessage(const XClientMessageEvent& event) {
    switch (event.data.l[1]) {
        case EmbeddedNotify:
            embedder_ = static_cast<Window>(event.data.l[3]);
            break;
        case GivesFocus:
            if (event.data.l[2] == FocusFirst) moveFocus(false);
            if (event.data.l[2] == FocusLast) moveFocus(true);
            break;
        case TakesFocus:
            platformCancelMode();
            break;
        default:
            break;
    }
}

}  // namespace vanta::gui
