#include "limiter/clippers/smart_clipper.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>

#include "foundation/fast_exponential.hpp"
#include "foundation/numbers.hpp"
#include "kernel/level_math.hpp"
#include "kernel/scan.hpp"
#include "kernel/signal_steps.hpp"

namespace vanta {
namespace {

/// Later than any sample, and still something to compute with.
constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max() / 2;
/// dB: how far below the threshold there is certainly no excess.
constexpr float kSafeDb = 0.001f;
/// Samples whose steps fit one word.
constexpr int kPiece = 64;

/// Directions of the signal are 0 rising, 1 level and 2 falling: a peak has passed where they go up.
constexpr int kFlat = 1;

float amplitudeOf(float db) {
    return static_cast<float>(kFastExponential(kDbToLog * db));
}

/// The part of a level that must go for it to be the threshold.
float reduction(float level, float ceiling) {
    return 1.0f - ceiling / std::max(std::abs(level), ceiling);
}

}  // namespace

SmartClipper::SmartClipper(wave::Environment& owner)
    : Source(owner),
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
    // The window holds silence without end.
    quietSamples_ = delay_.ringSize();
    evenSamples_ = 0;
    takeLine();
}

void SmartClipper::produce(wave::BasicBlock<float>* block, int samples, int) {
    if (passQuietly(samples)) {
        publishSilence();
        return;
    }
    const float* in = source->pullData(samples);
    computeExcess(in, excess_.data(), samples);
    delay_.write(excess_.data(), samples);
    float* result = block->data();
    delay_.read(windowSamples_, result, samples);
    for (int first = 0; first < samples; first += kPiece) {
        const int end = std::min(first + kPiece, samples);
        followLines(result, first, end, peaksPassed(in + first, end - first));
    }
    previousExcess_ = excess_[samples - 1];
    const auto count = static_cast<std::size_t>(samples);
    const bool quiet = previousExcess_ == 0.0f && kernel::highestMagnitude(excess_.data(), count) == 0.0f;
    const bool still = source->holdsOneValue() && threshold.source().holdsOneValue();
    quietSamples_ = quiet ? quietSamples_ + samples : 0;
    evenSamples_ = quiet && still ? evenSamples_ + samples : 0;
    position_ += samples;
    if (kernel::highestMagnitude(result, count) == 0.0f) publishSilence();
}

/// Where neither the window nor the block holds any excess, all lines are 0 and only the last peak will ever
/// matter: the next line begins there. The window stands still meanwhile, as it would store what it holds.
/// False, and nothing has happened, where that is not so.
bool SmartClipper::passQuietly(int samples) {
    const bool decibels = domain == GainChangeDomain::Decibels;
    wave::Producer* level = decibels ? amplitude : source;
    const bool empty = quietSamples_ >= delay_.ringSize() && lineValue_ == 0.0f && slope_ == 0.0f;
    if (!empty || !level || samples < 2 || samples > windowSamples_) return false;
    const auto count = static_cast<std::size_t>(samples);
    const float* thresholds = threshold.pullData(samples);
    const float thresholdDb = threshold.isConstant() ? thresholds[0] : kernel::lowest(thresholds, count);
    const float* in = level->pullData(samples);
    // Further below than the conversion rounds.
    const float highest = amplitudeOf(decibels ? thresholdDb - kSafeDb : thresholdDb);
    if (level->isConstant() || kernel::highestMagnitude(in, count) > highest) return false;
    const std::int64_t peak = lastPeak(in, samples);
    dropLinesBefore(position_ + samples - 1 - windowSamples_);
    if (peak >= position_ - 1) {
        if (count_ == 0) point(count_++ - 1) = {position_ - windowSamples_ - 1, 0.0f};
        point(count_ - 1) = {peak, 0.0f};
        takeLine();
    }
    previousExcess_ = 0.0f;
    quietSamples_ += samples;
    evenSamples_ = 0;
    position_ += samples;
    return true;
}

/// The place of the block's last peak, or one before the block. Looks at pieces from the last one on, each of
/// which needs to know the two samples before it, and leaves behind what the block's end was.
std::int64_t SmartClipper::lastPeak(const float* level, int samples) {
    const int beforeDirection = direction_;
    const float beforeInput = previousInput_;
    int endDirection = beforeDirection;
    float endInput = beforeInput;
    std::uint64_t peaks = 0;
    int first = samples;
    for (int end = samples; peaks == 0 && end > 0; end = first) {
        first = (end - 1) / kPiece * kPiece;
        std::array<float, kPiece + 2> piece;
        const int before = std::min(first, 2);
        takeLevels(level + first - before, piece.data(), before + end - first);
        direction_ = beforeDirection;
        previousInput_ = before > 0 ? piece[0] : beforeInput;
        if (before > 0) peaksPassed(piece.data() + 1, 1);
        peaks = peaksPassed(piece.data() + before, end - first);
        if (end < samples) continue;
        endDirection = direction_;
        endInput = previousInput_;
    }
    direction_ = endDirection;
    previousInput_ = endInput;
    return peaks == 0 ? position_ - 2 : position_ + first + std::bit_width(peaks) - 2;
}

/// As the source would give them.
void SmartClipper::takeLevels(const float* level, float* out, int count) const {
    if (domain == GainChangeDomain::Decibels) {
        kernel::decibelsFromAmplitude(level, out, static_cast<std::size_t>(count));
    } else {
        std::copy_n(level, count, out);
    }
}

/// Of lines that are 0.
void SmartClipper::dropLinesBefore(std::int64_t time) {
    if (count_ == 0 || point(0).time >= time) return;
    while (count_ > 0 && point(0).time < time) {
        head_ = (head_ + 1) & mask_;
        --count_;
    }
    takeLine();
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
        const float ceiling = amplitudeOf(thresholds[0]);
        for (int i = 0; i < samples; ++i) excess[i] = reduction(in[i], ceiling);
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
