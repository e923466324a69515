#include "limiter/model/vanta_plugin.hpp"

#include "limiter/latency/parameter_delays.hpp"
#include "limiter/model/vanta_preset.hpp"
#include "limiter/model/vanta_product.hpp"
#include "limiter/model/vanta_statics.hpp"

namespace vanta {

VantaPlugin::VantaPlugin(ChannelLayout layout)
    : GenericPlugin(layout), VantaParameters(static_cast<GenericPluginBase&>(*this)) {
    initialize(parametersWith(&ParameterRow::followsInterface));
}

std::string VantaPlugin::presetMagic() const {
    return std::string(kPresetTag);
}

int VantaPlugin::presetVersion() const {
    return kPresetVersion;
}

std::unique_ptr<PluginStatics> VantaPlugin::createStatics() {
    return std::make_unique<VantaStatics>(parameterCount());
}

InterfaceSizes VantaPlugin::interfaceSizes() const {
    return vantaInterfaceSizes();
}

bool VantaPlugin::loadFile(const std::string& path) {
    return loadPresetFile(*this, path, isInitialLoad() ? LockOutputRule::Ignore : LockOutputRule::Honour);
}

void VantaPlugin::parameterHook(int index) {
    if (changesDelays(*this, index)) updateLatency();
}

void VantaPlugin::updateLatency() {
    // Several threads may each set one of the parameters: whoever stores last has seen them all.
    do {
        setLatency(delaysOf(*this, sampleRate()).total);
    } while (latency() != delaysOf(*this, sampleRate()).total);
}

}  // namespace vanta
