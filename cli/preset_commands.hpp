#pragma once

#include <vector>

#include "cli/command.hpp"

namespace vanta {

/// `vanta presets`, which lists them, and `vanta preset show|save|convert`.
std::vector<Command> declarePresetCommands(CLI::App& program);

}  // namespace vanta
