#include "cli/state_commands.hpp"

#include <memory>

#include "cli/exit_code.hpp"
#include "cli/session_file.hpp"
#include "cli/settings_arguments.hpp"
#include "cli/standard_streams.hpp"
#include "cli/state_text.hpp"
#include "cli/texts.hpp"
#include "foundation/output_check.hpp"

namespace vanta {

namespace {

struct StateArguments {
    std::string file;
    SettingsArguments settings;  ///< to be saved
    bool replace = false;
    bool json = false;
};

int runSave(const StateArguments& arguments) {
    std::vector<std::filesystem::path> read;
    if (!arguments.settings.preset.empty()) read.emplace_back(arguments.settings.preset);
    checkOutput(arguments.file, read, arguments.replace);
    SessionInstance instance;
    arguments.settings.applyTo(instance);
    instance.store(arguments.file);
    return kExitDone;
}

int runShow(const StateArguments& arguments) {
    SessionInstance instance;
    instance.recall(arguments.file);
    printOut(arguments.json ? stateJson(instance) : stateText(instance));
    return kExitDone;
}

}  // namespace

std::vector<Command> declareStateCommands(CLI::App& program) {
    CLI::App* const group =
        program.add_subcommand("state", "Saves and shows the whole state of an instance.");
    group->require_subcommand(1);
    CLI::App* const save = group->add_subcommand("save", std::string(text::kStateSave));
    CLI::App* const show =
        group->add_subcommand("show", "Shows a state: its preset and all settings, of A and B.");

    const auto arguments = std::make_shared<StateArguments>();
    for (CLI::App* const each : {save, show})
        each->add_option("file", arguments->file)->required()->type_name("FILE");
    arguments->settings.declareTo(*save);
    save->add_flag("--force", arguments->replace, "replace an existing file")->group("File");
    show->add_flag("--json", arguments->json, "print a JSON object, with every value to the last bit")
        ->group("Options");
    return {{group, [] { return kExitDone; }},
            {save, [arguments] { return runSave(*arguments); }},
            {show, [arguments] { return runShow(*arguments); }}};
}

}  // namespace vanta
