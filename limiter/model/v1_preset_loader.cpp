#include "limiter/model/v1_preset_loader.hpp"

#include <algorithm>
#include <initializer_list>
#include <string>

namespace vanta {
namespace {

constexpr std::size_t kLinkTransients = 5;
constexpr std::size_t kLinkRelease = 6;

void halve(const PresetTarget& target) {
    if (target.loaded) target.parameter->setValue(0.5f * target.value, 0);
}

}  // namespace

V1PresetLoader::V1PresetLoader(VantaParameters& table)
    : CustomPresetLoader(table.owner(), std::string(kTag), kNoMapping),
      switchedOff_{&table.truePeakLimiting, &table.filterDcOffset, &table.sideChainTriggering,
                   &table.unityGain} {
    for (AbstractPluginParameter* parameter : std::initializer_list<AbstractPluginParameter*>{
             &table.gain, &table.style, &table.lookahead, &table.attack, &table.release,
             &table.channelLinkTransients, &table.channelLinkRelease, &table.oversampling, &table.dithering,
             &table.noiseShaping, &table.bypass, &table.outputLevel, &table.lockOutput, &table.receiveMidi,
             &table.meterScale, &table.showAdvanced, &table.displayMode, nullptr, &table.truePeakMetering}) {
        targets.push_back({parameter});
    }
    for (int i = 0; i < changed().parameterCount(); ++i) {
        AbstractPluginParameter* parameter = changed().parameterAt(i);
        const bool isHeld = std::ranges::find(targets, parameter, &PresetTarget::parameter) != targets.end();
        if (!isHeld && std::ranges::find(switchedOff_, parameter) == switchedOff_.end()) {
            addedParameters.push_back(parameter);
        }
    }
}

void V1PresetLoader::prepare(int version) {
    CustomPresetLoader::prepare(version);
    for (PropPluginParameter<bool>* parameter : switchedOff_) parameter->setMapped(false);
}

void V1PresetLoader::finish(int /*version*/) {
    halve(targets[kLinkRelease]);
    halve(targets[kLinkTransients]);
}

}  // namespace vanta
