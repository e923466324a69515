#pragma once

#include <functional>
#include <optional>

namespace vanta {

/// What loudness is wanted, and where to look for it.
struct LoudnessTarget {
    double lufs = -14.0;
    double toleranceLu = 0.03;  ///< how near is near enough
    double lowestGainDb = 0.0;
    double highestGainDb = 30.0;
    double firstGainDb = 0.0;  ///< where to begin; limited to the range
    int mostPasses = 12;
};

struct LoudnessFound {
    double gainDb = 0.0;         ///< of the pass that came nearest
    std::optional<double> lufs;  ///< there; nothing if it was silent
    int passes = 0;
    bool reached = false;  ///< within the tolerance
};

/// Finds the gain at which `loudnessOf` gives the target. The loudness grows with the gain, and the
/// less the more is limited: steps follow the slope between the last two passes, and once the target lies
/// between two passes, false position with the Illinois rule closes in. Each call of `loudnessOf` is one
/// pass; nothing stands for what lies below the gate. Where even an end of the range does not reach the
/// target, that end is the result.
LoudnessFound findLoudness(const LoudnessTarget& target,
                           const std::function<std::optional<double>(double gainDb)>& loudnessOf);

}  // namespace vanta
