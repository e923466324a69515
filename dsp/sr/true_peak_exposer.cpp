#include "dsp/sr/true_peak_exposer.hpp"

#include "foundation/numbers.hpp"

namespace vanta::sr {

TruePeakExposer::Style::Style(wave::Environment& owner)
    : ConverterStyle(owner, truePeakFactor(static_cast<double>(owner.sampleRate())), kAttenuation, kPassband),
      factorRate_(owner.sampleRate()) {}

void TruePeakExposer::Style::updateFactor() {
    const float rate = environment().sampleRate();
    if (nearlyEqual(rate, factorRate_)) return;
    factorRate_ = rate;
    // Every exposer hears of the new rate by itself.
    replaceFactor(truePeakFactor(static_cast<double>(rate)));
}

TruePeakExposer::TruePeakExposer(wave::Environment& owner, Style& style)
    : Filter(owner),
      enabled(nullptr, true),
      style_(style),
      interpolator_(style),
      peaks_(style, SkipDecimator::LargestMagnitude) {
    makeResettable();
    prepare();
}

void TruePeakExposer::prepare() {
    style_.updateFactor();
    workBlock_.resize(environment().maxBlockSize() * style_.factor());
    interpolator_.update();
}

void TruePeakExposer::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                              int) {
    if (!enabled) {
        publishInput();
        return;
    }
    // What came before a pause does not belong to the stream that comes.
    const std::int64_t position = environment().position();
    if (position != expectedPosition_) reset();
    expectedPosition_ = position + samples;
    interpolator_.convert(in.data(), workBlock_.data(), samples);
    peaks_.convert(workBlock_.data(), out->data(), samples);
}

}  // namespace vanta::sr
