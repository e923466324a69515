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
    : Filter(owner), enabled(nullptr, true), warmUpSamples(nullptr, 0), style_(style), interpolator_(style) {
    makeResettable();
    prepare();
}

void TruePeakExposer::prepare() {
    style_.updateFactor();
    workBlock_.resize(environment().maxBlockSize());
    interpolator_.update();
    history_.assign(static_cast<std::size_t>(style_.reach()), 0.0f);
}

void TruePeakExposer::reset() {
    interpolator_.reset();
    std::fill(history_.begin(), history_.end(), 0.0f);
    warmUpLeft_ = 0;
    silence_.restart();
}

void TruePeakExposer::noteBlock(int samples) {
    if (stream_.follows(*this, samples)) return;
    reset();
    if (warmUpSamples > 0) warmUpLeft_ = warmUpSamples + style_.reach();
}

void TruePeakExposer::remember(const float* in, int samples) {
    const int kept = std::max(static_cast<int>(history_.size()) - samples, 0);
    std::copy(history_.end() - kept, history_.end(), history_.begin());
    const auto fresh = static_cast<int>(history_.size()) - kept;
    std::copy_n(in + samples - fresh, fresh, history_.begin() + kept);
}

// Filters that started empty in the middle of a signal would take it for an edge, and show a peak there.
void TruePeakExposer::catchUp() {
    interpolator_.reset();
    const auto size = static_cast<int>(history_.size());
    for (int done = 0; done < size;) {
        const int count = std::min(size - done, environment().maxBlockSize());
        interpolator_.convertToPeaks(history_.data() + done, workBlock_.data(), count);
        done += count;
    }
}

// Neither the filters nor the history hold anything but silence.
bool TruePeakExposer::outlastedBySilence(int samples) {
    const int memory = std::max(interpolator_.memory(), static_cast<int>(history_.size()));
    if (running_ == enabled && warmUpLeft_ == 0) return silence_.outlasts(*source, samples, memory);
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
    const int muted = std::min(warmUpLeft_, samples);
    if (enabled) {
        if (!running_) catchUp();
        interpolator_.convertToPeaks(in.data(), out->data(), samples);
    } else if (muted > 0) {
        std::copy_n(in.data(), samples, out->data());
    } else {
        publishInput();
    }
    std::fill_n(out->data(), muted, 0.0f);
    running_ = enabled;
    remember(in.data(), samples);
    warmUpLeft_ -= muted;
}

}  // namespace vanta::sr
