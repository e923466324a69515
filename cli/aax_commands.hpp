#pragma once

#include <vector>

#include "cli/command.hpp"

namespace vanta {

/// `vanta aax-scan` and `vanta aax-render`.
std::vector<Command> declareAaxCommands(CLI::App& program);

}  // namespace vanta
