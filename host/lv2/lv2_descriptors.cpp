#include "host/lv2/lv2_descriptors.hpp"

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "host/common/hosted_plugin.hpp"
#include "host/lv2/guarded.hpp"
#include "host/lv2/lv2_plugin.hpp"

namespace vanta {
namespace {

Lv2Plugin& pluginOf(LV2_Handle handle) {
    return *static_cast<Lv2Plugin*>(handle);
}

// The states

LV2_State_Status save(LV2_Handle handle, LV2_State_Store_Function store, LV2_State_Handle host, std::uint32_t,
                      const LV2_Feature* const*) {
    return guarded([&] { return pluginOf(handle).save(store, host); }, LV2_STATE_ERR_UNKNOWN);
}

LV2_State_Status restore(LV2_Handle handle, LV2_State_Retrieve_Function retrieve, LV2_State_Handle host,
                         std::uint32_t, const LV2_Feature* const*) {
    return guarded([&] { return pluginOf(handle).restore(retrieve, host); }, LV2_STATE_ERR_UNKNOWN);
}

// The plug-ins

bool supports(double sampleRate) {
    return sampleRate >= HostedPlugin::kLowestRate && sampleRate <= HostedPlugin::kHighestRate;
}

LV2_Handle instantiate(const LV2_Descriptor* descriptor, double sampleRate, const char*,
                       const LV2_Feature* const* list) {
    return guarded(
        [&]() -> LV2_Handle {
            const Lv2Layout* layout = lv2LayoutOf(descriptor->URI);
            const Lv2Features features(list);
            if (!layout || !features.map || !supports(sampleRate)) return nullptr;
            return std::make_unique<Lv2Plugin>(*layout, sampleRate, features).release();
        },
        LV2_Handle{});
}

void connectPort(LV2_Handle handle, std::uint32_t index, void* data) {
    pluginOf(handle).connectPort(index, data);
}

void activate(LV2_Handle handle) {
    guarded([handle] { pluginOf(handle).activate(); });
}

void run(LV2_Handle handle, std::uint32_t samples) {
    const bool done = guarded(
        [=] {
            pluginOf(handle).run(samples);
            return true;
        },
        false);
    // Memory has run out for another oversampling: LV2 knows no error of a block.
    if (!done) pluginOf(handle).silence(samples);
}

void cleanup(LV2_Handle handle) {
    delete &pluginOf(handle);
}

const void* extensionData(const char* uri) {
    static const LV2_State_Interface states{save, restore};
    return std::strcmp(uri, LV2_STATE__interface) == 0 ? &states : nullptr;
}

struct Descriptors {
    Descriptors() {
        for (const Lv2Layout& layout : lv2Layouts()) uris.push_back(layout.uri());
        for (const std::string& uri : uris) {
            // There is nothing to do when a host lets go.
            all.push_back(
                {uri.c_str(), instantiate, connectPort, activate, run, nullptr, cleanup, extensionData});
        }
    }
    std::vector<std::string> uris;
    std::vector<LV2_Descriptor> all;
};

}  // namespace

const LV2_Descriptor* lv2Descriptor(std::uint32_t index) {
    return guarded(
        [index]() -> const LV2_Descriptor* {
            static const Descriptors descriptors;
            return index < descriptors.all.size() ? &descriptors.all[index] : nullptr;
        },
        static_cast<const LV2_Descriptor*>(nullptr));
}

}  // namespace vanta
