#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/settings_arguments.hpp"
#include "cli/view_arguments.hpp"

namespace vanta {

/// What the command line of `vanta plot` says, before it is understood.
struct PlotArguments {
    /// Adds all options of the command.
    void declareTo(CLI::App& app);

    std::vector<std::string> files;  ///< one
    std::string output;
    SettingsArguments settings;
    ViewArguments view;
    std::string sideChain;
    std::string layout;
    std::optional<double> atSeconds;
    bool replace = false;
    bool quiet = false;
};

}  // namespace vanta
