#pragma once

#include <string>

#include "gui/graphics/device_backing.hpp"
#include "gui/x11/x11_display.hpp"

namespace vanta::gui {

/// What an interface and its open menus share: a menu may outlive the interface until its loop has ended.
struct X11Session {
    explicit X11Session(const std::string& displayName) : display(displayName) {}

    X11Display display;
    DeviceBacking backing;
};

}  // namespace vanta::gui
