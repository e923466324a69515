#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "measure/requirements.hpp"

namespace vanta {

/// What the command line of `vanta measure` says, before it is understood.
struct MeasureArguments {
    /// Adds all options of the command.
    void declareTo(CLI::App& app);

    std::vector<std::string> files;
    std::string layout;
    bool recursive = false;
    int jobs = 0;  ///< 0: one a core
    bool json = false;
    bool csv = false;
    std::string timeline;  ///< a CSV file to be written; empty: none
    std::string plot;      ///< a PNG file to be written; empty: none
    Requirements requirements;
    bool quiet = false;
};

}  // namespace vanta
