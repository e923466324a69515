#include "dsp/detector/rms_filter.hpp"

#include <algorithm>

#include "foundation/numbers.hpp"
#include "kernel/level_math.hpp"
#include "kernel/mix.hpp"

namespace vanta {

RMSFilter::RMSFilter(wave::Environment& owner, float largestWindowMs)
    : Filter(owner),
      scale(this, 1.0f),
      domain(this, Power),
      window(owner, 0.0f, 0.0f, largestWindowMs),
      largestWindowMs_(largestWindowMs) {
    makeResettable();
    prepare();
}

void RMSFilter::prepare() {
    const int size = 1 + samplesInMs(largestWindowMs_, environment().sampleRate());
    if (size == squares_.size()) return;
    squares_.resize(size);
    reset();
}

void RMSFilter::reset() {
    sum_ = {};
    position_ = enteredCount_ = 0;
    full_ = false;
}

void RMSFilter::propertyChanged(AbstractProperty& property) {
    if (&property == &scale) length_ = 0;
}

void RMSFilter::setLength(int samples) {
    if (samples == length_) return;
    length_ = samples;
    norm_ = static_cast<double>(scale * scale / static_cast<float>(samples));
    reset();
}

void RMSFilter::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples, int) {
    // A controller may ask for more than the ring holds.
    const float windowMs = std::clamp(window.pullData(samples)[0], 0.0f, largestWindowMs_);
    setLength(std::min(1 + samplesInMs(windowMs, environment().sampleRate()), squares_.size()));
    if (length_ <= 1) {
        passSingle(in.data(), out->data(), samples);
        return;
    }
    if (restsFor(samples)) return publishSilence();
    slide(in.data(), out->data(), samples);
    if (domain == Amplitude) {
        kernel::squareRoot(out->data(), out->data(), static_cast<std::size_t>(samples));
    }
}

/// Whether all that the window holds is silence, and so is what comes. The ring stands still then, as it
/// would store what it holds; the sums go on to take turns, so that it does not matter when the rest began.
bool RMSFilter::restsFor(int samples) {
    const bool silent = silence_.outlasts(*source, samples, length_);
    if (!silent || !full_ || sum_.window != 0.0 || sum_.entered != 0.0) return false;
    enteredCount_ = (enteredCount_ + samples) % length_;
    return true;
}

// What was added and taken away again leaves its rounding in the sum: little of music, much of a sample far
// beyond full scale. A second sum that only adds takes over once a window, so that nothing stays longer than
// that.
void RMSFilter::slide(const float* in, float* out, int samples) {
    for (int done = 0; done < samples;) {
        const int count =
            slidePiece(in + done, out + done, std::min(samples - done, length_ - enteredCount_));
        done += count;
        enteredCount_ += count;
        if (enteredCount_ < length_) continue;
        sum_ = {sum_.entered, 0.0};
        enteredCount_ = 0;
        full_ = true;
    }
}

/// Up to where either end of the window meets the end of the ring. Returns how far that is.
int RMSFilter::slidePiece(const float* in, float* out, int samples) {
    const int size = squares_.size();
    const int oldest = position_ >= length_ ? position_ - length_ : position_ - length_ + size;
    int count = std::min(samples, size - position_);
    if (full_) count = std::min(count, size - oldest);
    // What leaves must have been stored before its group.
    if (length_ < static_cast<int>(kernel::kMeanGroup)) count = std::min(count, length_);
    const float* leaving = full_ ? squares_.data() + oldest : environment().silentBlock().data();
    kernel::runningMeanSquare(in, leaving, squares_.data() + position_, sum_, norm_, out,
                              static_cast<std::size_t>(count));
    position_ = (position_ + count) % size;
    return count;
}

void RMSFilter::passSingle(const float* in, float* out, int samples) {
    const bool constant = source->isConstant();
    const std::size_t work = constant ? 1 : static_cast<std::size_t>(samples);
    if (domain == Amplitude) {
        kernel::scale(in, scale, out, work);
    } else {
        kernel::multiply(in, in, out, work);
        kernel::scale(out, scale * scale, out, work);
    }
    if (constant) kernel::fill(out[0], out, static_cast<std::size_t>(samples));
    setConstant(constant);
}

}  // namespace vanta
