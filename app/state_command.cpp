#include "app/state_command.hpp"

#include <fmt/format.h>

#include "app/failure.hpp"
#include "app/output_path.hpp"
#include "app/session_file.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

bool changesPreset(const RenderCommand& settings) {
    return !settings.parameters.empty() || !settings.assignments.empty() || !settings.sideChain.empty();
}

std::string slotName(const CompareStates::Contents& compare, int slot) {
    return fmt::format("{}{}", slot == 0 ? 'A' : 'B', slot == compare.current ? " (current)" : "");
}

}  // namespace

int runStateSave(const StateCommand& command) {
    std::vector<fs::path> read;
    if (!command.settings.preset.empty()) read.emplace_back(command.settings.preset);
    checkOutput(command.file, read, command.replace);
    LimiterSettings settings;
    applySettings(settings, command.settings);
    SessionInstance instance;
    if (!command.settings.state.empty()) instance.recall(command.settings.state);
    instance.take(settings);
    if (!command.settings.preset.empty()) {
        instance.setPresetName(fs::path(command.settings.preset).stem().string());
        if (changesPreset(command.settings)) instance.markModified();
    }
    instance.store(command.file);
    return kExitDone;
}

int runStateShow(const StateCommand& command) {
    SessionInstance instance;
    instance.recall(command.file);
    const PresetState::Values preset = instance.presetState().values();
    const CompareStates::Contents compare = instance.compareStates().contents();
    fmt::print("{:<36}{}{}\n", "Preset", preset.name.empty() ? "none" : preset.name,
               preset.modified ? " (modified)" : "");
    if (compare.initialized)
        fmt::print("{:<36}{:<20}{}\n", "Compare", slotName(compare, 0), slotName(compare, 1));
    for (int i = 0; i < instance.parameterCount(); ++i) {
        const AbstractPluginParameter& parameter = *instance.parameterAt(i);
        const auto text = [&](const State& slot) {
            return parameter.text(slot.values[static_cast<std::size_t>(i)]);
        };
        if (compare.initialized) {
            fmt::print("{:<36}{:<20}{}\n", parameter.name(), text(compare.slots[0]), text(compare.slots[1]));
        } else {
            fmt::print("{:<36}{}\n", parameter.name(), parameter.text(parameter.value()));
        }
    }
    return kExitDone;
}

}  // namespace vanta
