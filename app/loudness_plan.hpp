#pragma once

#include <filesystem>
#include <span>
#include <vector>

#include "app/render_file.hpp"

namespace vanta {

/// How a loudness is reached.
struct LoudnessPlan {
    double targetLufs = 0.0;
    double gainDb = 0.0;
    double lufs = 0.0;                  ///< expected at this Gain, of all inputs together
    int passes = 0;                     ///< renders of all inputs that the search took
    std::vector<double> outputLevelDb;  ///< of each input: lowered where a true peak would have gone too far
};

/// Finds the one Gain at which the inputs, taken together as one programme, have this integrated loudness
/// under the settings' ceiling, in as few renders as it can; nothing is written. Where `options` bound the
/// true peak, the ceilings keep to it already here, as a lower ceiling costs loudness. Failure, which names
/// the loudness that can be had, if none is near enough.
LoudnessPlan planLoudness(std::span<const std::filesystem::path> inputs, const LimiterSettings& settings,
                          const RenderOptions& options, double targetLufs);

}  // namespace vanta
