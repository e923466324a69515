#pragma once

#include <string>

#include "gui/x11/x11_headers.hpp"

namespace vanta::gui {

/// A connection to an X server that never ends the process, whatever the server complains of and even if it
/// goes. One thread at a time.
class X11Connection {
public:
    /// The display's name, empty for that of the environment. Throws std::runtime_error if there is none.
    explicit X11Connection(const std::string& name);
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    Display* get() const { return display_; }
    Window root() const { return DefaultRootWindow(display_); }
    /// The server has ended the connection.
    bool isBroken() const { return broken_; }
    /// Waits until the server has done all, and tells whether it has complained since `errors`.
    bool syncedWithoutError(unsigned errors);

private:
    Display* display_;
    bool broken_ = false;
};

}  // namespace vanta::gui
