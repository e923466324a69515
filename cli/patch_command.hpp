#pragma once

#include "cli/command.hpp"

namespace vanta {

/// `vanta patch`: `vanta render` with a style of the user's own, read from its source.
Command declarePatch(CLI::App& program);

}  // namespace vanta
