#include "dsp/rms_filter.hpp"

#include <algorithm>

#include "dsp/kernel/level_math.hpp"
#include "dsp/kernel/mix.hpp"
#include "dsp/kernel/running_mean.hpp"
#include "foundation/numbers.hpp"

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

void RMSFilter::reset() {
    history_.setMaxDelay(1 + samplesInMs(largestWindowMs_, environment().sampleRate()));
    clear();
}

void RMSFilter::clear() {
    history_.clear();
    sum_ = 0.0;
}

void RMSFilter::propertyChanged(AbstractProperty& property) {
    if (&property == &scale) length_ = 0;
}

void RMSFilter::setLength(int samples) {
    if (samples == length_) return;
    length_ = samples;
    norm_ = scale * scale / static_cast<float>(samples);
    history_.setDelay(samples);
    clear();
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
    kernel::runningMean(squares_.data(), out->data(), sum_, norm_, out->data(), count);
    if (domain == Amplitude) kernel::squareRoot(out->data(), out->data(), count);
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
