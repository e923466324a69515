#include "limiter/clippers/smart_clipper.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "foundation/fast_exponential.hpp"
#include "foundation/numbers.hpp"
#include "kernel/scan.hpp"
#include "kernel/signal_steps.hpp"

namespace vanta {
namespace {

/// Later than any sample, and still something to compute with.
constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max() / 2;
/// Samples whose steps fit one word.
constexpr int kPiece = 64;

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
    for (int first = 0; first < samples; first += kPiece) {
        const int end = std::min(first + kPiece, samples);
        followLines(result, first, end, peaksPassed(in.data() + first, end - first));
    }
    previousExcess_ = excess_[samples - 1];
    const bool still = source->holdsOneValue() && threshold.source().holdsOneValue();
    const bool quiet = still && previousExcess_ == 0.0f;
    quietSamples_ = quiet ? quietSamples_ + samples : 0;
    position_ += samples;
    if (kernel::highestMagnitude(result, static_cast<std::size_t>(samples)) == 0.0f) publishSilence();
}

/// Bit i: a peak has passed at the sample before sample i. All steps of the piece are looked at together, as
/// whether audio rises or falls cannot be foretold, and a branch a sample would cost more than all else.
std::uint64_t SmartClipper::peaksPassed(const float* in, int count) {
    const kernel::SignalSteps steps =
        kernel::signalSteps(in, previousInput_, kEqualWithin, static_cast<std::size_t>(count));
    const auto begins = [](std::uint64_t now, bool before) {
        return now & ~(now << 1 | std::uint64_t{before});
    };
    const std::uint64_t peaks =
        begins(steps.notRising, direction_ >= kFlat) | begins(steps.falling, direction_ > kFlat);
    const auto last = [&](std::uint64_t bits) { return static_cast<int>(bits >> (count - 1) & 1); };
    direction_ = last(steps.notRising) + last(steps.falling);
    previousInput_ = in[count - 1];
    return peaks;
}

/// Raises the samples of a piece to the lines, from one place where the line changes to the next.
void SmartClipper::followLines(float* result, int first, int end, std::uint64_t peaks) {
    for (int from = first, next = first;; next = from + 1) {
        const int peak = peaks != 0 ? first + std::countr_zero(peaks) : end;
        const std::int64_t beyond = lineEnd_ + 1 - position_ + windowSamples_;
        const int change = std::min(peak, static_cast<int>(std::clamp<std::int64_t>(beyond, next, end)));
        raiseToLine(result, from, change);
        if (change == end) return;
        const bool peakPassed = change == peak;
        if (peakPassed) peaks &= peaks - 1;
        moveLine(position_ + change - windowSamples_, peakPassed,
                 {position_ + change - 1, change > 0 ? excess_[change - 1] : previousExcess_});
        from = change;
    }
}

void SmartClipper::raiseToLine(float* result, int from, int end) const {
    // Excess is never negative.
    if (lineValue_ == 0.0f && slope_ == 0.0f) return;
    const auto passed = static_cast<int>(position_ + from - windowSamples_ - lineStart_);
    for (int i = from; i < end; ++i) {
        const float line = lineValue_ + slope_ * static_cast<float>(passed + (i - from));
        result[i] = std::max(result[i], line);
    }
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
        // Peaks below the threshold lie on one line, which goes on.
        const bool goesOn = count_ > 0 && last.value == 0.0f && point(count_ - 1).value == 0.0f &&
                            point(count_ - 2).value == 0.0f;
        point(goesOn ? count_ - 1 : count_++) = last;
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
