#include "wave/float_parameter.hpp"

#include <algorithm>
#include <cmath>

#include "foundation/numbers.hpp"

namespace vanta::wave {

namespace {

double fraction(double x) {
    return x - std::floor(x);
}

}  // namespace

FloatParameter::FloatParameter(Environment& owner, float initial)
    : Component(owner),
      period(nullptr, 0.0f),
      slowTime(nullptr, 150.0f),
      fastTime(nullptr, 20.0f),
      block_(owner),
      rampStart_(initial),
      maximum_(std::max(initial, 1.0f)),
      minimum_(std::min(initial, 0.0f)),
      range_(maximum_ - minimum_),
      target_(initial) {}

FloatParameter::FloatParameter(const FloatParameter& other)
    : ValueAssignable<float>(),
      Component(other.environment()),
      period(nullptr, other.period),
      slowTime(nullptr, other.slowTime),
      fastTime(nullptr, other.fastTime),
      block_(other.environment()),
      rampStart_(other.target_),
      maximum_(other.maximum_),
      minimum_(other.minimum_),
      range_(other.range_),
      target_(other.target_) {}

void FloatParameter::setRange(float minimum, float maximum) {
    minimum_ = minimum;
    maximum_ = maximum;
    range_ = maximum - minimum;
}

void FloatParameter::assign(float value, void*) {
    setValue(value, -1.0f);
}

// Up to which the value was read. Who reads it may have rested since.
std::int64_t FloatParameter::lastPosition() const {
    return environment().restedSince(restEpoch_) ? environment().position() : lastPosition_;
}

// 0 if the parameter was read up to exactly this position with no jump in between.
std::int64_t FloatParameter::unreadSamples() const {
    if (lastPosition() <= environment().discontinuityPosition()) return 1;
    return environment().position() - lastPosition();
}

void FloatParameter::setValue(float value, float timeMs, int delaySamples) {
    if (std::isnan(value)) return;
    value = value < minimum_ ? minimum_ : std::min(value, maximum_);
    if (nearlyEqual(value, target_)) return;

    environment().noteChange();
    const bool heard = unreadSamples() == 0;
    restEpoch_ = 0;
    lastPosition_ = environment().position();
    rampStart_ = heard ? this->value() : target_;
    rampPosition_ = -delaySamples;
    block_.filled = 0;
    if (period > 0.0f) unwrapStart(value);
    if (timeMs < 0.0f) timeMs = heard ? defaultTimeMs(value) : 0.0f;
    rampLength_ = samplesInMs(timeMs, environment().sampleRate());
    target_ = value;
    rampStep_ = rampLength_ > 0 ? (value - rampStart_) / static_cast<float>(rampLength_) : 0.0f;
}

void FloatParameter::unwrapStart(float value) {
    const double cycle = period;
    double distance = fraction(fraction(value / cycle) - fraction(rampStart_ / cycle));
    if (distance > 0.5) distance -= 1.0;
    rampStart_ = std::clamp(static_cast<float>(value - cycle * distance), minimum_, maximum_);
}

float FloatParameter::defaultTimeMs(float value) const {
    const float share = range_ > 0.0f ? std::abs(value - rampStart_) / range_ : 1.0f;
    const float x = std::max(0.3f - share, 0.0f) * 3.3333333f;
    return fastTime + (slowTime - fastTime) * x * x;
}

// From the place alone and not from the sample before, so that the size of the blocks makes no difference.
float FloatParameter::valueAt(int rampPosition) const {
    const double place = std::max(rampPosition, 0);
    return static_cast<float>(place * static_cast<double>(rampStep_) + static_cast<double>(rampStart_));
}

const BasicBlock<float>& FloatParameter::read(int samples, bool* constant) {
    float* out = block_.data();
    lastPosition_ = environment().position() + samples;
    if (rampPosition_ >= rampLength_) {
        *constant = true;
        restEpoch_ = environment().epoch();
        if (block_.filled < samples) {
            std::fill(out + block_.filled, out + samples, target_);
            block_.filled = samples;
        }
        return block_;
    }
    *constant = false;
    environment().noteRead(false);
    const int waiting = std::clamp(-rampPosition_, 0, samples);
    std::fill(out, out + waiting, rampStart_);
    const int end = std::clamp(rampLength_ - rampPosition_, waiting, samples);
    for (int i = waiting; i < end; ++i) out[i] = valueAt(rampPosition_ + i);
    std::fill(out + end, out + samples, target_);
    rampPosition_ = std::min(rampPosition_ + samples, rampLength_);
    // From now on fewer signals may be pulled.
    if (rampPosition_ == rampLength_) environment().noteChange();
    return block_;
}

const BasicBlock<float>& FloatParameter::readInStream(int samples, bool* constant) {
    const std::int64_t left = rampLength_ - rampPosition_;
    const bool jumped = lastPosition() <= environment().discontinuityPosition();
    const std::int64_t unread = jumped ? left : environment().position() - lastPosition();
    rampPosition_ += static_cast<int>(std::clamp<std::int64_t>(unread, 0, std::max<std::int64_t>(left, 0)));
    return read(samples, constant);
}

}  // namespace vanta::wave
