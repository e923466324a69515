#pragma once

#include "cli/command.hpp"

namespace vanta {

/// `vanta measure`: measures all files and prints the figures. A file that fails does not keep the others
/// from being measured. Exits with kExitFailed if a file could not be measured or written, else with
/// kExitMissed if one misses the requirements.
Command declareMeasure(CLI::App& program);

}  // namespace vanta
