#pragma once

#include <CLI/CLI.hpp>
#include <span>
#include <string>

namespace vanta {

/// UsageError unless the arguments begin with a command and, where that has commands of its own, with one of
/// these.
void requireCommand(const CLI::App& program, std::span<const std::string> arguments);

/// One line for what the parser refused, with the nearest known option.
std::string usageText(const CLI::App& program, const CLI::ParseError& error);

}  // namespace vanta
