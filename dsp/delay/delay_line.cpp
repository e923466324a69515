#include "dsp/delay/delay_line.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "foundation/fast_exponential.hpp"
#include "foundation/numbers.hpp"

namespace vanta {
namespace {

constexpr double kSmootherHz = 5.0;
constexpr double kDamping = 2.0;
constexpr double kTapFadeSeconds = 0.085;

/// The share of the old tap, from 1 down: a straight line in dB over 36 dB, then one to 0.
double tapShare(double left) {
    return left > 0.1 ? kFastExponential(36.0 * (left - 1.0) * kDbToLog) : 0.23988324 * left;
}

}  // namespace

DelayLine::DelayLine(wave::Environment& owner, float largestMs)
    : DelayLineBase(owner, largestMs),
      delay(owner, 0.0f),
      delayInterpretation(this, Milliseconds),
      readType(this, Interpolated),
      smooth(this, true) {
    makeResettable();
    prepare();
    reset();
}

void DelayLine::reset() {
    DelayLineBase::reset();
    const float largest =
        delayInterpretation == Samples ? static_cast<float>(delayLine().maxDelay()) : largestMs();
    delay.parameter().setRange(0.0f, largest);
    const double ratio = std::min(kSmootherHz / environment().sampleRate(), 1.0);
    coefficient_ = std::min(2.0 * std::sin(std::numbers::pi * ratio), 0.95);
    restart();
}

// What was missed has emptied the ring: there is nothing to glide from.
void DelayLine::streamInterrupted() {
    restart();
}

void DelayLine::restart() {
    firstBlock_ = true;
    tapFade_ = restDelay_ = -1;
}

void DelayLine::propertyChanged(AbstractProperty& property) {
    if (&property == &delayInterpretation) reset();
}

double DelayLine::inSamples(float value) const {
    return delayInterpretation == Samples ? double{value} : value * 0.001 * environment().sampleRate();
}

int DelayLine::limited(double samples) const {
    return static_cast<int>(std::clamp(samples, 0.0, static_cast<double>(delayLine().maxDelay())));
}

int DelayLine::firstDelay(float value) const {
    return delayInterpretation == Samples ? limited(std::round(double{value})) : limited(inSamples(value));
}

void DelayLine::process(const wave::BasicBlock<float>&, wave::BasicBlock<float>* out, int samples, int) {
    const float* values = delay.pullData(samples);
    const int first = firstDelay(values[0]);
    readsAtRest_ = false;
    if (std::exchange(firstBlock_, false)) {
        low_ = first;
        band_ = 0.0;
        standAt(first);
    }
    if (readType == Switched || readType == Overlapped) {
        if (delay.isConstant() && restsAt(first)) {
            readSettled(first, out->data(), samples);
        } else {
            readInTurns(values, out->data(), samples);
        }
    } else if (delay.isConstant() && (!smooth || settledAt(first))) {
        readSettled(first, out->data(), samples);
    } else {
        fillDelays(values, samples);
        if (readType == TwoTaps) {
            readTaps(out->data(), samples);
        } else {
            readInterpolated(out->data(), samples);
        }
    }
}

/// Whether the smoother has as good as arrived and nearly stands still.
bool DelayLine::settledAt(double delaySamples) const {
    constexpr double kWithin = 0.001;
    return std::abs(low_ - delaySamples) < kWithin && std::abs(coefficient_ * band_) < kWithin;
}

// Stretches of one whole delay after the other.
void DelayLine::readInTurns(const float* values, float* out, int samples) {
    int end = 0;
    for (int first = 0; first < samples; first = end) {
        const int whole = firstDelay(values[first]);
        end = delay.isConstant() ? samples : first + 1;
        while (end < samples && firstDelay(values[end]) == whole) ++end;
        readHandingOver(whole, readType == Overlapped, out, first, end - first, samples);
    }
}

void DelayLine::readSettled(int delaySamples, float* out, int samples) {
    readsAtRest_ = true;
    low_ = restDelay_ = delaySamples;
    band_ = 0.0;
    tapFade_ = -1;
    if (delaySamples == 0 && source) {
        publish(*source);
    } else {
        delayLine().read(delaySamples, out, samples);
    }
}

void DelayLine::fillDelays(const float* values, int samples) {
    const double longest = delayLine().maxDelay();
    float* delays = scratch().data();
    for (int i = 0; i < samples; ++i) {
        const double target = std::clamp(inSamples(values[i]), 0.0, longest);
        if (smooth) {
            const double whole = std::trunc(target);
            if (settledAt(whole)) {
                // As at a block's start, so that it does not matter where blocks begin.
                low_ = whole;
                band_ = 0.0;
            }
            low_ += coefficient_ * band_;
            delays[i] = static_cast<float>(std::clamp(low_, 0.0, longest));
            band_ += coefficient_ * (whole - kDamping * band_ - low_);
        } else {
            low_ = target;
            band_ = 0.0;
            delays[i] = static_cast<float>(target);
        }
    }
}

void DelayLine::readInterpolated(float* out, int samples) const {
    const wave::Delay& line = delayLine();
    const float* ring = line.ring();
    const float* delays = scratch().data();
    for (int i = 0; i < samples; ++i) {
        const int whole = static_cast<int>(delays[i]);
        const float fraction = delays[i] - static_cast<float>(whole);
        // Places are counted back from the end, so that the fraction keeps its digits however long the ring
        // is.
        const int back = samples - i + whole;
        const int oldest = fraction > 0.0f ? back + 1 : back;
        if (oldest > line.written()) {
            out[i] = 0.0f;
            continue;
        }
        const float newer = ring[(line.writePosition() - back) & line.mask()];
        const float older = ring[(line.writePosition() - oldest) & line.mask()];
        out[i] = newer + (older - newer) * fraction;
    }
}

void DelayLine::readTaps(float* out, int samples) {
    const wave::Delay& line = delayLine();
    const float* ring = line.ring();
    const float* delays = scratch().data();
    const int length = std::max(samplesInSeconds(kTapFadeSeconds, environment().sampleRate()), 1);
    const int start = line.writePosition() - samples;
    if (tapFade_ < 0) {
        const int from = restDelay_ >= 0 ? restDelay_ : static_cast<int>(delays[0]);
        current_ = (start - from) & line.mask();
        tapFade_ = 0;
    }
    for (int i = 0; i < samples; ++i) {
        if (tapFade_ == 0) next_ = (start + i - static_cast<int>(delays[i])) & line.mask();
        const double share = tapShare(1.0 - static_cast<double>(tapFade_) / length);
        const bool written = current_ < line.written() && next_ < line.written();
        out[i] = written ? static_cast<float>(share * ring[current_] + (1.0 - share) * ring[next_]) : 0.0f;
        current_ = (current_ + 1) & line.mask();
        next_ = (next_ + 1) & line.mask();
        if (++tapFade_ == length) {
            std::swap(current_, next_);
            tapFade_ = 0;
        }
    }
}

}  // namespace vanta
