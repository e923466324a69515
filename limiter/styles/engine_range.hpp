#pragma once

#include <vector>

#include "limiter/styles/dynamics_engine_configuration.hpp"

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
inline constexpr int kRangeCount = 21;

/// Limits of a target, and for each type of source the factor that brings its span to the target's. It is
/// these factors that make one Level mean the same for every pair of source and target.
struct EngineRange {
    struct Factor {
        int sourceType;  ///< an ElementKind
        float factor;
    };

    float factorFor(int sourceType) const;

    float defaultFactor;
    bool isAudio;
    float maximum;  ///< 0, like `minimum`, and without meaning for audio
    float minimum;
    std::vector<Factor> factors;  ///< types that are not here take `defaultFactor`
};

/// All ranges by RangeId; the configuration's limits are the maxima of the lengths of time.
std::vector<EngineRange> engineRanges(const DynamicsEngineConfiguration& configuration);

}  // namespace vanta
