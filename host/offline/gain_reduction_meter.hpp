#pragma once

#include <cstdint>

#include "wave/producer.hpp"

namespace vanta {

/// Remembers the smallest gain of a channel. It runs by itself in every sub-block, since a gain exists only
/// for the sub-block in which it was computed. To be destroyed before the graph that it listens to.
class GainReductionMeter final : public wave::Filter {
public:
    explicit GainReductionMeter(wave::Producer& gain);

    /// Starts anew, passing over the first `samples`.
    void start(std::int64_t samples);
    /// As a factor, at most 1.
    float smallestGain() const { return smallest; }

protected:
    void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                 int flags) override;

private:
    std::int64_t toSkip = 0;
    float smallest = 1.0f;
};

}  // namespace vanta
