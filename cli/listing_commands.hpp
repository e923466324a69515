#pragma once

#include <vector>

#include "cli/command.hpp"

namespace vanta {

/// `vanta styles`, `params`, `formats` and `layouts`, which list what there is.
std::vector<Command> declareListingCommands(CLI::App& program);

}  // namespace vanta
