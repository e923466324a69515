#include "cli/listing_commands.hpp"

#include <memory>

#include "cli/exit_code.hpp"
#include "cli/listings.hpp"
#include "cli/standard_streams.hpp"

namespace vanta {

namespace {

int show(const std::string& list) {
    printOut(list);
    return kExitDone;
}

}  // namespace

std::vector<Command> declareListingCommands(CLI::App& program) {
    CLI::App* const styles = program.add_subcommand("styles", "Lists the limiting styles.");
    CLI::App* const params =
        program.add_subcommand("params", "Lists all parameters with ranges and defaults.");
    CLI::App* const formats = program.add_subcommand("formats", "Lists the file types that can be written.");
    CLI::App* const layouts = program.add_subcommand("layouts", "Lists the channel layouts.");
    const auto withHelp = std::make_shared<bool>(false);
    params->add_flag("--long", *withHelp, "describe each parameter in full")->group("Options");
    return {{styles, [] { return show(styleList()); }},
            {params, [withHelp] { return show(parameterList(*withHelp)); }},
            {formats, [] { return show(formatList()); }},
            {layouts, [] { return show(layoutList()); }}};
}

}  // namespace vanta
