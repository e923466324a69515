#include "gui/x11/x11_connection.hpp"

#include <stdexcept>

#include "gui/x11/x11_errors.hpp"

namespace vanta::gui {

namespace {

std::string describe(const std::string& name) {
    const std::string wanted = XDisplayName(name.c_str());
    return wanted.empty() ? "there is no display: DISPLAY is not set" : "cannot open display " + wanted;
}

}  // namespace

X11Connection::X11Connection(const std::string& name)
    : display_(XOpenDisplay(name.empty() ? nullptr : name.c_str())) {
    if (!display_) throw std::runtime_error(describe(name));
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
