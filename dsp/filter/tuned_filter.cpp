#include "dsp/filter/tuned_filter.hpp"

#include <algorithm>
#include <cmath>

#include "foundation/numbers.hpp"

namespace vanta {

namespace {

constexpr int kSlowStep = 32;
/// Octaves within one step of the granularity.
constexpr float kFastSweep = 0.1f;
/// No frequency control gets there.
constexpr float kNoFrequency = -1.0f;

}  // namespace

TunedFilter::TunedFilter(wave::Environment& owner, int maxSections,
                         std::initializer_list<wave::FloatParameterBus*> controls)
    : BiquadFilter(owner, maxSections),
      controlCount_(static_cast<int>(controls.size())),
      sections_(static_cast<std::size_t>(maxSections)) {
    std::copy(controls.begin(), controls.end(), controls_.begin());
    lastValues_[kFrequency] = kNoFrequency;
}

void TunedFilter::reset() {
    BiquadFilter::reset();
    lastValues_[kFrequency] = kNoFrequency;
}

TunedFilter::Values TunedFilter::valuesAt(int sample) const {
    Values values{};
    for (std::size_t i = 0; i < static_cast<std::size_t>(controlCount_); ++i) values[i] = blocks_[i][sample];
    return values;
}

bool TunedFilter::differs(const Values& values) const {
    return !std::equal(values.begin(), values.end(), lastValues_.begin(), nearlyEqual);
}

void TunedFilter::updateCoefficients(int samples, BiquadProcessor& target) {
    bool constant = true;
    for (std::size_t i = 0; i < static_cast<std::size_t>(controlCount_); ++i) {
        blocks_[i] = controls_[i]->pullData(samples);
        constant = constant && controls_[i]->isConstant();
    }
    if (takeKind()) {
        lastValues_[kFrequency] = kNoFrequency;
        target.restart();
        target.setSectionCount(sectionsInUse());
    }
    if (!constant) {
        follow(samples, target);
        return;
    }
    if (const Values values = valuesAt(0); differs(values)) redesign(values);
    queue(samples, target);
}

void TunedFilter::follow(int samples, BiquadProcessor& target) {
    int queued = 0;
    for (int i = 0; i < samples; i += kGranularity) {
        const Values values = valuesAt(i);
        const bool fast = std::abs(values[kFrequency] - lastValues_[kFrequency]) > kFastSweep;
        if (!fast && (i % kSlowStep != 0 || !differs(values))) continue;
        queue(i - queued, target);
        queued = i;
        redesign(values);
    }
    if (const Values values = valuesAt(samples - 1); differs(values)) redesign(values);
    queue(samples - queued, target);
}

void TunedFilter::redesign(const Values& values) {
    lastValues_ = values;
    amount_ = design(values, sections_);
}

void TunedFilter::queue(int samples, BiquadProcessor& target) {
    target.queue(samples, std::span(sections_).first(static_cast<std::size_t>(sectionsInUse())), amount_);
}

}  // namespace vanta
