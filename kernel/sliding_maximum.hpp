#pragma once

#include "kernel/kernel.hpp"

/// The largest of a sliding window, exactly, in a time that hardly depends on the window. No sample may be
/// NaN. Any length and alignment.
namespace vanta::kernel {

/// Above this hold, segments cost less than doubling.
inline constexpr std::size_t kLongestDoubledHold = 63;

/// out[i] = the largest of window[i] to window[i + hold]. `window` and `scratch` hold `count` + `hold`
/// samples; no block may overlap another. The effort grows with the logarithm of the hold.
///
/// By doubling: what is the largest of n samples at each place is, together with itself n places on, the
/// largest of 2 n (a sparse table; Bender and Farach-Colton, "The LCA problem revisited", 2000).
extern const Kernel<void(const float* window, std::size_t hold, float* scratch, float* out,
                         std::size_t count)>
    slidingMaximum;

/// The two halves of a window that lies across the border of two segments, each as long as the window: a
/// segment is gone through backward once it is complete, and forward as it comes, so that every sample is
/// looked at a fixed number of times whatever the hold (van Herk, "A fast algorithm for local minimum and
/// maximum filters on rectangular and octagonal kernels", 1992; Gil and Werman, "Computing 2-D min, median,
/// and max filters", 1993).
///
/// out[i] = the largest of in[i] and all behind it. `out` may be `in`.
extern const UnaryKernel maximumOfRest;
/// out[i] = the largest of `highest`, in[0] to in[i], and rest[i]. Then `highest` has taken in the whole
/// block. `out` may be `in` or `rest`.
extern const Kernel<void(const float* in, const float* rest, float& highest, float* out, std::size_t count)>
    maximumSoFar;

}  // namespace vanta::kernel
