#include "dsp/delay/delay_line_base.hpp"

#include <algorithm>

#include "foundation/numbers.hpp"

namespace vanta {

DelayLineBase::DelayLineBase(wave::Environment& owner, float largestMs)
    : DelayFilterBase(owner), largestMs_(largestMs), scratch_(owner) {}

void DelayLineBase::setMaxDelay(float milliseconds) {
    largestMs_ = milliseconds;
    prepare();
    reset();
}

void DelayLineBase::prepare() {
    delayLine().setMaxDelay(samplesInMs(largestMs_, environment().sampleRate()));
}

void DelayLineBase::reset() {
    delayLine().clear();
    firstSwitch_ = true;
}

void DelayLineBase::readSwitched(int delaySamples, float* out, int samples) {
    if (firstSwitch_) {
        firstSwitch_ = false;
        currentDelay_ = delaySamples;
        fadePosition_ = fadeLength_ = 0;
    }
    if (fadePosition_ >= fadeLength_ && delaySamples != currentDelay_) {
        previousDelay_ = currentDelay_;
        currentDelay_ = delaySamples;
        fadePosition_ = 0;
        fadeLength_ = samplesInSeconds(0.2, environment().sampleRate());
    }
    delayLine().read(currentDelay_, out, samples);
    if (fadePosition_ >= fadeLength_) return;
    delayLine().read(previousDelay_, scratch_.data(), samples);
    const int count = std::min(fadeLength_ - fadePosition_, samples);
    const double step = 1.0 / fadeLength_;
    for (int i = 0; i < count; ++i) {
        const double t = (fadePosition_ + i) * step;
        out[i] = static_cast<float>((1.0 - t) * scratch_[i] + t * out[i]);
    }
    fadePosition_ += count;
}

}  // namespace vanta
