#pragma once

#include "kernel/kernel.hpp"

/// Second-order sections, y = b0 x + b1 x1 + b2 x2 - a1 y1 - a2 y2, in double precision.
///
/// Sample by sample every output waits for the one before it. A group of outputs is written as a sum over
/// what drives it instead (block-state form; Burrus, "Block realization of digital filters", 1972): with f
/// the feed-forward part and h the impulse response of the recursion,
///   y[k] = sum over j <= k of h[k - j] f[j]  +  (-a1 h[k] - a2 h[k - 1]) y1  -  a2 h[k] y2.
/// All but the last two terms is done before the group in front is.
namespace vanta::kernel {

/// What a section remembers: its last two inputs and outputs, the newest first.
struct BiquadHistory {
    double x1 = 0.0, x2 = 0.0, y1 = 0.0, y2 = 0.0;
};

struct BiquadGroup {
    static constexpr std::size_t kLength = 8;

    BiquadGroup() = default;
    BiquadGroup(double b0, double b1, double b2, double a1, double a2);

    double forward[3] = {};
    double response[2 * kLength] = {};  ///< zeros, then h: read from kLength - j it is what f[j] does
    double fromLast[kLength] = {};      ///< what y1 does, and y2
    double fromSecondLast[kLength] = {};
};

/// `groups` times BiquadGroup::kLength samples. `out` may be `in`; any alignment.
extern const Kernel<void(const float* in, const BiquadGroup& filter, BiquadHistory& history, float* out,
                         std::size_t groups)>
    biquadGroups;

}  // namespace vanta::kernel
