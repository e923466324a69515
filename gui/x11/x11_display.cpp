#include "gui/x11/x11_display.hpp"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <limits>
#include <stdexcept>

#include "gui/x11/x11_errors.hpp"

namespace vanta::gui {
namespace {

constexpr float kUsualDpi = 96.0f;

}  // namespace

X11Display::X11Display(const std::string& name)
    : display_(XOpenDisplay(name.empty() ? nullptr : name.c_str())) {
    if (!display_) throw std::runtime_error(std::string("cannot open display ") + XDisplayName(name.c_str()));
    catchErrors(display_);
    // Called after the handler of the process: the connection says so, and the process lives on.
    XSetIOErrorExitHandler(
        display_, [](Display*, void* self) { static_cast<X11Display*>(self)->broken_ = true; }, this);
    try {
        findVisual();
    } catch (...) {
        XCloseDisplay(display_);
        stopCatchingErrors(display_);
        throw;
    }
    findExtensions();
    // A desktop that changes its settings tells here.
    XSelectInput(display_, root(), PropertyChangeMask);
}

X11Display::~X11Display() {
    XFreeColormap(display_, colormap_);
    XCloseDisplay(display_);
    stopCatchingErrors(display_);
}

void X11Display::findVisual() {
    XVisualInfo info{};
    const bool found = XMatchVisualInfo(display_, DefaultScreen(display_), kDepth, TrueColor, &info) != 0;
    if (!found || info.red_mask != 0xFF0000 || info.blue_mask != 0xFF)
        throw std::runtime_error("the display has no true colour of 24 bits");
    visual_ = info.visual;
    colormap_ = XCreateColormap(display_, root(), visual_, AllocNone);
}

void X11Display::findExtensions() {
    const bool serverIsLittle = ImageByteOrder(display_) == LSBFirst;
    const bool sameOrder = serverIsLittle == (std::endian::native == std::endian::little);
    sharesMemory_ = sameOrder && XShmQueryExtension(display_) != 0;
    int firstEvent = 0;
    int firstError = 0;
    int major = 2;
    int minor = 1;
    if (XQueryExtension(display_, "XInputExtension", &inputOpcode_, &firstEvent, &firstError) == 0 ||
        XIQueryVersion(display_, &major, &minor) != kXSuccess)
        inputOpcode_ = -1;
    int supported = 0;
    XkbSetDetectableAutoRepeat(display_, kXTrue, &supported);
}

Atom X11Display::atom(const char* name) {
    auto found = atoms_.find(name);
    if (found == atoms_.end()) {
        found = atoms_.emplace(name, XInternAtom(display_, name, kXFalse)).first;
    }
    return found->second;
}

bool X11Display::syncedWithoutError(unsigned errors) {
    XSync(display_, kXFalse);
    return !broken_ && caughtErrors() == errors;
}

float X11Display::dpi() const {
    // Xlib keeps what the property was when the connection began.
    Atom type = kNoXid;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* bytes = nullptr;
    constexpr long kWords = 1 << 16;
    if (XGetWindowProperty(display_, root(), XA_RESOURCE_MANAGER, 0, kWords, kXFalse, XA_STRING, &type,
                           &format, &count, &left, &bytes) != kXSuccess ||
        !bytes)
        return kUsualDpi;
    float dpi = kUsualDpi;
    XrmInitialize();
    if (XrmDatabase database = XrmGetStringDatabase(reinterpret_cast<const char*>(bytes))) {
        char* kind = nullptr;
        XrmValue value{};
        if (XrmGetResource(database, "Xft.dpi", "Xft.Dpi", &kind, &value) != 0 && value.addr) {
            dpi = std::strtof(value.addr, nullptr);
        }
        XrmDestroyDatabase(database);
    }
    XFree(bytes);
    return dpi > 0.0f ? dpi : kUsualDpi;
}

DeviceRect X11Display::monitorAt(const DeviceRect& area) const {
    DeviceRect best{0, 0, DisplayWidth(display_, DefaultScreen(display_)),
                    DisplayHeight(display_, DefaultScreen(display_))};
    int count = 0;
    XRRMonitorInfo* monitors = XRRGetMonitors(display_, root(), kXTrue, &count);
    long bestShare = -1;
    for (int i = 0; i < count; ++i) {
        const XRRMonitorInfo& info = monitors[i];
        const DeviceRect monitor = DeviceRect::ofSize(info.x, info.y, info.width, info.height);
        const DeviceRect common = monitor.intersected(area);
        const long share = common.isEmpty() ? 0 : static_cast<long>(common.width()) * common.height();
        if (share > bestShare) {
            bestShare = share;
            best = monitor;
        }
    }
    if (monitors) XRRFreeMonitors(monitors);
    return best;
}

X11EventTarget* X11Display::target(Window window) const {
    const auto found = targets_.find(window);
    return found == targets_.end() ? nullptr : found->second;
}

DeviceRect areaOnScreen(X11Display& display, Window window) {
    XWindowAttributes attributes{};
    int x = 0;
    int y = 0;
    Window child = kNoXid;
    if (XGetWindowAttributes(display.get(), window, &attributes) == 0 ||
        XTranslateCoordinates(display.get(), window, display.root(), 0, 0, &x, &y, &child) == 0)
        return {};
    return DeviceRect::ofSize(x, y, attributes.width, attributes.height);
}

}  // namespace vanta::gui
