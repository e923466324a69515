#include "dsp/filter/analog_filter_prototype.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "foundation/numbers.hpp"

namespace vanta {

namespace {

using Section = AnalogFilterPrototype::BiquadPrototype;

constexpr double kButterworthQ = std::numbers::sqrt2 / 2.0;
/// Of a section's middle coefficient: the sharpest resonance.
constexpr double kLeastDamping = 0.05 * kButterworthQ;

bool vanishes(double coefficient) {
    return std::abs(coefficient) <= static_cast<double>(kEqualWithin);
}

/// Poles on the unit circle, the zeros of a shelf on one of radius `zeroRadius`; 0 stands for zeros at
/// infinity.
Section butterworthSection(int index, int order, double zeroRadius) {
    Section section;
    if (2 * index + 1 == order) {
        section.a1 = 1.0;
        if (zeroRadius > 0.0) {
            section.b1 = 1.0;
            section.b0 = zeroRadius;
        }
        return section;
    }
    const double angle = (2 * index + 1) * std::numbers::pi / (2 * order);
    section.a2 = 1.0;
    section.a1 = 2.0 * std::sin(angle);
    if (zeroRadius > 0.0) {
        section.b2 = 1.0;
        section.b1 = zeroRadius * section.a1;
        section.b0 = zeroRadius * zeroRadius;
    }
    return section;
}

void sharpen(Section& section, double q) {
    const double damping = kButterworthQ / q;
    section.a1 = std::max(section.a1 * damping, kLeastDamping);
    if (section.b1 != 0.0) section.b1 = std::max(section.b1 * damping, kLeastDamping);
}

}  // namespace

double AnalogFilterPrototypeBase::squaredMagnitude(double frequency) const {
    return std::norm(response(frequency));
}

void AnalogFilterPrototypeBase::squaredMagnitudes(std::span<const double> frequencies,
                                                  std::span<double> result) const {
    std::transform(frequencies.begin(), frequencies.end(), result.begin(),
                   [this](double frequency) { return squaredMagnitude(frequency); });
}

bool AnalogFilterPrototype::BiquadPrototype::firstOrder() const {
    return vanishes(b2) && vanishes(a2);
}

void AnalogFilterPrototype::BiquadPrototype::invertFrequency() {
    if (firstOrder()) {
        std::swap(b1, b0);
        std::swap(a1, a0);
    } else {
        std::swap(b2, b0);
        std::swap(a2, a0);
    }
}

std::complex<double> AnalogFilterPrototype::BiquadPrototype::response(double frequency) const {
    const std::complex<double> s(0.0, scaled(frequency));
    return ((b2 * s + b1) * s + b0) / ((a2 * s + a1) * s + a0);
}

void AnalogFilterPrototype::design(int shape, int order, double q, double gain) {
    sectionCount_ = 0;
    if (!supports(shape)) return;
    const double zeroRadius = usesGain(shape) ? std::pow(gain, 1.0 / order) : 0.0;
    sectionCount_ = static_cast<std::size_t>((order + 1) / 2);
    for (std::size_t i = 0; i < sectionCount_; ++i) {
        sections_[i] = butterworthSection(static_cast<int>(i), order, zeroRadius);
    }
    if (!sections_[0].firstOrder()) sharpen(sections_[0], q);
    if (shape == LowPass) return;
    for (std::size_t i = 0; i < sectionCount_; ++i) sections_[i].invertFrequency();
}

std::complex<double> AnalogFilterPrototype::response(double frequency) const {
    std::complex<double> product(1.0, 0.0);
    for (const BiquadPrototype& section : sections()) product *= section.response(scaled(frequency));
    return product;
}

}  // namespace vanta
