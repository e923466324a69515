#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/settings_arguments.hpp"
#include "cli/view_arguments.hpp"

namespace vanta {

/// What the command line of vanta-scope says, before it is understood.
struct ScopeArguments {
    void declareTo(CLI::App& app);

    std::vector<std::string> files;  ///< one
    SettingsArguments settings;
    ViewArguments view;
    std::string layout;
    bool software = false;
    bool openGl = false;
    bool noJack = false;
    std::string screenshot;
    std::optional<double> atSeconds;
    bool replace = false;
};

}  // namespace vanta
