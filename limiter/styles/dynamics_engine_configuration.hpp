#pragma once

#include <array>

#include "limiter/styles/element_kind.hpp"

namespace vanta {

/// How many elements the engine's tables describe and how many each channel really builds. The capacities
/// fix the parameter table and with it the style record; what is built fixes a channel's memory and time.
/// All limits are in milliseconds and set the longest delay line or window of their elements.
struct DynamicsEngineConfiguration {
    using Counts = std::array<int, kElementKindCount>;

    /// By ElementKind. Of the five kinds of main control, Custom stands for two.
    static constexpr Counts kCapacity{1, 1, 1, 1, 1, 2, 6, 6, 6, 6, 6, 6, 6, 6, 12, 6, 4, 6, 6, 6, 6};

    int maxConvolversInGainPath = 6;     ///< the most that a VCA's Num Convolvers In Gain Path counts
    int maxSmartClippersInGainPath = 6;  ///< likewise
    int maxOutputSmartClippers = 6;      ///< Detectors from the first that can clip
    Counts capacity = kCapacity;
    Counts built = kCapacity;
    int slotCount = 80;
    float lookAheadLimit = 50.0f;
    float peakHoldLimit = 50.0f;
    float rmsWindowLimit = 50.0f;
    float averagingLimit = 50.0f;
    float delayLimit = 50.0f;
    float convolverLimit = 50.0f;
};

/// What a limiter's channel needs: the elements that the eight styles use, and no more.
constexpr DynamicsEngineConfiguration limiterConfiguration() {
    DynamicsEngineConfiguration result;
    result.maxConvolversInGainPath = 1;
    result.maxSmartClippersInGainPath = 1;
    result.maxOutputSmartClippers = 1;
    result.built = {1, 1, 1, 1, 1, 2, 2, 0, 0, 4, 0, 4, 2, 2, 5, 1, 1, 3, 4, 1, 3};
    result.lookAheadLimit = 5.0f;
    result.rmsWindowLimit = 5.0f;
    result.convolverLimit = 5.0f;
    return result;
}

}  // namespace vanta
