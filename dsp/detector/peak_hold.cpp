#include "dsp/detector/peak_hold.hpp"

#include <algorithm>

#include "foundation/numbers.hpp"
#include "kernel/mix.hpp"
#include "kernel/sliding_maximum.hpp"

namespace vanta {

namespace {

constexpr int kLongestShort = static_cast<int>(kernel::kLongestDoubledHold);

}  // namespace

PeakHold::PeakHold(wave::Environment& owner, float largestHoldMs)
    : Filter(owner),
      hold(owner, 0.0f, 0.0f, largestHoldMs),
      largestHoldMs_(largestHoldMs),
      magnitude_(owner),
      ring_(1) {
    makeResettable();
    prepare();
    reset();
}

void PeakHold::prepare() {
    largestHold_ = samplesInMs(largestHoldMs_, environment().sampleRate());
    const int maxBlock = environment().maxBlockSize();
    // One sample more than the hold, to see on which side of a peak the hold ends.
    const int size = largestHold_ + 1 + maxBlock;
    if (size != ring_.size()) ring_ = wave::MirroredRing(size);
    scratch_.resize(std::min(largestHold_, kLongestShort) + maxBlock);
    rest_.resize(largestHold_ + 1);
    queue_.resize(largestHold_);
}

void PeakHold::reset() {
    ring_.clear();
    segmentHold_ = -1;
    forgetPeaks(0);
    standstill_ = 0;
    previous_ = 0.0f;
}

int PeakHold::holdSamples(float ms) const {
    return std::clamp(samplesInMs(ms, environment().sampleRate()), 0, largestHold_);
}

void PeakHold::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples, int) {
    const float* holdMs = hold.pullData(samples);
    kernel::magnitude(in.data(), magnitude_.data(), static_cast<std::size_t>(samples));
    ring_.write(magnitude_.data(), samples);
    if (!hold.isConstant()) {
        followStandstill(samples);
        segmentHold_ = -1;
        holdVarying(holdMs, out->data(), samples);
        return;
    }
    const int holdLength = holdSamples(holdMs[0]);
    const bool still = followStandstill(samples) >= samples + holdLength;
    if (still || holdLength <= kLongestShort) segmentHold_ = -1;
    if (still || holdLength == 0) {
        publish(magnitude_, source->blockFlags());
    } else if (holdLength <= kLongestShort) {
        kernel::slidingMaximum(ring_.newest(samples + holdLength), static_cast<std::size_t>(holdLength),
                               scratch_.data(), out->data(), static_cast<std::size_t>(samples));
    } else {
        holdLong(holdLength, out->data(), samples);
    }
    forgetPeaks(samples);
}

/// How many of the newest samples are known to be equal.
std::int64_t PeakHold::followStandstill(int samples) {
    if (!source->holdsOneValue()) {
        standstill_ = 0;
    } else {
        standstill_ = (magnitude_[0] == stillValue_ ? standstill_ : 0) + samples;
        stillValue_ = magnitude_[0];
    }
    return standstill_;
}

// Segments are one sample longer than the hold, so that a window never lies across more than one border.
void PeakHold::holdLong(int holdLength, float* out, int samples) {
    if (holdLength != segmentHold_) beginSegment(holdLength, samples);
    for (int done = 0; done < samples;) {
        const int count = std::min(samples - done, holdLength + 1 - segmentPosition_);
        kernel::maximumSoFar(magnitude_.data() + done, rest_.data() + segmentPosition_, segmentHighest_,
                             out + done, static_cast<std::size_t>(count));
        done += count;
        segmentPosition_ += count;
        if (segmentPosition_ > holdLength) beginSegment(holdLength, samples - done);
    }
}

/// The segment begins with the next sample. `samplesAhead` samples of the ring have not been held yet.
void PeakHold::beginSegment(int holdLength, int samplesAhead) {
    kernel::maximumOfRest(ring_.newest(holdLength, samplesAhead), rest_.data(),
                          static_cast<std::size_t>(holdLength));
    rest_[holdLength] = 0.0f;
    segmentHold_ = holdLength;
    segmentPosition_ = 0;
    segmentHighest_ = 0.0f;
}

/// A hold that moves finds the peaks of what came until now in the ring.
void PeakHold::forgetPeaks(int samples) {
    queue_.clear();
    position_ += static_cast<std::uint32_t>(samples);
    covered_ = 0;
    falling_ = false;
    if (samples > 0) previous_ = magnitude_[samples - 1];
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
    return *ring_.newest(1, samplesAhead + static_cast<int>(distance) - 1);
}

}  // namespace vanta
