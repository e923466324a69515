#include "gui/x11/x11_pointer.hpp"

#include <array>

#include "gui/x11/x11_display.hpp"

namespace vanta::gui {
namespace {

constexpr int kButtonMaskShift = 8;  ///< of the first button in X's mask of keys and buttons

/// Keys and buttons as the first kind of events has them.
template <typename Event>
unsigned stateOf(const Event& event) {
    unsigned state = static_cast<unsigned>(event.mods.effective) & 0xFFu;
    for (int button = 1; button <= 3; ++button) {
        if (event.buttons.mask_len * 8 > button && XIMaskIsSet(event.buttons.mask, button))
            state |= 1u << (kButtonMaskShift + button - 1);
    }
    return state;
}

template <typename Event>
void takeCommon(const Event& event, PointerEvent& pointer) {
    pointer.window = event.event;
    pointer.position = {static_cast<float>(event.event_x), static_cast<float>(event.event_y)};
    pointer.onScreen = {static_cast<float>(event.root_x), static_cast<float>(event.root_y)};
    pointer.modifiers = toModifiers(stateOf(event));
    pointer.time = event.time;
}

}  // namespace

Point ScrollAxes::moved(int device, int valuator, double value) {
    const auto found = devices_.find(device);
    if (found == devices_.end()) return {};
    const auto axis = found->second.find(valuator);
    if (axis == found->second.end()) return {};
    const auto clicks = static_cast<float>((value - axis->second.last) / axis->second.perClick);
    axis->second.last = value;
    return axis->second.vertical ? Point{0.0f, -clicks} : Point{clicks, 0.0f};
}

X11Pointer::X11Pointer(X11Display& display) : display_(display) {
    readAxes();
}

void X11Pointer::select(Window window) {
    std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits{};
    for (const int event :
         {XI_ButtonPress, XI_ButtonRelease, XI_Motion, XI_Enter, XI_Leave, XI_DeviceChanged}) {
        bits[static_cast<std::size_t>(event) / 8] |= static_cast<unsigned char>(1 << event % 8);
    }
    XIEventMask mask{XIAllMasterDevices, static_cast<int>(bits.size()), bits.data()};
    XISelectEvents(display_.get(), window, &mask, 1);
}

void X11Pointer::readAxes() {
    axes_.clear();
    int deviceCount = 0;
    XIDeviceInfo* devices = XIQueryDevice(display_.get(), XIAllDevices, &deviceCount);
    for (int i = 0; i < deviceCount; ++i) {
        const XIDeviceInfo& device = devices[i];
        std::map<int, double> values;
        for (int c = 0; c < device.num_classes; ++c) {
            if (device.classes[c]->type != XIValuatorClass) continue;
            const auto& valuator = *reinterpret_cast<const XIValuatorClassInfo*>(device.classes[c]);
            values[valuator.number] = valuator.value;
        }
        for (int c = 0; c < device.num_classes; ++c) {
            if (device.classes[c]->type != XIScrollClass) continue;
            const auto& scroll = *reinterpret_cast<const XIScrollClassInfo*>(device.classes[c]);
            if (scroll.increment == 0.0) continue;
            axes_.set(device.deviceid, scroll.number,
                      {scroll.scroll_type == XIScrollTypeVertical, scroll.increment, values[scroll.number]});
        }
    }
    if (devices) XIFreeDeviceInfo(devices);
}

Point X11Pointer::scrolled(const XIDeviceEvent& event) {
    Point clicks;
    const double* value = event.valuators.values;
    for (int i = 0; i < event.valuators.mask_len * 8; ++i) {
        if (XIMaskIsSet(event.valuators.mask, i)) clicks = clicks + axes_.moved(event.sourceid, i, *value++);
    }
    return clicks;
}

bool X11Pointer::fromInput(const XGenericEventCookie& cookie, PointerEvent& pointer) {
    switch (cookie.evtype) {
        case XI_ButtonPress:
        case XI_ButtonRelease: {
            const auto& event = *static_cast<const XIDeviceEvent*>(cookie.data);
            // A smooth axis has told the same already.
            if (event.flags & XIPointerEmulated) return false;
            takeCommon(event, pointer);
            takeButton(pointer, static_cast<unsigned>(event.detail), cookie.evtype == XI_ButtonPress);
            return true;
        }
        case XI_Motion: {
            const auto& event = *static_cast<const XIDeviceEvent*>(cookie.data);
            takeCommon(event, pointer);
            pointer.clicks = scrolled(event);
            return true;
        }
        case XI_Enter:
        case XI_Leave: {
            const auto& event = *static_cast<const XIEnterEvent*>(cookie.data);
            if (cookie.evtype == XI_Enter) readAxes();
            takeCommon(event, pointer);
            pointer.kind = cookie.evtype == XI_Enter ? PointerEvent::Kind::Enter : PointerEvent::Kind::Leave;
            pointer.byGrab = event.mode == XINotifyGrab;
            return true;
        }
        case XI_DeviceChanged:
            readAxes();
            return false;
        default:
            return false;
    }
}

}  // namespace vanta::gui
