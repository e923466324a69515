#include "gui/x11/x11_display.hpp"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace vanta::gui {
namespace {

constexpr float kUsualDpi = 96.0f;

double refreshMsOf(const XRRModeInfo& mode) {
    double lines = mode.vTotal;
    if (mode.modeFlags & RR_DoubleScan) lines *= 2.0;
    if (mode.modeFlags & RR_Interlace) lines /= 2.0;
    return mode.dotClock > 0 ? 1000.0 * mode.hTotal * lines / static_cast<double>(mode.dotClock) : 0.0;
}

}  // namespace

X11Display::X11Display(const std::string& name) : X11Connection(name) {
    findVisual();
    findExtensions();
    // A desktop that changes its settings tells here.
    XSelectInput(get(), root(), PropertyChangeMask);
}

X11Display::~X11Display() {
    XFreeColormap(get(), colormap_);
}

void X11Display::findVisual() {
    XVisualInfo info{};
    const bool found = XMatchVisualInfo(get(), DefaultScreen(get()), kDepth, TrueColor, &info) != 0;
    if (!found || info.red_mask != 0xFF0000 || info.blue_mask != 0xFF)
        throw std::runtime_error("the display has no true colour of 24 bits");
    visual_ = info.visual;
    colormap_ = XCreateColormap(get(), root(), visual_, AllocNone);
}

void X11Display::findExtensions() {
    const bool serverIsLittle = ImageByteOrder(get()) == LSBFirst;
    const bool sameOrder = serverIsLittle == (std::endian::native == std::endian::little);
    sharesMemory_ = sameOrder && XShmQueryExtension(get()) != 0;
    int firstEvent = 0;
    int firstError = 0;
    int major = 2;
    int minor = 1;
    if (XQueryExtension(get(), "XInputExtension", &inputOpcode_, &firstEvent, &firstError) == 0 ||
        XIQueryVersion(get(), &major, &minor) != kXSuccess)
        inputOpcode_ = -1;
    int supported = 0;
    XkbSetDetectableAutoRepeat(get(), kXTrue, &supported);
}

Atom X11Display::atom(const char* name) {
    auto found = atoms_.find(name);
    if (found == atoms_.end()) {
        found = atoms_.emplace(name, XInternAtom(get(), name, kXFalse)).first;
    }
    return found->second;
}

float X11Display::dpi() const {
    // Xlib keeps what the property was when the connection began.
    Atom type = kNoXid;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* bytes = nullptr;
    constexpr long kWords = 1 << 16;
    if (XGetWindowProperty(get(), root(), XA_RESOURCE_MANAGER, 0, kWords, kXFalse, XA_STRING, &type, &format,
                           &count, &left, &bytes) != kXSuccess ||
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
    DeviceRect best{0, 0, DisplayWidth(get(), DefaultScreen(get())),
                    DisplayHeight(get(), DefaultScreen(get()))};
    int count = 0;
    XRRMonitorInfo* monitors = XRRGetMonitors(get(), root(), kXTrue, &count);
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

/// The desktop tells one area for all monitors, and one for each of its workspaces.
DeviceRect X11Display::workAreaAt(const DeviceRect& area) {
    const DeviceRect monitor = monitorAt(area);
    const std::vector<long> current = rootNumbers("_NET_CURRENT_DESKTOP");
    const std::vector<long> areas = rootNumbers("_NET_WORKAREA");
    const std::size_t at = 4 * static_cast<std::size_t>(current.empty() ? 0 : std::max(current[0], 0L));
    if (areas.size() < at + 4) return monitor;
    const auto number = [&](std::size_t i) { return static_cast<int>(areas[at + i]); };
    const DeviceRect common =
        DeviceRect::ofSize(number(0), number(1), number(2), number(3)).intersected(monitor);
    return common.isEmpty() ? monitor : common;
}

std::vector<long> X11Display::rootNumbers(const char* property) {
    Atom type = kNoXid;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* bytes = nullptr;
    constexpr long kMost = 1024;
    if (XGetWindowProperty(get(), root(), atom(property), 0, kMost, kXFalse, XA_CARDINAL, &type, &format,
                           &count, &left, &bytes) != 0 ||
        !bytes)
        return {};
    std::vector<long> numbers;
    if (format == 32) {
        numbers.resize(count);  // Xlib hands 32 bits over as long, however wide that is
        std::memcpy(numbers.data(), bytes, count * sizeof(long));
    }
    XFree(bytes);
    return numbers;
}

double X11Display::refreshMsAt(const DeviceRect& area) const {
    XRRScreenResources* resources = XRRGetScreenResourcesCurrent(get(), root());
    if (!resources) return 0.0;
    RRMode shown = kNoXid;
    long bestShare = 0;
    for (int i = 0; i < resources->ncrtc; ++i) {
        XRRCrtcInfo* info = XRRGetCrtcInfo(get(), resources, resources->crtcs[i]);
        if (!info) continue;
        const DeviceRect common = DeviceRect::ofSize(info->x, info->y, static_cast<int>(info->width),
                                                     static_cast<int>(info->height))
                                      .intersected(area);
        const long share = common.isEmpty() ? 0 : static_cast<long>(common.width()) * common.height();
        if (share > bestShare) {
            bestShare = share;
            shown = info->mode;
        }
        XRRFreeCrtcInfo(info);
    }
    double refreshMs = 0.0;
    for (int i = 0; i < resources->nmode; ++i) {
        const XRRModeInfo& mode = resources->modes[i];
        if (mode.id == shown) refreshMs = refreshMsOf(mode);
    }
    XRRFreeScreenResources(resources);
    return refreshMs;
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
