#pragma once

#include <lv2/atom/atom.h>
#include <lv2/ui/ui.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "host/common/embedded_view.hpp"
#include "host/lv2/lv2_features.hpp"
#include "host/lv2/lv2_interface_link.hpp"
#include "host/lv2/lv2_layouts.hpp"
#include "host/lv2/lv2_ports.hpp"
#include "host/lv2/lv2_uris.hpp"

namespace vanta {

/// The interface of a plug-in as LV2 hosts show it: a view of the very instance where the host hands it out,
/// else of a mirror. Everything on the thread that the host has for interfaces; what the host is to hear, it
/// hears within `idle`.
class Lv2Interface final : private EmbeddedViewHost {
public:
    /// How the host takes what an interface writes to ports.
    struct Outlet {
        LV2UI_Write_Function write;
        LV2UI_Controller controller;
    };

    /// `features` must map URIs. Without a parent the window is one of its own, and hidden.
    Lv2Interface(const Lv2Layout& layout, const Outlet& outlet, const Lv2InterfaceFeatures& features,
                 const EmbeddedViewFactory& views);
    ~Lv2Interface() override;

    /// Null if there is no display, or no such parent.
    EmbeddedView* view() { return view_.get(); }
    void portEvent(std::uint32_t port, std::uint32_t size, std::uint32_t format, const void* buffer);
    /// False: the user has closed the window.
    bool idle();
    void show(bool visible);
    void resize(ViewSize size);

private:
    std::unique_ptr<Lv2InterfaceLink> makeLink(const Lv2Layout& layout, LV2_Handle instance);
    void open(const Lv2InterfaceFeatures& features, const EmbeddedViewFactory& views);
    std::uint32_t indexOf(const Lv2Port& port, std::size_t place) const;
    std::uint32_t indexOf(Lv2PortKind kind) const;
    void tellHost();
    void sendPart(std::span<const std::byte> part);

    bool requestResize(ViewSize size) override;
    bool canResize() const override { return resize_ != nullptr; }
    void viewClosed(bool) override { isClosed_ = true; }

    const Outlet outlet_;
    const Lv2Uris uris_;
    const LV2UI_Resize* const resize_;
    const LV2UI_Touch* const touch_;
    const LV2UI_Port_Map* const portMap_;
    std::uint32_t events_ = LV2UI_INVALID_PORT_INDEX;
    std::uint32_t notifications_ = LV2UI_INVALID_PORT_INDEX;
    std::vector<std::uint64_t> atom_;  ///< on its way; atoms lie at multiples of 8 bytes
    std::unique_ptr<Lv2InterfaceLink> link_;
    std::vector<Lv2Port> ports_;
    bool isClosed_ = false;
    std::unique_ptr<EmbeddedView> view_;
};

}  // namespace vanta
