#pragma once

#include "kernel/kernel.hpp"

/// Extremes of a block of at least one sample.
namespace vanta::kernel {

using ScanKernel = Kernel<float(const float* samples, std::size_t count)>;

extern const ScanKernel highestMagnitude;
extern const ScanKernel lowestMagnitude;
extern const ScanKernel highest;
extern const ScanKernel lowest;

}  // namespace vanta::kernel
