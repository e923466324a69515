#include "interface/display/scroll_clock.hpp"

#include <algorithm>
#include <cmath>

namespace vanta::interface {
namespace {

/// How far a frame's width has to be from the step before the step follows: more than a half, so that what
/// lies between two whole numbers does not change to and fro.
constexpr float kStickiness = 0.7f;
/// Below the first a frame becomes a part of a column, above the second it becomes a whole one again.
constexpr float kEnterFraction = 0.6f;
constexpr float kLeaveFraction = 0.8f;
/// A hiccup of the machine counts as no more than this many frames.
constexpr float kLongestHiccup = 4.0f;
constexpr float kShortestFrameMs = 5.0f;

}  // namespace

float ScrollClock::frameMs(float rate) const {
    return std::max(frameWidth_ * 1000.0f / rate, kShortestFrameMs);
}

void ScrollClock::tick(std::int64_t elapsedMs, float rate, float width) {
    const auto elapsed = static_cast<float>(elapsedMs);
    if (elapsedMs > 0) {
        const float advance = std::min({elapsed * rate * 0.001f, width, kLongestHiccup * frameWidth_});
        frameWidth_ = advance * 0.1f + frameWidth_ * 0.9f;
    }
    chooseStep();
    if (pixelRate_ == 0.0f) pixelRate_ = rate;
    if (elapsedMs > 0) pixelRate_ = 1000.0f / elapsed * step_ * 0.2f + pixelRate_ * 0.8f;
}

void ScrollClock::chooseStep() {
    const float limit = step_ >= 1.0f ? kEnterFraction : kLeaveFraction;
    const bool isFractional = frameWidth_ > 0.0f && frameWidth_ < limit;
    const float wanted = isFractional ? 1.0f / frameWidth_ : frameWidth_;
    float have = isFractional ? 1.0f / step_ : step_;  // infinite before the first frame
    if (std::abs(wanted - have) > kStickiness) have = std::max(std::trunc(wanted + 0.5f), 1.0f);
    if (!isFractional) {
        step_ = position_ = have;
        return;
    }
    step_ = 1.0f / have;
    position_ += step_;
    if (position_ > 0.999f) position_ = 0.0f;
}

}  // namespace vanta::interface
