#include "dsp/sr/converter_filter.hpp"

namespace vanta::sr {

ConverterFilterBase::ConverterFilterBase(wave::Environment& owner, ConverterStyleBase& style,
                                         std::unique_ptr<ConverterBase> converter)
    : Filter(owner), style_(style), converter_(std::move(converter)) {
    makeResettable();
}

void ConverterFilterBase::prepare() {
    converter_->update();
    silence_.restart();
}

void ConverterFilterBase::reset() {
    converter_->reset();
    silence_.restart();
}

void ConverterFilterBase::convert(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out,
                                  int count) {
    if (silence_.outlasts(*source, count, converter_->memory())) {
        publishSilence();
    } else if (!converter_->convert(in.data(), out->data(), count)) {
        publishInput();
    }
}

void ConverterFilterBase::noteBlock(int samples) {
    if (!stream_.follows(*this, samples)) reset();
}

void InterpolatorFilterBase::produce(wave::BasicBlock<float>* block, int samples, int flags) {
    noteBlock(samples);
    process(source->pull(samples / style().factor()), block, samples, flags);
}

void InterpolatorFilterBase::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out,
                                     int samples, int) {
    convert(in, out, samples / style().factor());
}

void DecimatorFilterBase::produce(wave::BasicBlock<float>* block, int samples, int flags) {
    noteBlock(samples);
    process(source->pull(samples * style().factor()), block, samples, flags);
}

void DecimatorFilterBase::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out,
                                  int samples, int) {
    convert(in, out, samples);
}

SkipDecimatorFilter::SkipDecimatorFilter(ConverterStyleBase& style, SkipDecimator::Mode initialMode)
    : DecimatorFilterBase(style.environment(), style, std::make_unique<SkipDecimator>(style, initialMode)),
      mode(static_cast<SkipDecimator&>(converter()).mode) {}

void SkipDecimatorFilter::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out,
                                  int samples, int) {
    if (!converter().convert(in.data(), out->data(), samples)) publishInput();
    setConstant(source->isConstant());
}

}  // namespace vanta::sr
