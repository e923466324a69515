#pragma once

#include <string>

#include "gui/x11/x11_display.hpp"

namespace vanta::gui {

/// A window that tells all its events. It has no background, so that nothing flickers. `isMenu`: no window
/// manager touches it. Throws std::runtime_error if the parent does not exist.
Window createWindow(X11Display& display, Window parent, const DeviceRect& area, bool isMenu = false);
/// For the window manager. `fullScreen`: to cover its monitor.
void makeTopLevel(X11Display& display, Window window, const std::string& title, bool fullScreen);
void writeTitle(X11Display& display, Window window, const std::string& title);
/// Tells an embedder that the window is to be shown.
void makeEmbedded(X11Display& display, Window window);

}  // namespace vanta::gui
