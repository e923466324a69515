#pragma once

#include "kernel/kernel.hpp"

/// Extremes of a block of at least one sample.
namespace vanta::kernel {

using ScanKernel = Kernel<float(const float* samples, std::size_t count)>;

extern const ScanKernel highestMagnitude;
extern const ScanKernel lowestMagnitude;
extern const ScanKernel highest;
extern const ScanKernel lowest;

/// The same for each group of kScanGroup samples; the last one may be shorter.
inline constexpr std::size_t kScanGroup = 32;
using GroupScanKernel = Kernel<void(const float* samples, std::size_t count, float* out)>;

extern const GroupScanKernel highestMagnitudeOfGroups;
/// The sharpest bend: of |x[i] - 2 x[i - 1] + x[i - 2]| the largest. Reads two samples in front of the first.
extern const GroupScanKernel sharpestBendOfGroups;

}  // namespace vanta::kernel
