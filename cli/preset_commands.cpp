#include "cli/preset_commands.hpp"

#include <fmt/format.h>

#include <memory>

#include "cli/exit_code.hpp"
#include "cli/messages.hpp"
#include "cli/preset_library.hpp"
#include "cli/settings_arguments.hpp"
#include "cli/standard_streams.hpp"
#include "cli/texts.hpp"
#include "foundation/ascii.hpp"
#include "foundation/output_check.hpp"
#include "foundation/printable.hpp"
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

bool isPresetFile(const fs::path& path) {
    return equalsIgnoringCase(path.extension().string(), ".qmp");
}

/// A name stands for a preset in the user's folder; a file is wherever it says.
fs::path targetFile(const std::string& target) {
    if (isPresetFile(target)) return target;
    if (target.find('/') != std::string::npos)
        throw UsageError(fmt::format(
            "'{0}' is neither a name nor a preset file: use a name without '/', or '{0}.qmp'", target));
    const fs::path folder = PresetLibrary::userFolder();
    std::error_code error;
    fs::create_directories(folder, error);
    return folder / (target + ".qmp");
}

void save(LimiterSettings& settings, const fs::path& file, const PresetArguments& arguments) {
    std::error_code error;
    if (fs::exists(file, error) && !arguments.replace)
        throw OutputExists(fmt::format("{}: already exists", file.string()));
    if (!savePresetFile(settings, file)) {
        throw Failure(fmt::format("{}: the preset could not be saved: make sure that the file is writable",
                                  file.string()));
    }
    printOut(printable(file.string()) + "\n");
}

int runShow(const PresetArguments& arguments) {
    LimiterSettings settings;
    loadNamedPreset(settings, arguments.source);
    std::string text;
    for (int i = 0; i < settings.parameterCount(); ++i) {
        const AbstractPluginParameter& parameter = *settings.parameterAt(i);
        text += fmt::format("{:<36}{}\n", parameter.name(), parameter.text(parameter.value()));
    }
    printOut(text);
    return kExitDone;
}

int runSave(const PresetArguments& arguments) {
    LimiterSettings settings;
    arguments.settings.applyTo(settings);
    save(settings, targetFile(arguments.target), arguments);
    if (!isPresetFile(arguments.target) && PresetLibrary().hidesBuiltIn(arguments.target))
        printError(
            fmt::format("warning: a built-in preset is named '{0}' too; --preset '{0}' now means yours",
                        arguments.target));
    return kExitDone;
}

int runConvert(const PresetArguments& arguments) {
    LimiterSettings settings;
    if (!isPresetFile(arguments.target))
        throw UsageError(fmt::format(
            "'{0}' is no preset file: use a name that ends in .qmp, such as '{0}.qmp'", arguments.target));
    loadNamedPreset(settings, arguments.source);
    save(settings, arguments.target, arguments);
    return kExitDone;
}

int runList() {
    printOut(PresetLibrary().list());
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
