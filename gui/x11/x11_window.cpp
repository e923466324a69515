#include "gui/x11/x11_window.hpp"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <stdexcept>

#include "gui/x11/x11_errors.hpp"

namespace vanta::gui {
namespace {

constexpr long kAllEvents = ExposureMask | StructureNotifyMask | KeyPressMask | KeyReleaseMask |
                            FocusChangeMask | ButtonPressMask | ButtonReleaseMask | PointerMotionMask |
                            EnterWindowMask | LeaveWindowMask;

template <std::size_t N>
void setWords(X11Display& display, Window window, const char* property, Atom type,
              const std::array<unsigned long, N>& words) {
    XChangeProperty(display.get(), window, display.atom(property), type, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(words.data()), static_cast<int>(N));
}

}  // namespace

Window createWindow(X11Display& display, Window parent, const DeviceRect& area, bool isMenu) {
    XSetWindowAttributes attributes{};
    attributes.border_pixel = 0;
    attributes.colormap = display.colormap();
    attributes.event_mask = kAllEvents;
    attributes.bit_gravity = NorthWestGravity;
    attributes.override_redirect = isMenu ? kXTrue : kXFalse;
    attributes.save_under = attributes.override_redirect;
    attributes.cursor = XCreateFontCursor(display.get(), XC_left_ptr);
    const unsigned errors = caughtErrors();
    const Window window = XCreateWindow(
        display.get(), parent, area.left, area.top, static_cast<unsigned>(std::max(area.width(), 1)),
        static_cast<unsigned>(std::max(area.height(), 1)), 0, X11Display::kDepth, InputOutput,
        display.visual(),
        CWBorderPixel | CWColormap | CWEventMask | CWBitGravity | CWOverrideRedirect | CWSaveUnder | CWCursor,
        &attributes);
    // The window keeps it.
    XFreeCursor(display.get(), attributes.cursor);
    if (!display.syncedWithoutError(errors))
        throw std::runtime_error(fmt::format("no window can be made in window {:#x}", parent));
    return window;
}

void makeTopLevel(X11Display& display, Window window, const std::string& title, bool fullScreen) {
    Atom deletion = display.atom("WM_DELETE_WINDOW");
    XSetWMProtocols(display.get(), window, &deletion, 1);
    writeTitle(display, window, title);
    setWords<1>(display, window, "_NET_WM_PID", XA_CARDINAL, {static_cast<unsigned long>(getpid())});
    if (!fullScreen) return;
    setWords<1>(display, window, "_NET_WM_STATE", XA_ATOM, {display.atom("_NET_WM_STATE_FULLSCREEN")});
}

void writeTitle(X11Display& display, Window window, const std::string& title) {
    Xutf8SetWMProperties(display.get(), window, title.c_str(), title.c_str(), nullptr, 0, nullptr, nullptr,
                         nullptr);
}

void makeEmbedded(X11Display& display, Window window) {
    constexpr unsigned long kVersion = 0;
    constexpr unsigned long kMapped = 1;
    setWords<2>(display, window, "_XEMBED_INFO", display.atom("_XEMBED_INFO"), {kVersion, kMapped});
}

}  // namespace vanta::gui
