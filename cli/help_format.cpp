#include "cli/help_format.hpp"

#include <fmt/format.h>

#include "cli/wrapped_text.hpp"

namespace vanta {

namespace {

constexpr std::size_t kTextColumn = 28;

/// A name on the left and what it means on the right, below the name if that is long.
std::string entry(const std::string& name, const std::string& text) {
    const std::string left = "  " + name;
    std::string right = wrapped(text, kTextColumn);
    if (left.size() + 2 > kTextColumn) return left + "\n" + right;
    return right.replace(0, left.size(), left);
}

}  // namespace

std::string HelpFormat::make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const {
    std::string text = make_usage(app, std::move(name)) + "\n" + app->get_description() + "\n";
    text += make_subcommands(app, mode);
    for (const std::string& group : app->get_groups()) {
        const auto options = app->get_options([&](const CLI::Option* option) {
            return option->nonpositional() && option->get_group() == group;
        });
        if (options.empty()) continue;
        text += "\n" + group + ":\n";
        for (const CLI::Option* option : options) text += make_option(option, false);
    }
    const std::string footer = app->get_footer();
    return footer.empty() ? text : text + "\n" + footer + "\n";
}

std::string HelpFormat::make_usage(const CLI::App* app, std::string name) const {
    std::string usage = "Usage: " + name;
    if (!app->get_subcommands({}).empty()) return usage + " COMMAND\n";
    usage += " [OPTIONS]";
    for (const CLI::Option* option : app->get_options()) {
        if (option->get_positional()) usage += " " + option->get_type_name();
    }
    return usage + "\n";
}

std::string HelpFormat::make_option(const CLI::Option* option, bool isPositional) const {
    std::string name = option->get_name(isPositional);
    // Of "NAME:CHECK" the help text says the second part better.
    const std::string type = option->get_type_name();
    if (!type.empty()) name += " " + type.substr(0, type.find(':'));
    return entry(name, option->get_description());
}

std::string HelpFormat::make_subcommand(const CLI::App* command) const {
    const std::string text = command->get_description();
    return entry(command->get_name(), text.substr(0, text.find('\n')));
}

}  // namespace vanta
