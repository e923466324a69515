#include "dsp/filter/biquad_processor.hpp"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace vanta {

BiquadProcessor::BiquadProcessor(wave::Environment& owner, int maxSections, int granularity)
    : Component(owner),
      resetMode(nullptr, ClearState),
      maxSections_(maxSections),
      granularity_(granularity),
      sections_(static_cast<std::size_t>(maxSections)) {
    maxBlockSizeChanged();
    owner.addBlockListener(this);
}

BiquadProcessor::~BiquadProcessor() {
    environment().removeBlockListener(this);
}

void BiquadProcessor::maxBlockSizeChanged() {
    // One more than changes fit in a block: the first run starts with the coefficients of the last block.
    capacity_ = static_cast<std::size_t>(environment().maxBlockSize() / granularity_) + 2;
    counts_.reserve(capacity_);
    amounts_.reserve(capacity_);
    coefficients_.resize(capacity_ * sections_.size());
}

void BiquadProcessor::setSectionCount(int count) {
    sectionCount_ = std::clamp(count, 1, maxSections_);
    counts_.clear();
    amounts_.clear();
}

BiquadCoefficients* BiquadProcessor::runCoefficients(std::size_t run) {
    return coefficients_.data() + run * sections_.size();
}

void BiquadProcessor::queue(int samples, std::span<const BiquadCoefficients> sections, float amount) {
    if (samples < 1) return;
    assert(static_cast<int>(sections.size()) == sectionCount_);
    queueAmount(samples, amount);
    // The run left over from the last block has no samples of its own.
    if (counts_.size() == 1 && counts_[0] == 0 &&
        !std::equal(sections.begin(), sections.end(), runCoefficients(0))) {
        counts_.clear();
    }
    const bool same =
        !counts_.empty() && std::equal(sections.begin(), sections.end(), runCoefficients(counts_.size() - 1));
    if (same || counts_.size() == capacity_) {
        counts_.back() += samples;
        return;
    }
    std::copy(sections.begin(), sections.end(), runCoefficients(counts_.size()));
    counts_.push_back(samples);
}

void BiquadProcessor::queueAmount(int samples, float amount) {
    const bool same = !amounts_.empty() && amounts_.back().amount == amount;
    if (same || amounts_.size() == capacity_) {
        amounts_.back().count += samples;
    } else {
        amounts_.push_back({samples, amount});
    }
}

bool BiquadProcessor::audible() const {
    return !off() && !(amounts_.size() == 1 && amounts_[0].amount == 0.0f);
}

bool BiquadProcessor::process(const float* in, float* out, int samples) {
    const bool heard = audible();
    if (heard) {
        for (int section = 0; section < sectionCount_; ++section)
            runSection(section, section ? out : in, out);
        pending_ = Pending::None;
        if (ranAway()) startOver(out, samples);
        blend(in, out);
    } else {
        restart();
        const int faded = std::min(fadeLeft_, samples);
        mix_ += mixStep_ * static_cast<float>(faded);
        fadeLeft_ -= faded;
        if (fadeLeft_ == 0) mix_ = mixTarget_;
    }
    finishBlock();
    return heard;
}

void BiquadProcessor::initialise(BiquadSection& section, float first) const {
    const bool preload = pending_ == Pending::ByMode && resetMode == PreloadInput;
    section.start(preload ? static_cast<double>(first) : 0.0);
}

void BiquadProcessor::runSection(int index, const float* in, float* out) {
    BiquadSection& section = sections_[static_cast<std::size_t>(index)];
    if (pending_ != Pending::None) initialise(section, in[0]);
    for (std::size_t run = 0; run < counts_.size(); ++run) {
        if (counts_[run] == 0) continue;
        section.run(runCoefficients(run)[index], in, out, counts_[run]);
        in += counts_[run];
        out += counts_[run];
    }
}

bool BiquadProcessor::silent() const {
    return pending_ == Pending::None && fadeLeft_ == 0 &&
           std::all_of(sections_.begin(), sections_.begin() + sectionCount_,
                       [](const BiquadSection& section) { return section.isSilent(); });
}

bool BiquadProcessor::ranAway() const {
    return std::any_of(sections_.begin(), sections_.begin() + sectionCount_,
                       [](const BiquadSection& section) { return section.ranAway(); });
}

void BiquadProcessor::startOver(float* out, int samples) {
    pending_ = Pending::Clear;
    std::replace_if(
        out, out + samples, [](float y) { return !std::isfinite(y); }, 0.0f);
}

void BiquadProcessor::blend(const float* dry, float* out) {
    for (const AmountRun& run : amounts_) {
        if (fadeLeft_ > 0 || mix_ != 1.0f || run.amount != 1.0f) blendRun(run, dry, out);
        dry += run.count;
        out += run.count;
    }
}

void BiquadProcessor::blendRun(const AmountRun& run, const float* dry, float* out) {
    for (int i = 0; i < run.count; ++i) {
        const double wet = static_cast<double>(mix_) * static_cast<double>(run.amount);
        out[i] = static_cast<float>(static_cast<double>(dry[i]) +
                                    (static_cast<double>(out[i]) - static_cast<double>(dry[i])) * wet);
        if (fadeLeft_ == 0) continue;
        mix_ += mixStep_;
        if (--fadeLeft_ == 0) mix_ = mixTarget_;
    }
}

// The next block starts from the coefficients that this one ended with.
void BiquadProcessor::finishBlock() {
    amounts_.clear();
    if (counts_.empty()) return;
    if (counts_.size() > 1) {
        std::copy_n(runCoefficients(counts_.size() - 1), sectionCount_, runCoefficients(0));
    }
    counts_.resize(1);
    counts_[0] = 0;
}

void BiquadProcessor::reset() {
    pending_ = Pending::Clear;
    fadeLeft_ = 0;
    mix_ = mixTarget_;
}

void BiquadProcessor::fadeTo(float target, int samples) {
    mixTarget_ = target;
    fadeLeft_ = samples;
    if (samples > 0) {
        mixStep_ = (target - mix_) / static_cast<float>(samples);
    } else {
        mix_ = target;
    }
}

}  // namespace vanta
