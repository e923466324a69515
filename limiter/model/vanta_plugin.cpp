#include "limiter/model/vanta_plugin.hpp"

#include "limiter/latency/style_stages.hpp"
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
    const bool delaysChange = index == kAllParameters || index == truePeakLimiting.index() ||
                              index == style.index() || index == oversampling.index();
    if (delaysChange) updateLatency();
}

SignalPathDelays VantaPlugin::delays() const {
    return {sampleRate(), 1 << oversampling.currentIndex(), truePeakLimiting.mapped(),
            styleStages(style.mapped())};
}

void VantaPlugin::updateLatency() {
    setLatency(delays().total);
}

}  // namespace vanta
