#include "host/vst3/programs.hpp"

#include <algorithm>
#include <cmath>

namespace vanta::vst3 {

Programs::Programs(GenericPlugin& model) {
    {
        PluginStatics& statics = model.statics();
        const auto held = statics.lock();
        std::vector<PresetEntry*> all;
        statics.presets.flatten(all);
        for (const PresetEntry* entry : all) presets_.push_back(*entry);
    }
    follow(model);
}

double Programs::positionOf(int program) const {
    return count() > 1 ? static_cast<double>(program) / (count() - 1) : 0.0;
}

int Programs::at(double position) const {
    const double clamped = std::isnan(position) ? 0.0 : std::clamp(position, 0.0, 1.0);
    return static_cast<int>(std::lround(clamped * std::max(count() - 1, 0)));
}

bool Programs::request(int program) {
    if (program < 0 || program >= count() || current_.exchange(program) == program) return false;
    requested_.store(program);
    return true;
}

void Programs::loadRequested(GenericPlugin& model) {
    const int program = requested_.exchange(kNone);
    if (program == kNone) return;
    if (!model.loadPreset(presets_[static_cast<std::size_t>(program)])) follow(model);
}

bool Programs::follow(GenericPlugin& model) {
    if (requested_.load() != kNone) return false;
    const PresetState::Values preset = model.presetState().values();
    const auto isIt = [&](const PresetEntry& entry) {
        return preset.path.empty() ? entry.name == preset.name : entry.path == preset.path;
    };
    const auto found = std::ranges::find_if(presets_, isIt);
    if (found == presets_.end()) return false;
    const int program = static_cast<int>(found - presets_.begin());
    return current_.exchange(program) != program;
}

}  // namespace vanta::vst3
