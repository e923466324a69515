#pragma once

#include "kernel/kernel.hpp"

/// Means over a sliding window whose past lies in a ring: what enters is stored, what leaves is read where it
/// was stored one window ago, so nothing is copied. Sums are in double precision.
///
/// A running sum waits for itself at every sample. Groups of kMeanGroup samples are summed up on their own
/// first, by doubling (Hillis and Steele, "Data parallel algorithms", 1986), and wait once.
namespace vanta::kernel {

inline constexpr std::size_t kMeanGroup = 8;

struct RunningSum {
    double window = 0.0;   ///< of what is in the window
    double entered = 0.0;  ///< of all squares that have entered
};

/// `stored` may overlap `leaving` only ahead of it by kMeanGroup or more, or not ahead at all; fewer samples
/// in one call than they lie apart are always right.
using RunningMean = Kernel<void(const float* in, const float* leaving, float* stored, RunningSum& sum,
                                double norm, float* out, std::size_t count)>;

/// stored = in, window = window + stored - leaving, out = norm * window
extern const RunningMean runningMean;
/// stored = in * in, window = max(window + stored - leaving, 0), out = norm * window. The floor takes out
/// what rounding has left of louder times, so that a long silence leaves no negative mean.
extern const RunningMean runningMeanSquare;

}  // namespace vanta::kernel
