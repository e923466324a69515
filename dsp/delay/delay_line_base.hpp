#pragma once

#include "wave/delay.hpp"

namespace vanta {

/// A delay up to a largest length in milliseconds that can switch from one whole length to another without a
/// step: it crossfades for 200 ms, in a straight line, and takes the next length when it has arrived.
class DelayLineBase : public wave::DelayFilterBase {
public:
    DelayLineBase(wave::Environment& owner, float largestMs);

    /// Prepares the line for that length and empties it. Allocates.
    virtual void setMaxDelay(float milliseconds);
    void prepare() override;
    void reset() override;

protected:
    float largestMs() const { return largestMs_; }
    wave::BasicBlock<float>& scratch() { return scratch_; }
    const wave::BasicBlock<float>& scratch() const { return scratch_; }
    VANTA_REALTIME void readSwitched(int delaySamples, float* out, int samples);

private:
    float largestMs_;
    wave::BasicBlock<float> scratch_;
    int previousDelay_ = 0;
    int currentDelay_ = 0;
    int fadePosition_ = 0;
    int fadeLength_ = 0;
    bool firstSwitch_ = true;
};

}  // namespace vanta
