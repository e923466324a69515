#include "app/preset_command.hpp"

#include <fmt/format.h>

#include "app/failure.hpp"
#include "app/preset_library.hpp"
#include "limiter/vanta_preset.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

/// A bare name means the user's preset folder.
fs::path targetFile(const std::string& target) {
    const bool isFile = target.find('/') != std::string::npos || fs::path(target).extension() == ".qmp";
    return isFile ? fs::path(target) : PresetLibrary::userFolder() / (target + ".qmp");
}

void save(LimiterSettings& settings, const PresetCommand& command) {
    const fs::path file = targetFile(command.target);
    std::error_code error;
    if (fs::exists(file, error) && !command.replace) {
        throw Failure(fmt::format("{}: exists; --force replaces it", file.string()));
    }
    if (file.has_parent_path()) fs::create_directories(file.parent_path(), error);
    if (!savePresetFile(settings, file)) {
        throw Failure(
            fmt::format("An error occurred while saving the preset. Please check that the preset file "
                        "is writable: {}",
                        file.string()));
    }
    fmt::print("{}\n", file.string());
}

}  // namespace

int runPresetShow(const PresetCommand& command) {
    LimiterSettings settings;
    loadNamedPreset(settings, command.source);
    for (int i = 0; i < settings.parameterCount(); ++i) {
        const AbstractPluginParameter& parameter = *settings.parameterAt(i);
        fmt::print("{:<36}{}\n", parameter.name(), parameter.text(parameter.value()));
    }
    return kExitDone;
}

int runPresetSave(const PresetCommand& command) {
    LimiterSettings settings;
    applySettings(settings, command.settings);
    save(settings, command);
    return kExitDone;
}

int runPresetConvert(const PresetCommand& command) {
    LimiterSettings settings;
    loadNamedPreset(settings, command.source);
    save(settings, command);
    return kExitDone;
}

}  // namespace vanta
