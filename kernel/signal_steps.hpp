#pragma once

#include <cstdint>

#include "kernel/kernel.hpp"

namespace vanta::kernel {

/// How a signal goes from sample to sample: bit i is that of the step to sample i from the one before it.
struct SignalSteps {
    std::uint64_t notRising = 0;  ///< it rises by `within` at most
    std::uint64_t falling = 0;
};

/// The steps to 1 to 64 samples, of which `before` is the one in front. Bits beyond them are 0. A step that
/// is no number rises.
extern const Kernel<SignalSteps(const float* in, float before, float within, std::size_t count)> signalSteps;

}  // namespace vanta::kernel
