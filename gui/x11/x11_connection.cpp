#include "gui/x11/x11_connection.hpp"

#include <stdexcept>

#include "gui/x11/x11_errors.hpp"

namespace vanta::gui {

X11Connection::X11Connection(const std::string& name)
    : display_(XOpenDisplay(name.empty() ? nullptr : name.c_str())) {
    if (!display_) throw std::runtime_error(std::string("cannot open display ") + XDisplayName(name.c_str()));
    catchErrors(display_);
    // Called after the handler of the process: the connection says so, and the process lives on.
    XSetIOErrorExitHandler(
        display_, [](Display*, void* self) { static_cast<X11Connection*>(self)->broken_ = true; }, this);
}

X11Connection::~X11Connection() {
    XCloseDisplay(display_);
    stopCatchingErrors(display_);
}

bool X11Connection::syncedWithoutError(unsigned errors) {
    XSync(display_, kXFalse);
    return !broken_ && caughtErrors() == errors;
}

}  // namespace vanta::gui
