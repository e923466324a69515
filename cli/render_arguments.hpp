#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/settings_arguments.hpp"
#include "host/offline/render.hpp"

namespace vanta {

/// What the command line of `vanta render` says, before it is understood.
struct RenderArguments {
    static constexpr double kLongestTail = 3600.0;  ///< seconds

    /// Adds all options of the command.
    void declareTo(CLI::App& app);

    std::vector<std::string> files;  ///< inputs, and last the output unless there is a folder
    std::string outDir;
    std::string name;  ///< of outputs in a folder
    bool recursive = false;
    int jobs = 0;  ///< 0: one a core
    bool dryRun = false;
    SettingsArguments settings;
    std::string sideChain;
    std::string layout;
    std::string format;
    std::string subtype;
    std::optional<int> sampleRate;
    std::optional<double> quality;
    std::optional<double> bitrate;
    std::string replayGain;
    bool strip = false;
    int blockSamples = kUsualBlock;
    double tailSeconds = 0.0;
    std::uint32_t ditherSeed = 1;
    std::optional<double> loudnessLufs;
    std::string loudnessMode;
    std::optional<double> maxTruePeakDb;
    std::string reportFile;
    bool replace = false;
    bool quiet = false;
};

}  // namespace vanta
