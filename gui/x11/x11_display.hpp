#pragma once

#include <map>
#include <string>
#include <vector>

#include "gui/graphics/geometry.hpp"
#include "gui/x11/x11_connection.hpp"

namespace vanta::gui {

struct PointerEvent;

/// Whoever has a window.
class X11EventTarget {
public:
    virtual ~X11EventTarget() = default;
    virtual void handleEvent(XEvent& event) = 0;
    virtual void handlePointer(const PointerEvent& event) = 0;
};

/// The connection of an interface, and what is to be known of the server. It belongs to one thread.
class X11Display : public X11Connection {
public:
    /// The display's name, empty for that of the environment. Throws std::runtime_error if there is none, or
    /// none with 24 bits of colour.
    explicit X11Display(const std::string& name);
    ~X11Display();

    Visual* visual() const { return visual_; }
    Colormap colormap() const { return colormap_; }
    static constexpr int kDepth = 24;
    Atom atom(const char* name);

    /// Whether the server reads pictures from our memory, as far as is known.
    bool sharesMemory() const { return sharesMemory_; }
    void sharesNoMemory() { sharesMemory_ = false; }
    /// The number of XInput2's events; -1 without it.
    int inputOpcode() const { return inputOpcode_; }

    /// Dots an inch that the desktop wants for text, or 96.
    float dpi() const;
    /// The monitor with most of this area of the screen.
    DeviceRect monitorAt(const DeviceRect& area) const;
    /// The same without what the desktop keeps for its panels, where it says so.
    DeviceRect workAreaAt(const DeviceRect& area);
    /// Milliseconds from one refresh of the monitor there to the next; 0 where it does not tell.
    double refreshMsAt(const DeviceRect& area) const;
    /// The time of the newest event that tells one.
    Time eventTime() const { return eventTime_; }
    void noteTime(Time time) { eventTime_ = time; }

    void addTarget(Window window, X11EventTarget& target) { targets_[window] = &target; }
    void removeTarget(Window window) { targets_.erase(window); }
    X11EventTarget* target(Window window) const;

private:
    /// A property of the desktop; empty if there is none.
    std::vector<long> rootNumbers(const char* property);
    void findVisual();
    void findExtensions();

    Visual* visual_ = nullptr;
    Colormap colormap_ = kNoXid;
    bool sharesMemory_ = false;
    int inputOpcode_ = -1;
    Time eventTime_ = CurrentTime;
    std::map<std::string, Atom, std::less<>> atoms_;
    std::map<Window, X11EventTarget*> targets_;
};

/// A window's rectangle on the screen; empty if it has gone.
DeviceRect areaOnScreen(X11Display& display, Window window);

}  // namespace vanta::gui
