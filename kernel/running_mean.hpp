#pragma once

#include <cstddef>

namespace vanta::kernel {

/// A sum over a sliding window, sample by sample: sum = max(sum + entering - leaving, 0), out = norm * sum.
/// The sum is in double precision and its floor takes out rounding drift, so that a long silence leaves no
/// negative mean. `out` may be either input.
void runningMean(const float* entering, const float* leaving, double& sum, float norm, float* out,
                 std::size_t count);

/// The sum of a block in double precision.
double sum(const float* values, std::size_t count);

}  // namespace vanta::kernel
