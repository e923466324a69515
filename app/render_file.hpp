#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "app/file_format.hpp"
#include "app/measurement.hpp"
#include "host/offline/limiter_settings.hpp"
#include "host/offline/render.hpp"

namespace vanta {

/// By how much further Output Level goes down than was missing, in dB, so that one more render is enough.
inline constexpr double kTruePeakReserveDb = 0.005;

/// How files are to be rendered.
struct RenderOptions {
    std::filesystem::path sideChain;  ///< empty: none
    std::optional<ChannelLayout> layout;
    FormatWish format;
    int blockSamples = kUsualBlock;
    double tailSeconds = 0.0;
    std::uint32_t ditherSeed = 1;
    bool replace = false;
    bool quiet = false;
    bool measure = true;                          ///< loudness and peaks of input and output
    std::optional<double> maxTruePeakDb;          ///< that the output may have, in dBTP; needs `measure`
    std::vector<std::filesystem::path> alsoRead;  ///< further files that no output may replace
};

/// What became of one file.
struct FileReport {
    std::filesystem::path input;
    std::filesystem::path output;
    RenderResult result;
    std::string style;
    double gainDb = 0.0;
    double outputLevelDb = 0.0;         ///< of the last render
    int renders = 0;                    ///< until the true peak held
    std::optional<Measurement> before;  ///< of the input
    std::optional<Measurement> after;   ///< of the written file
    int sampleRate = 0;                 ///< Hz
    int format = 0;                     ///< libsndfile's, of the output
    std::vector<std::string> warnings;
};

/// Limits one file into another, which appears under its name when it is whole and not before. A file beyond
/// the highest true peak is rendered again with Output Level lowered by what was missing. Failure or
/// Interrupted leave nothing behind.
FileReport renderFile(const std::filesystem::path& input, const std::filesystem::path& output,
                      const LimiterSettings& settings, const RenderOptions& options);

/// One line that says what was done.
std::string summary(const FileReport& report, const LimiterSettings& settings);

}  // namespace vanta
