#include "dsp/metering/k_filter.hpp"

#include <cmath>
#include <numbers>

namespace vanta {

namespace {

/// Coefficients change only at a reset. The base class has a constant of the plainer name.
constexpr int kWeightingGranularity = 16;
constexpr double kTwoPi = 2.0 * std::numbers::pi;

// Radians per second.
constexpr double kShelfFrequency = 10568.129007;
constexpr double kHighPassFrequency = 239.609261143;
constexpr double kShelfGain = 1.5848932;
constexpr double kHighPassQ = 0.50033;
/// Brings the high-pass to the gain that the weighting has at 1 kHz.
constexpr double kHighPassGain = 1.0045;

}  // namespace

KFilter::KFilter(wave::Environment& owner) : BiquadFilter(owner, 2, kWeightingGranularity) {
    processor.setSectionCount(2);
    prepare();
}

void KFilter::prepare() {
    const double rate = environment().sampleRate();
    const AnalogFilterPrototype::BiquadPrototype shelf(kShelfGain, std::sqrt(2.0 * kShelfGain), 1.0, 1.0,
                                                       std::numbers::sqrt2, 1.0);
    const AnalogFilterPrototype::BiquadPrototype highPass(kHighPassGain, 0.0, 0.0, 1.0, 1.0 / kHighPassQ,
                                                          1.0);
    sections_[0] = bilinearTransform(shelf, bilinearScale(kShelfFrequency / kTwoPi, rate));
    sections_[1] = bilinearTransform(highPass, bilinearScale(kHighPassFrequency / kTwoPi, rate));
}

}  // namespace vanta
