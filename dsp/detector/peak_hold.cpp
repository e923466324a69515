#include "dsp/detector/peak_hold.hpp"

#include <algorithm>

#include "foundation/numbers.hpp"
#include "kernel/mix.hpp"

namespace vanta {

PeakHold::PeakHold(wave::Environment& owner, float largestHoldMs)
    : Filter(owner),
      hold(owner, 0.0f, 0.0f, largestHoldMs),
      largestHoldMs_(largestHoldMs),
      magnitude_(owner),
      delayed_(owner),
      delay_(owner) {
    makeResettable();
    prepare();
    reset();
}

void PeakHold::prepare() {
    largestHold_ = samplesInMs(largestHoldMs_, environment().sampleRate());
    // One sample more than the hold, to see on which side of a peak the hold ends.
    delay_.setMaxDelay(largestHold_ + 1);
    queue_.resize(largestHold_);
}

void PeakHold::reset() {
    delay_.clear();
    queue_.clear();
    position_ = covered_ = 0;
    standstill_ = 0;
    previous_ = 0.0f;
    falling_ = false;
}

int PeakHold::holdSamples(float ms) const {
    return std::clamp(samplesInMs(ms, environment().sampleRate()), 0, largestHold_);
}

void PeakHold::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples, int) {
    const float* holdMs = hold.pullData(samples);
    kernel::magnitude(in.data(), magnitude_.data(), static_cast<std::size_t>(samples));
    delay_.write(magnitude_.data(), samples);
    if (!hold.isConstant()) {
        followStandstill(samples);
        holdVarying(holdMs, out->data(), samples);
        return;
    }
    const int holdLength = holdSamples(holdMs[0]);
    if (followStandstill(samples) >= samples + holdLength || (holdLength == 0 && queue_.empty())) {
        rest(holdLength, samples);
    } else {
        holdSteadily(holdLength, out->data(), samples);
    }
}

/// How many of the newest samples are known to be equal.
std::int64_t PeakHold::followStandstill(int samples) {
    if (!source->isConstant()) {
        standstill_ = 0;
    } else {
        standstill_ = (magnitude_[0] == stillValue_ ? standstill_ : 0) + samples;
        stillValue_ = magnitude_[0];
    }
    return standstill_;
}

/// Nothing within the hold differs from the samples themselves.
void PeakHold::rest(int holdLength, int samples) {
    publish(magnitude_, source->blockFlags());
    queue_.clear();
    position_ += static_cast<std::uint32_t>(samples);
    covered_ = static_cast<std::uint32_t>(holdLength);
    previous_ = magnitude_[samples - 1];
    falling_ = false;
}

void PeakHold::holdSteadily(int holdLength, float* out, int samples) {
    const auto count = static_cast<std::size_t>(samples);
    const auto window = static_cast<std::uint32_t>(holdLength);
    const float* magnitude = magnitude_.data();
    cover(window, samples);
    for (int i = 0; i < samples; ++i) out[i] = advance(magnitude[i], window);
    covered_ = window;
    delay_.read(holdLength, delayed_.data(), samples);
    kernel::maximum(out, magnitude, out, count);
    kernel::maximum(out, delayed_.data(), out, count);
}

void PeakHold::holdVarying(const float* holdMs, float* out, int samples) {
    for (int i = 0; i < samples; ++i) {
        const auto window = static_cast<std::uint32_t>(holdSamples(holdMs[i]));
        cover(window, samples - i);
        const float magnitude = magnitude_[i];
        const float largest = std::max(advance(magnitude, window), magnitude);
        out[i] = std::max(largest, past(window, samples - i));
        covered_ = window;
    }
}

/// Takes in one sample and returns the largest peak passed within the hold. A peak is known when the signal
/// turns down; until then it is the newest sample, which is left to the caller, as is the oldest, whose peak
/// may lie before the hold.
inline float PeakHold::advance(float magnitude, std::uint32_t holdLength) {
    const bool wasFalling = falling_;
    falling_ = previous_ > magnitude;
    if (falling_ && !wasFalling && holdLength > 0) queue_.insert({position_ - 1, previous_});
    previous_ = magnitude;
    queue_.expire(position_, holdLength);
    ++position_;
    return queue_.largest();
}

/// Finds the peaks that a longer hold brings back, newest first, from the samples themselves. The effort is
/// that of the stretch by which the hold has grown. `samplesAhead` samples of the ring are not yet taken in.
void PeakHold::cover(std::uint32_t holdLength, int samplesAhead) {
    // The last sample's hold reaches one further back from here, so a hold that grows by one brings nothing
    // back.
    for (std::uint32_t distance = covered_ + 2; distance <= holdLength; ++distance) {
        const float value = past(distance, samplesAhead);
        if (value > past(distance - 1, samplesAhead) && value >= past(distance + 1, samplesAhead)) {
            queue_.insertOldest({position_ - distance, value});
        }
    }
}

/// The magnitude `distance` samples before the next one to be taken in.
float PeakHold::past(std::uint32_t distance, int samplesAhead) const {
    const int back = samplesAhead + static_cast<int>(distance);
    if (back > delay_.written()) return 0.0f;
    return delay_.ring()[(delay_.writePosition() - back) & delay_.mask()];
}

}  // namespace vanta
