#pragma once

#include <string>
#include <vector>

#include "limiter/model/vanta_plugin.hpp"

namespace vanta {

/// A preset as hosts offer it in their own browsers.
struct Lv2Preset {
    std::string uri;
    std::string label;
    std::string bank;    ///< empty for none
    std::string values;  ///< of the ports, and the state
};

/// The factory presets, in the archive's order. Each is loaded into `model` on the way. Throws
/// std::runtime_error for one that cannot be.
std::vector<Lv2Preset> readFactoryPresets(VantaPlugin& model);

/// Makes `model` what a new instance is.
void loadInitialPreset(VantaPlugin& model);

/// What a host reads when it looks for presets, and the one file with what is in them.
std::string presetManifest(const std::vector<Lv2Preset>& presets);
std::string describePresets(const std::vector<Lv2Preset>& presets);

inline constexpr const char* kPresetFile = "presets.ttl";

}  // namespace vanta
