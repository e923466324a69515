#pragma once

#include <array>
#include <string_view>

#include "limiter/parameters/vanta_parameters.hpp"
#include "plugin/presets/custom_preset_loader.hpp"

namespace vanta {

/// Takes presets of the plug-in's first generation: 19 values, without some of today's switches, and with
/// channel links of which 1 meant what 0.5 means today.
class V1PresetLoader final : public CustomPresetLoader {
public:
    static constexpr std::string_view kTag = "Vntr";
    static constexpr int kVersion = 3;

    explicit V1PresetLoader(VantaParameters& table);

    /// Sets what the format lacks as it was in its time: True Peak Limiting, Filter DC Offset, Side Chain
    /// Triggering and Unity Gain off, what came later at its default.
    void prepare(int version) override;
    /// Brings the channel links to today's range.
    void finish(int version) override;

private:
    std::array<PropPluginParameter<bool>*, 4> switchedOff_;
};

}  // namespace vanta
