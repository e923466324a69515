#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace vanta {

/// How the program prints its help: usage, what it does, then the options, broken to the line width.
class HelpFormat final : public CLI::Formatter {
public:
    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override;
    std::string make_usage(const CLI::App* app, std::string name) const override;
    std::string make_option(const CLI::Option* option, bool isPositional) const override;
    /// The first line of the command's description.
    std::string make_subcommand(const CLI::App* command) const override;
};

}  // namespace vanta
