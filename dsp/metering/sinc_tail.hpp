#pragma once

#include <array>
#include <memory>
#include <span>
#include <vector>

#include "dsp/metering/rate_steps.hpp"

namespace vanta {

/// The far part of the ideal interpolation between samples, whose kernel falls off so slowly that signals
/// near half the sample rate need a hundred thousand samples of it.
///
/// Half-way between two samples sinc is (-1)^k / (pi t): with the signs of every second sample turned, what
/// lies further away than a short filter sees is a smooth sum of 1 / t, and a sixteenth of the rate is enough
/// for it. What lies further still gets by with a sixteenth of that, and so on: as in a fast multipole method
/// (Greengard and Rokhlin, 1987), the cost hardly grows with the reach.
class SincTail {
public:
    /// How far windows of the kernel reach on each side, in samples, from the short filter's own outwards. A
    /// scale fills the ring between two of them. One sample of a stream stands for `spacing` samples.
    explicit SincTail(std::span<const double> reaches, double spacing = 1.0);

    /// How many samples of the stream the result lies behind.
    std::size_t delay() const { return 2 * kStepsDelay + kFactor * innerDelay(); }
    /// The sum over the ring of d(t - s) in(s) at each t, with d(t) = (W(t) - w(t)) / (pi t), W and w the
    /// outermost and the innermost window. As many samples out as in, a multiple of 16.
    void process(std::span<const float> in, float* out);

private:
    static constexpr std::size_t kFactor = 16;
    static constexpr std::size_t kSteps = 4;
    static constexpr std::size_t kMostSamples = 256;  ///< in one call
    /// Of all steps down, or up: kReach at each of the lower rates.
    static constexpr std::size_t kStepsDelay = HalfBand::kReach * (2 + 4 + 8 + 16);

    std::size_t innerDelay() const { return beyond_ ? beyond_->delay() : halfLength_; }

    std::size_t halfLength_;
    std::unique_ptr<SincTail> beyond_;  ///< null for the outermost scale
    std::vector<float> taps_;           ///< of this scale's ring
    RecentSamples coarse_;
    std::array<StepDown, kSteps> down_;
    std::array<StepUp, kSteps> up_;
};

}  // namespace vanta
