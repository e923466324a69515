#include "cli/usage_text.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "cli/exit_code.hpp"
#include "cli/suggestion.hpp"

namespace vanta {

namespace {

bool is(const CLI::ParseError& error, CLI::ExitCodes code) {
    return error.get_exit_code() == static_cast<int>(code);
}

std::vector<std::string> flagsOf(const CLI::App& app) {
    std::vector<std::string> flags;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) flags.push_back("--" + name);
    }
    return flags;
}

/// For "Could not convert: --block = 3.5".
std::string conversionText(const std::string& text) {
    const auto flag = std::min(text.find("--"), text.size());
    const auto equals = std::min(text.find(" = ", flag), text.size());
    const auto value = std::min(equals + 3, text.size());
    return fmt::format("{} cannot be '{}': use a whole number", text.substr(flag, equals - flag),
                       text.substr(value));
}

/// An option without its value, or one that is given twice.
std::string mismatchText(const std::string& flag, const CLI::App& program) {
    const CLI::App* command = &program;
    while (!command->get_subcommands().empty()) command = command->get_subcommands().front();
    const CLI::Option* option = command->get_option_no_throw(flag);
    const std::size_t times = option ? option->count() : 0;
    return times > 1 ? fmt::format("{} is given {} times: give it once", flag, times)
                     : flag + " needs a value";
}

/// For "--block: cannot be '0': use a number from 1 to 8192".
std::string rangeErrorText(std::string text) {
    return text.erase(std::min(text.find(": "), text.size() - 1), 1);
}

std::string unexpectedText(const CLI::App& program, const std::string& argument) {
    const CLI::App* command = &program;
    std::string path = program.get_name();
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().front();
        path += " " + command->get_name();
    }
    if (!argument.starts_with('-'))
        return fmt::format("unexpected argument '{}'; see '{} --help'", argument, path);
    const std::string flag = argument.substr(0, argument.find('='));
    return fmt::format("unknown option {}{}; see '{} --help'", flag, suggestion(flag, flagsOf(*command)),
                       path);
}

}  // namespace

void requireCommand(const CLI::App& program, std::span<const std::string> arguments) {
    const CLI::App* group = &program;
    std::string path = program.get_name();
    while (true) {
        const auto commands = group->get_subcommands([](const CLI::App*) { return true; });
        if (commands.empty()) return;
        if (arguments.empty()) throw UsageError(fmt::format("a command is missing; see '{} --help'", path));
        const std::string& name = arguments.front();
        if (name.starts_with('-')) return;
        const auto found = std::ranges::find(commands, name, &CLI::App::get_name);
        if (found == commands.end()) {
            std::vector<std::string> names;
            for (const CLI::App* command : commands) names.push_back(command->get_name());
            throw UsageError(
                fmt::format("unknown command '{}'{}; see '{} --help'", name, suggestion(name, names), path));
        }
        group = *found;
        path += " " + name;
        arguments = arguments.subspan(1);
    }
}

std::string usageText(const CLI::App& program, const CLI::ParseError& error) {
    std::string text = error.what();
    if (is(error, CLI::ExitCodes::ArgumentMismatch))
        return mismatchText(text.substr(0, text.find(':')), program);
    if (is(error, CLI::ExitCodes::ConversionError)) return conversionText(text);
    if (is(error, CLI::ExitCodes::ValidationError)) return rangeErrorText(text);
    const auto unexpected = program.remaining(true);
    return unexpected.empty() ? text : unexpectedText(program, unexpected.front());
}

}  // namespace vanta
