#include "dsp/delay/averaging_filter.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/fast_exponential.hpp"
#include "foundation/numbers.hpp"
#include "kernel/running_mean.hpp"

namespace vanta {
namespace {

/// A stored power of 1.0001 counts as 1.
constexpr float kUnitPowerWithin = 1e-4f + kEqualWithin;

/// Never infinite: what has once been in the sum would be there for good.
float signedPower(double x, double exponent, bool keepSign) {
    constexpr double kLargest = double{std::numeric_limits<float>::max()};
    const double magnitude = std::min(std::pow(std::abs(x), exponent), kLargest);
    return static_cast<float>(keepSign && x < 0.0 ? -magnitude : magnitude);
}

}  // namespace

AveragingFilter::AveragingFilter(wave::Environment& owner, float largestWindowMs)
    : Filter(owner),
      conversion(this, Plain),
      enabled(this, true),
      power(this, 0.1f, 10.0f, 1.0f),
      keepSign(this, true),
      window(owner, 0.0f, 0.0f, largestWindowMs),
      largestWindowMs_(largestWindowMs) {
    makeResettable();
    prepare();
    reset();
}

void AveragingFilter::prepare() {
    const int largest = samplesInMs(largestWindowMs_, environment().sampleRate());
    history_.resize(static_cast<std::size_t>(largest) + 2);
}

void AveragingFilter::reset() {
    std::fill(history_.begin(), history_.end(), 0.0f);
    readPosition_ = writePosition_ = span_ = 0;
    sum_ = 0.0;
    standstill_ = 0;
}

void AveragingFilter::propertyChanged(AbstractProperty& property) {
    if (&property == &power) unitPower_ = std::abs(power - 1.0f) <= kUnitPowerWithin;
    if (&property == &enabled && enabled) reset();
}

int AveragingFilter::windowSamples(float ms) const {
    const int largest = static_cast<int>(history_.size()) - 1;
    return std::clamp(1 + samplesInMs(ms, environment().sampleRate()), 1, largest);
}

void AveragingFilter::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                              int) {
    if (!enabled) {
        publishInput();
        return;
    }
    const float* windowMs = window.pullData(samples);
    const int first = windowSamples(windowMs[0]);
    if (!window.isConstant() || first != span_) {
        averageVarying(in.data(), windowMs, out->data(), samples);
    } else if (first == 1) {
        for (int i = 0; i < samples; ++i) push(store(in[i]));
        setSpan(1);
        publishInput();
    } else {
        averageSteadily(in.data(), out->data(), samples);
    }
    followStandstill(in.data(), samples);
}

void AveragingFilter::averageVarying(const float* in, const float* windowMs, float* out, int samples) {
    for (int i = 0; i < samples; ++i) {
        setSpan(windowSamples(windowMs[i]) - 1);
        push(store(in[i]));
        out[i] = meanOf(sum_, span_);
    }
}

void AveragingFilter::averageSteadily(const float* in, float* out, int samples) {
    if (!plain()) {
        const int span = span_;
        for (int i = 0; i < samples; ++i) {
            setSpan(span - 1);
            push(store(in[i]));
            out[i] = meanOf(sum_, span);
        }
        return;
    }
    const int size = static_cast<int>(history_.size());
    // What leaves must have been stored before its group.
    const int most = span_ < static_cast<int>(kernel::kMeanGroup) ? span_ : samples;
    kernel::RunningSum sum{sum_};
    for (int done = 0; done < samples;) {
        // Up to where either place wraps.
        const int count = std::min({samples - done, most, size - readPosition_, size - writePosition_});
        kernel::runningMean(in + done, history_.data() + readPosition_, history_.data() + writePosition_, sum,
                            1.0 / span_, out + done, static_cast<std::size_t>(count));
        readPosition_ = (readPosition_ + count) % size;
        writePosition_ = (writePosition_ + count) % size;
        done += count;
    }
    sum_ = sum.window;
}

/// What of a sample enters the sum.
float AveragingFilter::store(float sample) {
    const float powered = unitPower_ ? sample : signedPower(sample, power, keepSign);
    if (conversion == Plain) return powered;
    return static_cast<float>(kFastExponential(-kDbToLog * powered));
}

float AveragingFilter::meanOf(double sum, int samples) const {
    double mean = sum / samples;
    if (conversion != Plain) mean = -dbFromGain(mean);
    if (unitPower_) return static_cast<float>(mean);
    return signedPower(mean, 1.0 / power, keepSign);
}

void AveragingFilter::push(float stored) {
    history_[static_cast<std::size_t>(writePosition_)] = stored;
    if (++writePosition_ == static_cast<int>(history_.size())) writePosition_ = 0;
    sum_ += double{stored};
    ++span_;
}

void AveragingFilter::setSpan(int samples) {
    const int size = static_cast<int>(history_.size());
    for (; span_ > samples; --span_) {
        sum_ -= double{history_[static_cast<std::size_t>(readPosition_)]};
        if (++readPosition_ == size) readPosition_ = 0;
    }
    for (; span_ < samples; ++span_) {
        readPosition_ = (readPosition_ == 0 ? size : readPosition_) - 1;
        sum_ += double{history_[static_cast<std::size_t>(readPosition_)]};
    }
    if (span_ == 0) sum_ = 0.0;
}

/// While the signal stands still for a whole window the sum is known exactly: the last rounding errors of
/// what came before go, and silence becomes silence.
void AveragingFilter::followStandstill(const float* in, int samples) {
    const int size = static_cast<int>(history_.size());
    const float newest =
        history_[static_cast<std::size_t>((writePosition_ == 0 ? size : writePosition_) - 1)];
    const bool still = std::all_of(in, in + samples, [in](float x) { return x == in[0]; });
    if (!still) {
        standstill_ = 0;
        return;
    }
    if (newest != lastStored_) standstill_ = 0;
    lastStored_ = newest;
    standstill_ = std::min(standstill_ + samples, size);
    if (standstill_ >= span_) sum_ = double{newest} * span_;
}

}  // namespace vanta
