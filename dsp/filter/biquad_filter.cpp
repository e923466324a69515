#include "dsp/filter/biquad_filter.hpp"

#include "foundation/numbers.hpp"

namespace vanta {

BiquadFilter::BiquadFilter(wave::Environment& owner, int maxSections, int granularity)
    : Filter(owner), enabled(this, true), processor(owner, maxSections, granularity) {
    makeResettable();
}

void BiquadFilter::reset() {
    processor.reset();
}

void BiquadFilter::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                           int) {
    if (!stream_.follows(*this, samples)) processor.restart();
    if (processor.off()) {
        processor.restart();
        publishInput();
        return;
    }
    updateCoefficients(samples, processor);
    if (!processor.process(in.data(), out->data(), samples)) publishInput();
}

void BiquadFilter::propertyChanged(AbstractProperty& property) {
    if (&property != &enabled) return;
    const bool untouched = environment().position() == environment().resetPosition();
    const auto rate = static_cast<double>(environment().sampleRate());
    processor.fadeTo(enabled ? 1.0f : 0.0f, untouched ? 0 : samplesInSeconds(0.02, rate));
}

}  // namespace vanta
