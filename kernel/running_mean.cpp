#include "kernel/running_mean.hpp"

#include <algorithm>

namespace vanta::kernel {

void runningMean(const float* entering, const float* leaving, double& sum, float norm, float* out,
                 std::size_t count) {
    const double factor = norm;
    double total = sum;
    std::size_t i = 0;
    // Every sample waits for the sum before it. Four differences are added up on their own first, so that
    // only one addition of four has to wait.
    for (; i + 4 <= count; i += 4) {
        const double d0 = static_cast<double>(entering[i]) - leaving[i];
        const double d1 = static_cast<double>(entering[i + 1]) - leaving[i + 1];
        const double d2 = static_cast<double>(entering[i + 2]) - leaving[i + 2];
        const double d3 = static_cast<double>(entering[i + 3]) - leaving[i + 3];
        const double d01 = d0 + d1;
        const double d012 = d01 + d2;
        const double d0123 = d01 + (d2 + d3);
        out[i] = static_cast<float>(factor * std::max(total + d0, 0.0));
        out[i + 1] = static_cast<float>(factor * std::max(total + d01, 0.0));
        out[i + 2] = static_cast<float>(factor * std::max(total + d012, 0.0));
        total = std::max(total + d0123, 0.0);
        out[i + 3] = static_cast<float>(factor * total);
    }
    for (; i < count; ++i) {
        total = std::max(total + (static_cast<double>(entering[i]) - leaving[i]), 0.0);
        out[i] = static_cast<float>(factor * total);
    }
    sum = total;
}

// Four sums side by side, as every addition waits for the one before it.
double sum(const float* values, std::size_t count) {
    double sums[4] = {};
    std::size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        for (std::size_t lane = 0; lane < 4; ++lane) sums[lane] += static_cast<double>(values[i + lane]);
    }
    for (; i < count; ++i) sums[0] += static_cast<double>(values[i]);
    return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

}  // namespace vanta::kernel
