#include "host/lv2/lv2_interface.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "host/common/host_parameters.hpp"
#include "host/common/product_identity.hpp"
#include "host/lv2/lv2_mirror.hpp"
#include "host/lv2/lv2_parts.hpp"
#include "plugin/model/generic_plugin.hpp"

namespace vanta {

Lv2Interface::Lv2Interface(const Lv2Layout& layout, const Outlet& outlet,
                           const Lv2InterfaceFeatures& features, const EmbeddedViewFactory& views)
    : outlet_(outlet),
      uris_(*features.map),
      resize_(features.resize),
      touch_(features.touch),
      portMap_(features.ports),
      atom_((sizeof(Lv2PartAtom) + kLargestPart + 7) / 8),
      link_(makeLink(layout, features.instance)) {
    ports_ = lv2Ports(layout.layout, describeParameters(link_->plugin().model()));
    events_ = indexOf(Lv2PortKind::Events);
    notifications_ = indexOf(Lv2PortKind::Notify);
    open(features, views);
    if (view_ && features.subscribe) {
        features.subscribe->subscribe(features.subscribe->handle, notifications_, uris_.eventTransfer,
                                      nullptr);
    }
}

/// The window first: its last gestures end.
Lv2Interface::~Lv2Interface() {
    view_.reset();
    if (link_->isConnected()) tellHost();
}

std::unique_ptr<Lv2InterfaceLink> Lv2Interface::makeLink(const Lv2Layout& layout, LV2_Handle instance) {
    // A handle may be that of another copy of the module, or of a wrapper of the host's.
    if (auto same = instance ? Lv2Instances::find(instance) : nullptr) {
        return std::make_unique<Lv2SameInstance>(std::move(same));
    }
    return std::make_unique<Lv2Mirror>(layout, [this](auto part) { sendPart(part); });
}

void Lv2Interface::open(const Lv2InterfaceFeatures& features, const EmbeddedViewFactory& views) {
    const auto parent = reinterpret_cast<NativeWindow>(features.parent);
    view_ = views(link_->plugin(), parent, *this);
    if (!view_) return;
    const double scale = features.scale(uris_);
    view_->setScale(scale);
    const GenericPlugin& model = link_->plugin().model();
    const auto pixels = [&](int points) {
        return static_cast<int>(std::lround(points * views.scale(scale)));
    };
    view_->resize(view_->nearestSize({pixels(model.interfaceWidth()), pixels(model.interfaceHeight())}));
    if (parent != 0) {
        view_->setVisible(true);
        requestResize(view_->size());
        return;
    }
    const std::string title = features.title(uris_);
    view_->setTitle(title.empty() ? productIdentity().name : title);
}

// Ports

/// The host has the last word on where a port is.
std::uint32_t Lv2Interface::indexOf(const Lv2Port& port, std::size_t place) const {
    const auto index =
        portMap_ ? portMap_->port_index(portMap_->handle, port.symbol.c_str()) : LV2UI_INVALID_PORT_INDEX;
    return index != LV2UI_INVALID_PORT_INDEX ? index : static_cast<std::uint32_t>(place);
}

std::uint32_t Lv2Interface::indexOf(Lv2PortKind kind) const {
    const auto found = std::ranges::find(ports_, kind, &Lv2Port::kind);
    return indexOf(*found, static_cast<std::size_t>(found - ports_.begin()));
}

void Lv2Interface::portEvent(std::uint32_t port, std::uint32_t size, std::uint32_t format,
                             const void* buffer) {
    if (!buffer) return;
    if (format == uris_.eventTransfer && port == notifications_) {
        const auto part = lv2PartOf(static_cast<const LV2_Atom*>(buffer), size, uris_.ownToInterface, uris_);
        if (!part.empty()) link_->receive(part);
        return;
    }
    if (format != 0 || size != sizeof(float)) return;
    const auto parameters = static_cast<std::size_t>(hostParameterCount());
    const auto first = ports_.begin();
    const auto found =
        std::find_if(first, first + static_cast<std::ptrdiff_t>(parameters), [&](const Lv2Port& each) {
            return indexOf(each, static_cast<std::size_t>(&each - ports_.data())) == port;
        });
    if (found == first + static_cast<std::ptrdiff_t>(parameters)) return;
    float shown = 0.0f;
    std::memcpy(&shown, buffer, sizeof shown);
    link_->portSays(static_cast<int>(found->item), shown, Lv2InterfaceLink::Clock::now());
}

void Lv2Interface::sendPart(std::span<const std::byte> part) {
    const Lv2PartAtom head = lv2PartAtom(part.size(), uris_.ownToPlugin, uris_);
    auto* bytes = reinterpret_cast<std::byte*>(atom_.data());
    std::memcpy(bytes, &head, sizeof head);
    std::memcpy(bytes + sizeof head, part.data(), part.size());
    outlet_.write(outlet_.controller, events_, static_cast<std::uint32_t>(sizeof head + part.size()),
                  uris_.eventTransfer, bytes);
}

void Lv2Interface::tellHost() {
    using Edit = HostCallbacks::Edit;
    link_->edits().take([this](int index, Edit edit, float value) {
        const auto i = static_cast<std::size_t>(index);
        const std::uint32_t port = indexOf(ports_[i], i);
        if (edit != Edit::Value) {
            if (touch_) touch_->touch(touch_->handle, port, edit == Edit::Begin);
            return true;
        }
        const float shown = link_->control(index).shown(value);
        link_->valueTold(index, shown, Lv2InterfaceLink::Clock::now());
        outlet_.write(outlet_.controller, port, sizeof shown, 0, &shown);
        return true;
    });
}

// The window

bool Lv2Interface::idle() {
    if (view_) view_->idle();
    link_->idle(Lv2InterfaceLink::Clock::now());
    if (link_->isConnected()) tellHost();
    return !isClosed_;
}

void Lv2Interface::show(bool visible) {
    isClosed_ = false;
    if (view_) view_->setVisible(visible);
}

void Lv2Interface::resize(ViewSize size) {
    if (view_) view_->resize(view_->nearestSize(size));
}

bool Lv2Interface::requestResize(ViewSize size) {
    return resize_ && resize_->ui_resize(resize_->handle, size.width, size.height) == 0;
}

}  // namespace vanta
