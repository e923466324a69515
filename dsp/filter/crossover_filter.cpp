#include "dsp/filter/crossover_filter.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vanta {

namespace {

int orderOf(int slope) {
    switch (slope) {
        case CrossoverFilter::Order1:
            return 1;
        case CrossoverFilter::Order2:
            return 2;
        case CrossoverFilter::Order4:
            return 4;
        case CrossoverFilter::Order6:
            return 6;
        default:
            return 8;
    }
}

BiquadCoefficients secondOrder(int response, double k, double q) {
    const double c = response == CrossoverFilter::HighPass ? k : 1.0 / k;
    const double d = 1.0 / (1.0 + c / q + c * c);
    const double p = (1.0 - c / q + c * c) * d;
    const double r = 2.0 * (1.0 - c * c) * d;
    switch (response) {
        case CrossoverFilter::LowPass:
            return {d, 2.0 * d, d, r, p};
        case CrossoverFilter::HighPass:
            return {d, -2.0 * d, d, -r, p};
        default:
            return {p, r, 1.0, r, p};
    }
}

BiquadCoefficients firstOrder(int response, double k) {
    const double e = 1.0 / (1.0 + k);
    const double h = (k - 1.0) * e;
    switch (response) {
        case CrossoverFilter::LowPass:
            return {k * e, k * e, 0.0, h, 0.0};
        case CrossoverFilter::HighPass:
            return {e, -e, 0.0, h, 0.0};
        default:
            return {h, 1.0, 0.0, h, 0.0};
    }
}

void invert(BiquadCoefficients& section) {
    section.b0 = -section.b0;
    section.b1 = -section.b1;
    section.b2 = -section.b2;
}

}  // namespace

CrossoverFilter::CrossoverFilter(wave::Environment& owner)
    : TunedFilter(owner, kMaxSections, {&frequency}),
      frequency(owner, 10.0f, 0.0f, 15.0f),
      response(this, LowPass),
      slope(this, Order4) {}

bool CrossoverFilter::takeKind() {
    if (response == responseInUse_ && slope == slopeInUse_) return false;
    responseInUse_ = response;
    slopeInUse_ = slope;
    const int order = orderOf(slopeInUse_);
    doubled_ = order % 2 == 0;
    int half = doubled_ ? order / 2 : order;
    inverted_ = responseInUse_ == HighPass && half % 2 != 0 && order != 1;
    if (responseInUse_ == AllPass) {
        if (!doubled_) half /= 2;
        doubled_ = false;
    }
    secondOrderSections_ = half / 2;
    firstOrderSection_ = half % 2 != 0;
    for (int i = 0; i < secondOrderSections_; ++i) {
        const double fraction = static_cast<double>(2 * i + 1) / (2 * half);
        q_[static_cast<std::size_t>(i)] = 0.5 / std::cos(std::numbers::pi * (0.5 - fraction));
    }
    return true;
}

int CrossoverFilter::sectionsInUse() const {
    const int sections = secondOrderSections_ + (firstOrderSection_ ? 1 : 0);
    return std::max(doubled_ ? 2 * sections : sections, 1);
}

float CrossoverFilter::design(const Values& values, std::span<BiquadCoefficients> sections) {
    const double k = bilinearScale(frequencyFromControl(static_cast<double>(values[kFrequency])),
                                   static_cast<double>(environment().sampleRate()));
    std::size_t count = 0;
    for (; count < static_cast<std::size_t>(secondOrderSections_); ++count) {
        sections[count] = secondOrder(responseInUse_, k, q_[count]);
    }
    if (firstOrderSection_) sections[count++] = firstOrder(responseInUse_, k);
    if (count == 0) {
        sections[0] = BiquadCoefficients();
        return 1.0f;
    }
    if (doubled_) {
        std::copy_n(sections.begin(), count, sections.begin() + static_cast<std::ptrdiff_t>(count));
        count *= 2;
    }
    if (inverted_) invert(sections[count - 1]);
    return 1.0f;
}

}  // namespace vanta
