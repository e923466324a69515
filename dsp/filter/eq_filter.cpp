#include "dsp/filter/eq_filter.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "foundation/numbers.hpp"

namespace vanta {

namespace {

constexpr std::array<int, 9> kOrders = {1, 2, 3, 4, 5, 6, 8, 12, 16};
constexpr int kUnsetShape = 7;

/// Below this magnitude a shelf fades into the dry signal instead of running with a curve that is almost
/// flat.
constexpr float kFadeBelowDb = 0.05f;
constexpr float kLeastGainDb = 0.01f;

}  // namespace

EQFilter::EQFilter(wave::Environment& owner)
    : TunedFilter(owner, AnalogFilterPrototype::kMaxSections, {&frequency, &gain, &q}),
      frequency(owner, 10.0f, 0.0f, 15.0f),
      gain(owner, 0.0f, -30.0f, 30.0f),
      q(owner, 1.0f, 0.025f, 40.0f),
      coefficientCalculation(this, 0),
      shape(this, kUnsetShape),
      slope(this, Order2) {}

bool EQFilter::takeKind() {
    if (shape == shapeInUse_ && slope == slopeInUse_) return false;
    shapeInUse_ = shape;
    slopeInUse_ = slope;
    order_ = kOrders[static_cast<std::size_t>(std::clamp<int>(slopeInUse_, Order1, Order16))];
    sectionCount_ = AnalogFilterPrototype::supports(shapeInUse_) ? (order_ + 1) / 2 : 1;
    return true;
}

float EQFilter::design(const Values& values, std::span<BiquadCoefficients> sections) {
    const auto [octaves, gainDb, sharpness] = values;
    const float magnitudeDb = std::abs(gainDb);
    const bool fades = AnalogFilterPrototype::usesGain(shapeInUse_) && magnitudeDb < kFadeBelowDb;
    const float designDb = fades ? std::copysign(std::max(magnitudeDb, kLeastGainDb), gainDb) : gainDb;
    prototype_.design(shapeInUse_, order_, static_cast<double>(sharpness) * std::numbers::sqrt2 / 2.0,
                      gainFromDb(static_cast<double>(designDb)));
    const double k = bilinearScale(frequencyFromControl(static_cast<double>(octaves)),
                                   static_cast<double>(environment().sampleRate()));
    sections[0] = BiquadCoefficients();
    std::transform(prototype_.sections().begin(), prototype_.sections().end(), sections.begin(),
                   [k](const auto& section) { return bilinearTransform(section, k); });
    return fades ? magnitudeDb * 20.0f : 1.0f;
}

}  // namespace vanta
