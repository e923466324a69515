#pragma once

#include "kernel/kernel.hpp"

/// The inner loops of sample-rate conversion by two, with linear-phase half-band filters of 4 k + 1 taps:
/// every tap at an even distance from the centre, other than the centre itself, is zero and costs nothing.
/// Any count and alignment; buffers must not overlap. An output depends on its own window alone, bit for bit:
/// it does not matter how a stream is cut into calls.
namespace vanta::kernel {

/// Doubles the rate. The window of output pair j is window[j] to window[j + tapCount - 1], oldest first:
///   out[2 j]     = window[j + tapCount / 2 - 1], an input sample as it is
///   out[2 j + 1] = sum of branch[i] * window[j + i]
/// `branch` has `tapCount` taps, an even number, and is symmetric. `window` holds count + tapCount - 1
/// samples.
extern const Kernel<void(const float* window, const float* branch, std::size_t tapCount, float* out,
                         std::size_t count)>
    interpolateHalfBand;

/// The same, of which only the larger magnitude of each pair is wanted: out[j] = max(|out[2 j]|, |out[2 j +
/// 1]|) of above, bit for bit.
extern const Kernel<void(const float* window, const float* branch, std::size_t tapCount, float* out,
                         std::size_t count)>
    peaksOfHalfBand;

/// How many floats of scratch `decimateHalfBand` needs for a filter of `tapCount` taps.
constexpr std::size_t decimatorScratch(std::size_t tapCount) {
    return 512 + tapCount / 2;
}

/// Halves the rate: out[j] = sum of taps[i] * window[2 j + i], over the taps that are not zero. `taps` has
/// `tapCount` taps, 4 k + 1, and is symmetric. `window` holds 2 count + tapCount - 2 samples or more.
extern const Kernel<void(const float* window, const float* taps, std::size_t tapCount, float* scratch,
                         float* out, std::size_t count)>
    decimateHalfBand;

/// One output for each group of `factor` inputs, a power of two. NaN is not handled.
using GroupKernel = Kernel<void(const float* in, std::size_t factor, float* out, std::size_t count)>;

/// out[j] = the first of the group
extern const GroupKernel firstOfGroups;
/// out[j] = the largest magnitude of the group
extern const GroupKernel largestMagnitudeOfGroups;
/// out[j] = the smallest value of the group
extern const GroupKernel smallestOfGroups;

}  // namespace vanta::kernel
