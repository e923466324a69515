#pragma once

#include <lv2/ui/ui.h>

#include <cstdint>
#include <string>

#include "host/common/embedded_view.hpp"

namespace vanta {

/// The one interface of all our plug-ins; a plug-in tells it its layout by its URI.
std::string lv2InterfaceUri();

/// What a host finds in a module. It lives longer than all interfaces.
class Lv2InterfaceModule {
public:
    explicit Lv2InterfaceModule(EmbeddedViewFactory views);

    /// Null after the last. Nothing that is called through it throws.
    const LV2UI_Descriptor* descriptor(std::uint32_t index) const {
        return index == 0 ? &described_.descriptor : nullptr;
    }

private:
    /// What a host hands back has the descriptor at its start.
    struct Described {
        LV2UI_Descriptor descriptor;
        const EmbeddedViewFactory* views;
    };

    static LV2UI_Handle instantiate(const LV2UI_Descriptor* descriptor, const char* plugin,
                                    const char* bundle, LV2UI_Write_Function write,
                                    LV2UI_Controller controller, LV2UI_Widget* widget,
                                    const LV2_Feature* const* list);

    const EmbeddedViewFactory views_;
    const std::string uri_;
    Described described_;
};

}  // namespace vanta
