#include "dsp/sr/true_peak_exposer.hpp"

#include <algorithm>

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
      warmUpSamples(nullptr, 0),
      detail(nullptr, Whole),
      style_(style),
      finder_(style) {
    makeResettable();
    prepare();
}

void TruePeakExposer::prepare() {
    style_.updateFactor();
    finder_.update();
    front_ = std::max(finder_.reach(), style_.reach());
    line_.resize(front_ + environment().maxBlockSize() + PeakFinder::kReadBeyond);
}

void TruePeakExposer::reset() {
    line_.clear();
    warmUpLeft_ = 0;
    silence_.restart();
}

void TruePeakExposer::noteBlock(int samples) {
    if (stream_.follows(*this, samples)) return;
    reset();
    if (warmUpSamples > 0) warmUpLeft_ = warmUpSamples + style_.reach();
}

// Nothing that is remembered is anything but silence.
bool TruePeakExposer::outlastedBySilence(int samples) {
    if (warmUpLeft_ == 0) return silence_.outlasts(*source, samples, front_);
    silence_.restart();
    return false;
}

void TruePeakExposer::process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                              int) {
    noteBlock(samples);
    if (outlastedBySilence(samples)) {
        publishSilence();
        return;
    }
    std::copy_n(in.data(), samples, newest());
    const int muted = std::min(warmUpLeft_, samples);
    if (muted > 0) {
        std::copy_n(in.data(), samples, out->data());
        if (enabled) finder_.find(newest(), out->data(), samples);
        std::fill_n(out->data(), muted, 0.0f);
        warmUpLeft_ -= muted;
    } else if (enabled) {
        expose(out->data(), samples);
    } else {
        publishInput();
    }
    std::copy_n(newest() + samples - front_, front_, line_.data());
}

void TruePeakExposer::expose(float* out, int samples) {
    const float silent = silentUpTo(samples);
    if (detail == Highest) {
        if (!finder_.find(newest(), out, samples, PeakFinder::Highest, silent)) publishSilence();
    } else if (silent > 0.0f) {
        if (!finder_.find(newest(), out, samples, PeakFinder::Above, silent)) publishSilence();
    } else {
        finder_.find(newest(), out, samples);
    }
}

/// The floor, where it stands still, else 0.
float TruePeakExposer::silentUpTo(int samples) const {
    if (!floor) return 0.0f;
    const float* values = floor->pullData(samples);
    // The reader may come to it by another way, which rounds differently.
    constexpr float kMargin = 1e-5f;
    return floor->isConstant() ? values[0] * (1.0f - kMargin) : 0.0f;
}

}  // namespace vanta::sr
