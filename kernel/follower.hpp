#pragma once

#include "kernel/kernel.hpp"

namespace vanta::kernel {

/// ln(10): a follower covers 90 % of a step in its time constant.
inline constexpr double kFollowerDecay = 2.30258512;

/// out = 1 - exp(-ln(10) / (seconds * sampleRate)), the share of the distance that a one-pole follower covers
/// in one sample; 1 where the time is 0 or negative. Accurate to seven digits at any time, so that long times
/// at high rates keep their value. Any length and alignment.
extern const Kernel<void(const float* seconds, float sampleRate, float* out, std::size_t count)>
    followerCoefficients;

}  // namespace vanta::kernel
