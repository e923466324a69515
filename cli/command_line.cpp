#include "cli/command_line.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "cli/aax_commands.hpp"
#include "cli/help_format.hpp"
#include "cli/listing_commands.hpp"
#include "cli/measure_command.hpp"
#include "cli/parsing.hpp"
#include "cli/patch_command.hpp"
#include "cli/plot_command.hpp"
#include "cli/preset_commands.hpp"
#include "cli/render_command.hpp"
#include "cli/standard_streams.hpp"
#include "cli/state_commands.hpp"
#include "cli/texts.hpp"
#include "cli/usage_text.hpp"

namespace vanta {

namespace {

/// The program as the parser knows it.
class Program {
public:
    Program() {
        app_.name("vanta");
        app_.description(std::string(text::kOverview));
        app_.require_subcommand(1);
        app_.set_version_flag("--version", "vanta " VANTA_VERSION, "print the version");
        commands_ = {declareRender(app_), declarePatch(app_), declareMeasure(app_), declarePlot(app_)};
        for (const auto& declare :
             {declareListingCommands, declarePresetCommands, declareStateCommands, declareAaxCommands})
            std::ranges::move(declare(app_), std::back_inserter(commands_));
        describe(app_, "Options");
        for (const Command& command : commands_) {
            const std::string& name = command.app->get_name();
            const bool hasFileOptions =
                name == "render" || name == "patch" || name == "plot" || name == "aax-render";
            describe(*command.app, hasFileOptions ? "File" : "Options");
        }
        groupCommands(app_);
    }

    int run(const std::vector<std::string>& arguments) {
        requireCommand(app_, arguments);
        if (const auto done = parseArguments(app_, arguments)) return *done;
        return chosen().run();
    }

private:
    void describe(CLI::App& app, const std::string& helpGroup) const {
        app.formatter(format_);
        app.set_help_flag("-h,--help", "show this help")->group(helpGroup);
    }

    static void groupCommands(CLI::App& app) {
        for (CLI::App* const command : app.get_subcommands({})) {
            command->group("Commands");
            groupCommands(*command);
        }
    }

    /// The innermost command that the user gave.
    const Command& chosen() const {
        const CLI::App* app = &app_;
        while (!app->get_subcommands().empty()) app = app->get_subcommands().front();
        return *std::ranges::find(commands_, app, &Command::app);
    }

    CLI::App app_;
    std::shared_ptr<HelpFormat> format_ = std::make_shared<HelpFormat>();
    std::vector<Command> commands_;
};

/// "help render" is "render --help".
std::vector<std::string> withHelpAsAnOption(std::vector<std::string> arguments) {
    if (arguments.empty() || arguments.front() != "help") return arguments;
    arguments.erase(arguments.begin());
    arguments.emplace_back("--help");
    return arguments;
}

}  // namespace

int runCommandLine(const std::vector<std::string>& arguments) {
    prepareStandardStreams();
    return reportErrors([&] { return Program().run(withHelpAsAnOption(arguments)); });
}

}  // namespace vanta
