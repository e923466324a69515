#include "host/lv2/lv2_interface_descriptors.hpp"

#include <cstring>
#include <memory>
#include <utility>

#include "host/lv2/guarded.hpp"
#include "host/lv2/lv2_interface.hpp"

namespace vanta {
namespace {

Lv2Interface& interfaceOf(LV2UI_Handle handle) {
    return *static_cast<Lv2Interface*>(handle);
}

void cleanup(LV2UI_Handle handle) {
    delete &interfaceOf(handle);
}

void portEvent(LV2UI_Handle handle, std::uint32_t port, std::uint32_t size, std::uint32_t format,
               const void* buffer) {
    guarded([=] { interfaceOf(handle).portEvent(port, size, format, buffer); });
}

int idle(LV2UI_Handle handle) {
    return guarded([=] { return interfaceOf(handle).idle() ? 0 : 1; }, 1);
}

int show(LV2UI_Handle handle) {
    return guarded(
        [=] {
            interfaceOf(handle).show(true);
            return 0;
        },
        1);
}

int hide(LV2UI_Handle handle) {
    return guarded(
        [=] {
            interfaceOf(handle).show(false);
            return 0;
        },
        1);
}

int resize(LV2UI_Feature_Handle handle, int width, int height) {
    return guarded(
        [=] {
            interfaceOf(handle).resize({width, height});
            return 0;
        },
        1);
}

const void* extensionData(const char* uri) {
    static const LV2UI_Idle_Interface idles{idle};
    static const LV2UI_Show_Interface shows{show, hide};
    static const LV2UI_Resize resizes{nullptr, resize};
    if (std::strcmp(uri, LV2_UI__idleInterface) == 0) return &idles;
    if (std::strcmp(uri, LV2_UI__showInterface) == 0) return &shows;
    if (std::strcmp(uri, LV2_UI__resize) == 0) return &resizes;
    return nullptr;
}

}  // namespace

std::string lv2InterfaceUri() {
    return ownTerm("interface");
}

Lv2InterfaceModule::Lv2InterfaceModule(EmbeddedViewFactory views)
    : views_(std::move(views)),
      uri_(lv2InterfaceUri()),
      described_{{uri_.c_str(), instantiate, cleanup, portEvent, extensionData}, &views_} {}

LV2UI_Handle Lv2InterfaceModule::instantiate(const LV2UI_Descriptor* descriptor, const char* plugin,
                                             const char*, LV2UI_Write_Function write,
                                             LV2UI_Controller controller, LV2UI_Widget* widget,
                                             const LV2_Feature* const* list) {
    return guarded(
        [&]() -> LV2UI_Handle {
            const Lv2Layout* layout = lv2LayoutOf(plugin);
            const Lv2InterfaceFeatures features(list);
            const EmbeddedViewFactory& views = *reinterpret_cast<const Described*>(descriptor)->views;
            if (!layout || !features.map || !write || !views) return nullptr;
            auto made = std::make_unique<Lv2Interface>(*layout, Lv2Interface::Outlet{write, controller},
                                                       features, views);
            if (!made->view()) return nullptr;
            if (widget) *widget = reinterpret_cast<LV2UI_Widget>(made->view()->window());
            return made.release();
        },
        LV2UI_Handle{});
}

}  // namespace vanta
