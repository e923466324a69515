#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "cli/picture_size.hpp"
#include "cli/settings_arguments.hpp"

namespace vanta {

/// How a command line wants the display to look.
struct ViewArguments {
    /// Adds --mode, --meter-scale, --scale and --size.
    void declareTo(CLI::App& app);

    /// Sets Display Mode and Meter Scale to what is asked for. Else the mode is `usualMode`, unless the other
    /// options set it, and the scale stays. UsageError for unknown words.
    void applyTo(LimiterSettings& settings, const SettingsArguments& others,
                 VantaParameters::DisplayMode usualMode) const;

    struct Size {
        float width;  ///< logical units
        float height;
    };
    /// 1330 x 798 unless told. UsageError for what is no size from 400 x 350 to 4000 x 3000.
    Size chosenSize() const;
    /// Pixels of a logical unit: 1, 1.5 or 2. UsageError for any other.
    float chosenScale(float usual) const { return readPictureScale(scale, usual); }

    std::string mode;
    std::string meterScale;
    std::string scale;
    std::string size;
};

}  // namespace vanta
