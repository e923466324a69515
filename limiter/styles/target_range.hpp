#pragma once

#include <utility>
#include <vector>

namespace vanta {

/// What a target accepts. The six lengths of time differ in their maximum alone.
enum class RangeId : int {
    Fraction,       ///< 0 to 1
    Audio,          ///< a sum of signals, unlimited
    Threshold,      ///< dB
    MainRatio,      ///< the part above 1:1
    DetectorRatio,  ///< 1:1 to 100:1
    Knee,           ///< dB
    Bipolar,        ///< -1 to 1: stereo link, mix
    TimeConstant,   ///< seconds
    Smoothing,      ///< seconds, the sign chooses the side
    Frequency,      ///< log2 of hertz
    LookAhead,      ///< milliseconds from here on
    PeakHold,
    RmsWindow,
    Averaging,
    Delay,
    ConvolverWindow,
    ConstantValue,  ///< dB or a plain number
    DecibelSpan,    ///< dB: hysteresis, limit
    CapacitorHold,  ///< seconds
    Drive,          ///< dB
    SlotLevel,      ///< factor
};
inline constexpr int kRangeCount = static_cast<int>(RangeId::SlotLevel) + 1;

/// Limits of a target, and for each type of source the factor that brings its span to the target's. It is
/// these factors that make one Level mean the same for every pair of source and target.
struct TargetRange {
    float factorFor(int sourceType) const {
        for (const auto& [type, factor] : factors) {
            if (type == sourceType) return factor;
        }
        return defaultFactor;
    }

    float defaultFactor = 1.0f;
    bool isAudio = false;  ///< the target sums signals: no value of its own, no limits
    float minimum = 0.0f;  ///< 0, like `maximum`, and without meaning for audio
    float maximum = 1.0f;
    std::vector<std::pair<int, float>> factors;  ///< source type and factor; the first match counts
};

}  // namespace vanta
