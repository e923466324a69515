#include "app/state_command.hpp"

#include <fmt/format.h>

#include "app/failure.hpp"
#include "app/output_path.hpp"
#include "app/session_file.hpp"
#include "app/state_text.hpp"

namespace vanta {

namespace {

bool changesPreset(const RenderCommand& settings) {
    return !settings.parameters.empty() || !settings.assignments.empty();
}

}  // namespace

int runStateSave(const StateCommand& command) {
    std::vector<std::filesystem::path> read;
    if (!command.settings.preset.empty()) read.emplace_back(command.settings.preset);
    checkOutput(command.file, read, command.replace);
    LimiterSettings settings;
    const std::string preset = applySettings(settings, command.settings);
    SessionInstance instance;
    if (!command.settings.state.empty()) instance.recall(command.settings.state);
    instance.take(settings);
    // Taking the values over has marked whatever preset was there before as modified.
    if (!preset.empty()) instance.presetState().set({preset, {}, changesPreset(command.settings)});
    instance.store(command.file);
    return kExitDone;
}

int runStateShow(const StateCommand& command) {
    SessionInstance instance;
    instance.recall(command.file);
    fmt::print("{}", command.json ? stateJson(instance) : stateText(instance));
    return kExitDone;
}

}  // namespace vanta
