#include "limiter/clippers/smart_clipper.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

#include "foundation/fast_exponential.hpp"
#include "foundation/numbers.hpp"
#include "kernel/scan.hpp"

namespace vanta {
namespace {

constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();

/// Directions of the signal are 0 rising, 1 level and 2 falling: a peak has passed where they go up.
constexpr int kFlat = 1;

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
    prepare();
    reset();
}

void SmartClipper::prepare() {
    windowSamples_ = samplesInSeconds(kWindowSeconds, environment().sampleRate());
    delay_.setMaxDelay(windowSamples_);
    // At most two of three samples are points, where the signal rises, stays and falls in turn. Besides those
    // of the window there are the line's left end and a point that leaves while the next one enters.
    const int most = windowSamples_ - windowSamples_ / 3 + 4;
    const std::size_t size = std::bit_ceil(static_cast<std::size_t>(most));
    points_.resize(size);
    mask_ = static_cast<int>(size) - 1;
}

void SmartClipper::reset() {
    delay_.clear();
    std::ranges::fill(points_, Point{});
    head_ = count_ = 0;
    previousExcess_ = 0.0f;
    previousInput_ = kSilenceDb;
    direction_ = kFlat;
    position_ = 0;
    quietSamples_ = 0;
    takeLine();
}

void SmartClipper::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                           int) {
    computeExcess(in.data(), excess_.data(), samples);
    delay_.write(excess_.data(), samples);
    float* result = out->data();
    delay_.read(windowSamples_, result, samples);
    int direction = direction_;
    for (int i = 0; i < samples; ++i) {
        const float before = std::exchange(previousInput_, in[i]);
        const int last = direction;
        // Without branches: whether audio rises or falls cannot be foretold.
        direction = int{in[i] - before <= kEqualWithin} + int{in[i] < before};
        const bool peakPassed = direction > last;
        const std::int64_t time = position_ + i - windowSamples_;
        if (peakPassed || time > lineEnd_) {
            moveLine(time, peakPassed, {position_ + i - 1, i > 0 ? excess_[i - 1] : previousExcess_});
        }
        const float line = lineValue_ + slope_ * static_cast<float>(time - lineStart_);
        result[i] = std::max(result[i], line);
    }
    direction_ = direction;
    previousExcess_ = excess_[samples - 1];
    const bool still = source->holdsOneValue() && threshold.source().holdsOneValue();
    const bool quiet = still && previousExcess_ == 0.0f;
    quietSamples_ = quiet ? quietSamples_ + samples : 0;
    position_ += samples;
    if (kernel::highestMagnitude(result, static_cast<std::size_t>(samples)) == 0.0f) publishSilence();
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

/// Leaves the line whose right end lies before `time`, and appends the sample before this one where a line
/// ends.
void SmartClipper::moveLine(std::int64_t time, bool peakPassed, Point last) {
    bool keep = false;
    if (count_ >= 1 && point(0).time < time) {
        // Without another peak in sight the line goes down to where the signal stands now.
        keep = count_ == 1 && !peakPassed && point(0).value != 0.0f;
        head_ = (head_ + 1) & mask_;
        --count_;
    }
    if (keep || peakPassed) {
        // With nothing between this peak and the window's beginning the line rises from 0.
        if (count_ == 0 && peakPassed) point(-1) = {time - 1, 0.0f};
        point(count_++) = last;
    }
    takeLine();
}

void SmartClipper::takeLine() {
    lineValue_ = slope_ = 0.0f;
    lineEnd_ = kNever;
    if (count_ == 0) return;
    const Point& from = point(-1);
    const Point& to = point(0);
    lineStart_ = from.time;
    lineEnd_ = to.time;
    lineValue_ = from.value;
    slope_ = (to.value - from.value) / static_cast<float>(to.time - from.time);
}

}  // namespace vanta
