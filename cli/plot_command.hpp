#pragma once

#include "cli/command.hpp"

namespace vanta {

/// `vanta plot`: draws what the limiter does to a file.
Command declarePlot(CLI::App& program);

}  // namespace vanta
