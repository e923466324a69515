#include "dsp/delay/delay_line_base.hpp"

#include <algorithm>
#include <cmath>

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
}

void DelayLineBase::standAt(int delaySamples) {
    currentDelay_ = delaySamples;
    handoverPosition_ = handoverLength_ = 0;
}

void DelayLineBase::beginHandover(int delaySamples, bool overlapping) {
    previousDelay_ = currentDelay_;
    currentDelay_ = delaySamples;
    handoverPosition_ = 0;
    fadeLength_ = handover_.fade > 0 ? handover_.fade : samplesInSeconds(0.2, environment().sampleRate());
    handoverLength_ = fadeLength_ + (overlapping ? std::max(handover_.overlap, fadeLength_) : 0);
}

void DelayLineBase::readHandingOver(int delaySamples, bool overlapping, float* out, int first, int count,
                                    int samples) {
    int piece = 0;
    for (const int end = first + count; first < end; first += piece) {
        if (!restsAt(currentDelay_)) {
            piece = std::min(end - first, handoverLength_ - handoverPosition_);
        } else if (currentDelay_ != delaySamples) {
            beginHandover(delaySamples, overlapping);
            piece = std::min(end - first, handoverLength_);
        } else {
            piece = end - first;
        }
        const int later = samples - first - piece;
        delayLine().read(currentDelay_ + later, out + first, piece);
        if (handoverPosition_ >= handoverLength_) continue;
        delayLine().read(previousDelay_ + later, scratch_.data(), piece);
        if (overlapping) {
            overlap(out + first, scratch_.data(), piece);
        } else {
            crossfade(out + first, scratch_.data(), piece);
        }
        handoverPosition_ += piece;
    }
}

void DelayLineBase::crossfade(float* out, const float* old, int count) const {
    const double step = 1.0 / fadeLength_;
    for (int i = 0; i < count; ++i) {
        const double t = (handoverPosition_ + i) * step;
        out[i] = static_cast<float>((1.0 - t) * old[i] + t * out[i]);
    }
}

void DelayLineBase::overlap(float* out, const float* old, int count) const {
    const double step = 1.0 / fadeLength_;
    for (int i = 0; i < count; ++i) {
        const int place = handoverPosition_ + i;
        const auto newShare = static_cast<float>(std::min(place * step, 1.0));
        const auto oldShare = static_cast<float>(std::min((handoverLength_ - place) * step, 1.0));
        const float was = oldShare * old[i], is = newShare * out[i];
        out[i] = std::abs(was) > std::abs(is) ? was : is;
    }
}

}  // namespace vanta
