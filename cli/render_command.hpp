#pragma once

#include "cli/command.hpp"

namespace vanta {

/// `vanta render`: renders all files. A file that fails does not keep the others from being written.
Command declareRender(CLI::App& program);

}  // namespace vanta
