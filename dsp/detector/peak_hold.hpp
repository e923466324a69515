#pragma once

#include <cstdint>

#include "dsp/detector/peak_queue.hpp"
#include "wave/float_parameter_source.hpp"
#include "wave/mirrored_ring.hpp"
#include "wave/producer.hpp"

namespace vanta {

/// The largest magnitude of the last samples, exactly: output n is the maximum of |x| from n - H to n, where
/// H is the hold in whole samples and may differ from sample to sample. No latency. A hold beyond the largest
/// counts as the largest.
class PeakHold final : public wave::Filter {
public:
    PeakHold(wave::Environment& owner, float largestHoldMs);

    void prepare() override;
    void reset() override;

    wave::FloatParameterBus hold;  ///< ms, 0 to the largest

protected:
    /// Long after the last peak has left whatever is remembered.
    bool settled() const override {
        return standstill_ >= 2 * (largestHold_ + 1 + environment().maxBlockSize());
    }
    VANTA_REALTIME void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                                int flags) override;

private:
    int holdSamples(float ms) const;
    VANTA_REALTIME std::int64_t followStandstill(int samples);
    VANTA_REALTIME void holdLong(int holdLength, float* out, int samples);
    VANTA_REALTIME void beginSegment(int holdLength, int samplesAhead);
    VANTA_REALTIME void holdVarying(const float* holdMs, float* out, int samples);
    VANTA_REALTIME float advance(float magnitude, std::uint32_t holdLength);
    VANTA_REALTIME void cover(std::uint32_t holdLength, int samplesAhead);
    VANTA_REALTIME float past(std::uint32_t distance, int samplesAhead) const;
    VANTA_REALTIME void forgetPeaks(int samples);

    float largestHoldMs_;
    int largestHold_ = 0;  ///< samples
    wave::BasicBlock<float> magnitude_;
    wave::MirroredRing ring_;      ///< of the magnitude
    std::int64_t standstill_ = 0;  ///< how many of the newest samples hold `stillValue_`
    float stillValue_ = 0.0f;

    // A steady hold: short ones need scratch alone.
    wave::AlignedBuffer<float> scratch_;
    wave::AlignedBuffer<float> rest_;  ///< of the hold before the segment, the maximum from each sample on
    int segmentHold_ = -1;             ///< that the segment was begun for; negative: none
    int segmentPosition_ = 0;
    float segmentHighest_ = 0.0f;

    // A moving hold.
    PeakQueue queue_;
    std::uint32_t position_ = 0;
    std::uint32_t covered_ = 0;  ///< how many samples before `position_` the queue knows all peaks of
    float previous_ = 0.0f;
    bool falling_ = false;
};

}  // namespace vanta
