#pragma once

#include "wave/delay.hpp"

namespace vanta {

/// A delay up to a largest length in milliseconds that can hand over from one whole length to another without
/// a step, and takes the next length when it has arrived.
class DelayLineBase : public wave::DelayFilterBase {
public:
    /// How a length hands over to the next.
    struct Handover {
        int fade = 0;     ///< samples of a fade, in a straight line; 0 stands for 200 ms
        int overlap = 0;  ///< samples from the beginning until the old length fades out, where they overlap
    };

    DelayLineBase(wave::Environment& owner, float largestMs);

    void setHandover(Handover handover) { handover_ = handover; }

    /// Prepares the line for that length and empties it. Allocates.
    virtual void setMaxDelay(float milliseconds);
    void prepare() override;
    void reset() override;

protected:
    float largestMs() const { return largestMs_; }
    wave::BasicBlock<float>& scratch() { return scratch_; }
    const wave::BasicBlock<float>& scratch() const { return scratch_; }
    /// Begins at this length.
    void standAt(int delaySamples);
    /// Reads `count` of the block's `samples`, from `first` on, at a length or on the way there: crossfading,
    /// or if `overlapping` with the old and the new sample that is larger in magnitude, of which the new ones
    /// fade in at the beginning and the old ones out at the end.
    VANTA_REALTIME void readHandingOver(int delaySamples, bool overlapping, float* out, int first, int count,
                                        int samples);
    /// Whether `readHandingOver` has nothing to do but to read at this length.
    bool restsAt(int delaySamples) const {
        return currentDelay_ == delaySamples && handoverPosition_ >= handoverLength_;
    }

private:
    VANTA_REALTIME void beginHandover(int delaySamples, bool overlapping);
    VANTA_REALTIME void crossfade(float* out, const float* old, int count) const;
    VANTA_REALTIME void overlap(float* out, const float* old, int count) const;

    float largestMs_;
    wave::BasicBlock<float> scratch_;
    Handover handover_;
    int previousDelay_ = 0;
    int currentDelay_ = 0;
    int handoverPosition_ = 0;
    int handoverLength_ = 0;
    int fadeLength_ = 0;
};

}  // namespace vanta
