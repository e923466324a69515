#pragma once

#include <bitset>
#include <optional>
#include <string>

#include "gui/tree/root_control.hpp"
#include "gui/x11/pointer_event.hpp"
#include "gui/x11/wheel_meter.hpp"
#include "gui/x11/x11_keys.hpp"
#include "gui/x11/x11_pointer.hpp"
#include "gui/x11/x11_session.hpp"

namespace vanta::gui {

class X11Interface;

/// The root control as a window of X: a top-level, or inside the window of a host. How it is painted is up to
/// the derived class.
class X11Control : public RootControl, public X11EventTarget {
public:
    /// `parentWindow` 0 makes a top-level. Throws std::runtime_error if the parent does not exist.
    X11Control(X11Interface& interface, X11Session& session, Window parentWindow, const std::string& title);
    ~X11Control() override;

    /// What is shown now, 0 if it has been destroyed from outside.
    Window window() const { return window_; }
    void show();
    void hide();
    void setTitle(const std::string& title);

    /// Something waits for the next frame.
    bool needsFrame() const;
    /// Takes over the newest size and position of the pointer, and paints. Afterwards the root may have gone.
    void frame();

    /// From an event of XInput2 whose data are there. False if it is none of the pointer.
    bool readInput(const XGenericEventCookie& event, PointerEvent& pointer) {
        return pointer_ && pointer_->fromInput(event, pointer);
    }
    void handleEvent(XEvent& event) override;
    void handlePointer(const PointerEvent& event) override;
    void setFocus(Control* control) override;
    void focusMoved() override;
    void enterFullScreen() override;
    void leaveFullScreen() override;
    void resized() override;

protected:
    /// Something is dirty that `paintDirty` would show.
    virtual bool needsPainting() const;
    /// Paints what is dirty, and nothing else, and shows it.
    virtual void paintDirty() = 0;
    /// The window has another number of pixels.
    virtual void deviceSizeChanged(DevicePoint size) = 0;
    X11Session& session() const { return session_; }
    bool isMapped() const { return mapped_ && window_ != kNoXid; }
    DevicePoint deviceSize() const;

private:
    Display* display() const { return session_.display.get(); }
    Point toLogical(Point device) const;
    void attach(Window window);
    void lost(Window window);
    void resizeWindow(DevicePoint size);
    void follow(DevicePoint size);
    void applySize();
    void flushMove();
    void press(const PointerEvent& event);
    void scroll(const PointerEvent& event);
    bool isSecondClick(const PointerEvent& event, Point point);
    void key(XKeyEvent& event);
    void passOn(const XKeyEvent& event);
    void message(const XClientMessageEvent& event);
    void embedderMessage(const XClientMessageEvent& event);
    void takeKeyboard();
    void borrowKeyboard();
    void returnKeyboard();
    Window keyboardOwner() const;

    X11Interface& owner_;
    X11Session& session_;
    std::optional<X11Pointer> pointer_;  ///< none where XInput2 is missing
    X11Keys keys_;
    std::string title_;
    Window parentWindow_;
    Window window_ = kNoXid;
    Window storedWindow_ = kNoXid;    ///< in full screen: the one to come back to
    Window embedder_ = kNoXid;        ///< has told by XEmbed that it gives the focus
    Window keyboardLender_ = kNoXid;  ///< had the keyboard before text was typed here
    bool mapped_ = false;
    bool followingServer_ = false;
    DevicePoint windowSize_;
    unsigned long resizeRequest_ = 0;  ///< sizes that are older than this do not count
    std::optional<DevicePoint> newSize_;
    std::optional<PointerEvent> pendingMove_;
    std::optional<PointerEvent> lastPress_;  ///< may become a double click
    WheelMeter wheelMeter_;
    std::bitset<256> usedKeys_;  ///< key codes whose release is ours as well
};

}  // namespace vanta::gui
