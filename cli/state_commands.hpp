#pragma once

#include <vector>

#include "cli/command.hpp"

namespace vanta {

/// `vanta state save|show`, on the state of an instance as hosts store it.
std::vector<Command> declareStateCommands(CLI::App& program);

}  // namespace vanta
