#pragma once

#include <cstdint>
#include <limits>

#include "wave/producer.hpp"

namespace vanta {

/// Remembers the smallest gain of a channel, its mean in dB and how often it is turned down. It runs by
/// itself in every sub-block, since a gain exists only for the sub-block in which it was computed. To be
/// destroyed before the graph that it listens to.
class GainReductionMeter final : public wave::Filter {
public:
    explicit GainReductionMeter(wave::Producer& gain);

    /// What counts as turned down, in dB: less is inaudible, and may be mere rounding.
    static constexpr double kReducedDb = 0.1;

    /// Starts anew, passing over the first `samples`.
    void start(std::int64_t samples);
    /// Measures no more than `samples` in all.
    void endAfter(std::int64_t samples) { end_ = samples; }
    /// As a factor, at most 1.
    float smallestGain() const { return smallest_; }
    /// In dB, 0 or more; 0 before the first sample.
    double meanReductionDb() const;
    /// Share of the samples that were turned down by more than kReducedDb, 0 to 1.
    double reducedShare() const;

protected:
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;

private:
    void measure(const float* gains, int count);

    std::int64_t toSkip_ = 0;
    std::int64_t end_ = std::numeric_limits<std::int64_t>::max();
    std::int64_t measured_ = 0;
    std::int64_t reduced_ = 0;
    double decibels_ = 0.0;  ///< sum of all gains in dB
    float smallest_ = 1.0f;
};

}  // namespace vanta
