#include "cli/preset_commands.hpp"

#include <fmt/format.h>

#include <memory>

#include "cli/exit_code.hpp"
#include "cli/preset_library.hpp"
#include "cli/settings_arguments.hpp"
#include "cli/texts.hpp"
#include "foundation/output_check.hpp"
#include "limiter/model/vanta_preset.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

struct PresetArguments {
    std::string source;          ///< a preset's name or file
    std::string target;          ///< to be saved: a name in the user's folder, or a file
    SettingsArguments settings;  ///< to be saved
    bool replace = false;
};

fs::path targetFile(const std::string& target) {
    return looksLikePresetFile(target) ? fs::path(target) : PresetLibrary::userFolder() / (target + ".qmp");
}

void save(LimiterSettings& settings, const PresetArguments& arguments) {
    const fs::path file = targetFile(arguments.target);
    std::error_code error;
    if (fs::exists(file, error) && !arguments.replace)
        throw OutputExists(fmt::format("{}: already exists", file.string()));
    if (file.has_parent_path()) fs::create_directories(file.parent_path(), error);
    if (!savePresetFile(settings, file)) {
        throw Failure(fmt::format("{}: the preset could not be saved: make sure that the file is writable",
                                  file.string()));
    }
    fmt::print("{}\n", file.string());
}

int runShow(const PresetArguments& arguments) {
    LimiterSettings settings;
    loadNamedPreset(settings, arguments.source);
    for (int i = 0; i < settings.parameterCount(); ++i) {
        const AbstractPluginParameter& parameter = *settings.parameterAt(i);
        fmt::print("{:<36}{}\n", parameter.name(), parameter.text(parameter.value()));
    }
    return kExitDone;
}

int runSave(const PresetArguments& arguments) {
    LimiterSettings settings;
    arguments.settings.applyTo(settings);
    save(settings, arguments);
    return kExitDone;
}

int runConvert(const PresetArguments& arguments) {
    LimiterSettings settings;
    loadNamedPreset(settings, arguments.source);
    save(settings, arguments);
    return kExitDone;
}

int runList() {
    fmt::print("{}", PresetLibrary().list());
    return kExitDone;
}

}  // namespace

std::vector<Command> declarePresetCommands(CLI::App& program) {
    CLI::App* const list = program.add_subcommand("presets", "Lists the presets that --preset takes.");
    CLI::App* const group = program.add_subcommand("preset", "Shows, saves and converts presets.");
    group->require_subcommand(1);
    CLI::App* const show = group->add_subcommand("show", "Shows all settings of a preset.");
    CLI::App* const save = group->add_subcommand("save", std::string(text::kPresetSave));
    CLI::App* const convert =
        group->add_subcommand("convert", "Rewrites a preset of any version in the current format.");

    const auto arguments = std::make_shared<PresetArguments>();
    show->add_option("preset", arguments->source)->required()->type_name("NAME|FILE");
    save->add_option("target", arguments->target)->required()->type_name("NAME|FILE");
    arguments->settings.declareTo(*save);
    convert->add_option("preset", arguments->source)->required()->type_name("IN");
    convert->add_option("target", arguments->target)->required()->type_name("OUT");
    for (CLI::App* const writer : {save, convert})
        writer->add_flag("--force", arguments->replace, "replace an existing preset")->group("File");
    return {{list, runList},
            {group, [] { return kExitDone; }},
            {show, [arguments] { return runShow(*arguments); }},
            {save, [arguments] { return runSave(*arguments); }},
            {convert, [arguments] { return runConvert(*arguments); }}};
}

}  // namespace vanta
