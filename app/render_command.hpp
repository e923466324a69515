#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/parameter_options.hpp"
#include "app/render_file.hpp"

namespace vanta {

/// What the command line of `vanta render` says, before it is understood.
struct RenderCommand {
    std::vector<std::string> files;  ///< inputs, and last the output unless there is a folder
    std::string outDir;
    std::string state;
    std::string preset;
    std::vector<std::pair<const ParameterOption*, std::string>> parameters;
    std::vector<std::string> assignments;  ///< "Name=text"
    std::string sideChain;
    std::string layout;
    std::string format;
    std::string subtype;
    int blockSamples = kUsualBlock;
    double tailSeconds = 0.0;
    std::uint32_t ditherSeed = 1;
    std::string reportFile;
    std::optional<double> loudnessLufs;
    std::string loudnessMode;
    std::optional<double> maxTruePeakDb;
    bool replace = false;
    bool quiet = false;
};

/// Sets what the command's state, preset and options say, in this order. UsageError and Failure for what
/// cannot be set. The result is the name of the preset, empty without one.
std::string applySettings(LimiterSettings& settings, const RenderCommand& command);

/// Renders all files. UsageError before anything is rendered; a file that fails does not keep the next from
/// being tried. The result is an ExitCode.
int runRender(const RenderCommand& command);

}  // namespace vanta
