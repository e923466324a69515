#include "dsp/detector/rms_filter.hpp"

#include <algorithm>

#include "foundation/numbers.hpp"
#include "kernel/level_math.hpp"
#include "kernel/mix.hpp"
#include "kernel/running_mean.hpp"

namespace vanta {

RMSFilter::RMSFilter(wave::Environment& owner, float largestWindowMs)
    : Filter(owner),
      scale(this, 1.0f),
      domain(this, Power),
      window(owner, 0.0f, 0.0f, largestWindowMs),
      largestWindowMs_(largestWindowMs),
      history_(owner, 1 + samplesInMs(largestWindowMs, owner.sampleRate())),
      squares_(owner) {
    makeResettable();
}

void RMSFilter::prepare() {
    history_.setMaxDelay(1 + samplesInMs(largestWindowMs_, environment().sampleRate()));
}

void RMSFilter::reset() {
    history_.clear();
    sum_ = freshSum_ = 0.0;
    freshCount_ = 0;
}

void RMSFilter::propertyChanged(AbstractProperty& property) {
    if (&property == &scale) length_ = 0;
}

void RMSFilter::setLength(int samples) {
    if (samples == length_) return;
    length_ = samples;
    norm_ = scale * scale / static_cast<float>(samples);
    history_.setDelay(samples);
    reset();
}

void RMSFilter::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples, int) {
    // A controller may ask for more than the history holds.
    const float windowMs = std::clamp(window.pullData(samples)[0], 0.0f, largestWindowMs_);
    setLength(std::min(1 + samplesInMs(windowMs, environment().sampleRate()), history_.maxDelay()));
    if (length_ <= 1) {
        passSingle(in.data(), out->data(), samples);
        return;
    }
    const auto count = static_cast<std::size_t>(samples);
    kernel::multiply(in.data(), in.data(), squares_.data(), count);
    history_.write(squares_.data(), samples);
    history_.read(length_, out->data(), samples);
    slide(out->data(), samples);
    if (domain == Amplitude) kernel::squareRoot(out->data(), out->data(), count);
}

// What was added and taken away again leaves its rounding in the sum: little of music, much of a sample far
// beyond full scale. A second sum that only adds takes over once a window, so that nothing stays longer than
// that.
void RMSFilter::slide(float* out, int samples) {
    for (int done = 0; done < samples;) {
        const int count = std::min(samples - done, length_ - freshCount_);
        const float* entering = squares_.data() + done;
        kernel::runningMean(entering, out + done, sum_, norm_, out + done, static_cast<std::size_t>(count));
        freshSum_ += kernel::sum(entering, static_cast<std::size_t>(count));
        freshCount_ += count;
        done += count;
        if (freshCount_ < length_) continue;
        sum_ = freshSum_;
        freshSum_ = 0.0;
        freshCount_ = 0;
    }
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
