#include "limiter/smart_clipper.hpp"

#include <algorithm>
#include <bit>
#include <cmath>

#include "dsp/fast_exponential.hpp"
#include "dsp/kernel/mix.hpp"
#include "foundation/numbers.hpp"

namespace vanta {
namespace {

constexpr double kWindowSeconds = 0.05;

float amplitudeOf(float db) {
    return static_cast<float>(kFastExponential(kDbToLog * db));
}

/// The part of a level that must go for it to be the threshold.
float reduction(float level, float amplitude) {
    return 1.0f - amplitude / std::max(std::abs(level), amplitude);
}

}  // namespace

SmartClipper::SmartClipper(wave::Environment& owner)
    : Filter(owner),
      domain(this, GainChangeDomain::Amplitude),
      threshold(owner, 0.0f, -180.0f, 180.0f),
      excess_(owner),
      delay_(owner) {
    makeResettable();
    reset();
}

void SmartClipper::reset() {
    windowSamples_ = samplesInSeconds(kWindowSeconds, environment().sampleRate());
    delay_.setMaxDelay(windowSamples_);
    delay_.clear();
    // At most two of three samples are points, where the signal rises, stays and falls in turn. Besides those
    // of the window there are the line's left end and a point that leaves while the next one enters.
    const int most = windowSamples_ - windowSamples_ / 3 + 4;
    const std::size_t size = std::bit_ceil(static_cast<std::size_t>(most));
    points_.assign(size, {});
    mask_ = static_cast<int>(size) - 1;
    head_ = count_ = 0;
    slope_ = previousExcess_ = 0.0f;
    previousInput_ = kSilenceDb;
    previousDirection_ = Direction::Flat;
    position_ = 0;
}

void SmartClipper::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                           int) {
    computeExcess(in.data(), excess_.data(), samples);
    delay_.write(excess_.data(), samples);
    float* result = out->data();
    delay_.read(windowSamples_, result, samples);
    bool silent = true;
    for (int i = 0; i < samples; ++i) {
        advance(in[i], excess_[i]);
        result[i] = std::max(result[i], line(position_ - windowSamples_));
        silent = silent && result[i] == 0.0f;
        ++position_;
    }
    if (silent) publishSilence();
}

void SmartClipper::computeExcess(const float* in, float* excess, int samples) {
    const float* thresholds = threshold.pullData(samples);
    if (domain == GainChangeDomain::Decibels) {
        for (int i = 0; i < samples; ++i) excess[i] = std::max(in[i] - thresholds[i], 0.0f);
    } else if (threshold.isConstant()) {
        const float amplitude = amplitudeOf(thresholds[0]);
        for (int i = 0; i < samples; ++i) excess[i] = reduction(in[i], amplitude);
    } else {
        for (int i = 0; i < samples; ++i) excess[i] = reduction(in[i], amplitudeOf(thresholds[i]));
    }
}

/// Takes in one sample: a peak becomes a point when it has passed.
void SmartClipper::advance(float input, float excess) {
    Direction direction = Direction::Rising;
    if (nearlyEqual(input, previousInput_)) {
        direction = Direction::Flat;
    } else if (input < previousInput_) {
        direction = Direction::Falling;
    }
    const bool peakPassed = direction != previousDirection_ && direction != Direction::Rising &&
                            previousDirection_ != Direction::Falling;
    leaveLine(position_ - windowSamples_, peakPassed);
    previousExcess_ = excess;
    previousInput_ = input;
    previousDirection_ = direction;
}

/// Moves on to the line that `time` lies on, and appends the sample before this one where a line can end.
void SmartClipper::leaveLine(std::int64_t time, bool peakPassed) {
    bool moved = false;
    bool keep = false;
    if (count_ >= 1 && point(0).time < time) {
        // Without another peak in sight the line goes down to where the signal stands now.
        keep = count_ == 1 && !peakPassed && point(0).value != 0.0f;
        head_ = (head_ + 1) & mask_;
        --count_;
        moved = true;
    }
    if (keep || peakPassed) {
        if (count_ == 0) {
            // Nothing within the window before this peak: the line rises from 0.
            if (peakPassed) point(-1) = {time - 1, 0.0f};
            moved = true;
        }
        point(count_++) = {position_ - 1, previousExcess_};
    }
    if (moved && count_ > 0) {
        const Point& from = point(-1);
        const Point& to = point(0);
        slope_ = (to.value - from.value) / static_cast<float>(to.time - from.time);
    }
}

float SmartClipper::line(std::int64_t time) const {
    if (count_ == 0) return 0.0f;
    const Point& from = point(-1);
    return from.value + slope_ * static_cast<float>(time - from.time);
}

}  // namespace vanta
