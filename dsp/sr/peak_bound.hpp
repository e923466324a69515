#pragma once

#include <cstddef>
#include <vector>

#include "foundation/realtime.hpp"
#include "kernel/scan.hpp"

namespace vanta::sr {

/// How high a signal may rise between its samples, told from the samples by a bound that holds for every
/// signal and costs a small part of an interpolation. What bends little, as music mostly does, rises hardly
/// above them.
class PeakBound {
public:
    static constexpr int kGroup = static_cast<int>(kernel::kScanGroup);

    /// For interpolation by `factor` with this symmetric filter at the higher rate. Peak j is the largest
    /// magnitude from sample j - `delay` to just before the next, and depends on samples from j - `reach` on.
    /// Allocates.
    void prepare(const std::vector<double>& filter, int factor, int delay, int reach, int mostSamples);

    /// Takes in `count` samples, in[0] being the newest that counts for peak 0. `reach` samples in front of
    /// it are read.
    VANTA_REALTIME void look(const float* in, int count);
    /// What none of the peaks from `group` * kGroup on, kGroup of them, exceeds.
    float operator[](int group) const { return bounds_[static_cast<std::size_t>(group)]; }

private:
    void derive(const std::vector<double>& filter, int factor);

    int delay_ = 0;
    int past_ = 0;  ///< how far in front of a peak's newest sample the first bend lies that counts for it
    float straight_ = 1.0f;
    float bent_ = 0.0f;
    std::vector<float> magnitudes_, bends_, bounds_;
};

}  // namespace vanta::sr
