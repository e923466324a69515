#pragma once

#include <map>

#include "gui/x11/pointer_event.hpp"

namespace vanta::gui {

class X11Display;

/// The scrolling axes of the pointing devices, which count on and on: what moves is the difference.
class ScrollAxes {
public:
    struct Axis {
        bool vertical = true;
        double perClick = 1.0;
        double last = 0.0;
    };

    /// `device` is the real one behind the pointer.
    void set(int device, int valuator, const Axis& axis) { devices_[device][valuator] = axis; }
    void clear() { devices_.clear(); }
    /// Clicks since the last value; positive is up and right.
    Point moved(int device, int valuator, double value);

private:
    std::map<int, std::map<int, Axis>> devices_;
};

/// The pointer by way of XInput2, which scrolls smoothly.
class X11Pointer {
public:
    /// `display` must have XInput2.
    explicit X11Pointer(X11Display& display);

    /// Asks for the window's events; they come instead of X's first kind.
    void select(Window window);
    /// Reads where the axes stand: they move on while the pointer is elsewhere, and change with the device.
    void readAxes();
    /// From an event whose data are there. False if it is none of the pointer.
    bool fromInput(const XGenericEventCookie& cookie, PointerEvent& pointer);

private:
    Point scrolled(const XIDeviceEvent& event);

    X11Display& display_;
    ScrollAxes axes_;
};

}  // namespace vanta::gui
