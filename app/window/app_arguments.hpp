#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/picture_size.hpp"
#include "cli/settings_arguments.hpp"
#include "plugin/settings/plugin_settings.hpp"

namespace vanta {

/// What the command line of vanta-app says, before it is understood.
struct AppArguments {
    void declareTo(CLI::App& app);

    struct Size {
        int row = PluginSettings::kFreeSize;  ///< of the fixed sizes
        InterfaceSize free;                   ///< where there is no row
    };
    /// Nothing without --size. UsageError for what is neither a name, a number of a row nor WIDTHxHEIGHT.
    std::optional<Size> chosenSize() const;
    /// Pixels of a logical unit: 1, 1.5 or 2. UsageError for any other.
    float chosenScale(float usual) const { return readPictureScale(scale, usual); }

    std::vector<std::string> files;  ///< at most one
    SettingsArguments settings;
    std::string size;
    std::string scale;
    std::string layout;
    bool software = false;
    bool openGl = false;
    bool noJack = false;
    bool startsPaused = false;
    std::string screenshot;
    std::string open;
    std::optional<double> atSeconds;
    bool replace = false;
};

}  // namespace vanta
