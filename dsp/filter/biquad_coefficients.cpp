#include "dsp/filter/biquad_coefficients.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vanta {

double bilinearScale(double frequency, double sampleRate) {
    const double radians = 2.0 * std::numbers::pi * frequency / sampleRate;
    return std::tan(std::min(radians, 3.13159275) / 2.0);
}

BiquadCoefficients bilinearTransform(const AnalogFilterPrototype::BiquadPrototype& section, double k) {
    const double b2 = section.b2, b1 = section.b1, b0 = section.b0;
    const double a2 = section.a2, a1 = section.a1, a0 = section.a0;
    if (section.firstOrder()) {
        const double d = 1.0 / (a1 + a0 * k);
        return {(b1 + b0 * k) * d, (b0 * k - b1) * d, 0.0, (a0 * k - a1) * d, 0.0};
    }
    const double k2 = k * k;
    const double d = 1.0 / (a2 + a1 * k + a0 * k2);
    return {(b0 * k2 + b2 + b1 * k) * d, 2.0 * (b0 * k2 - b2) * d, (b0 * k2 + b2 - b1 * k) * d,
            2.0 * (a0 * k2 - a2) * d, (a2 + a0 * k2 - a1 * k) * d};
}

double frequencyFromControl(double octaves) {
    return std::max(std::exp2(octaves), 1.0);
}

}  // namespace vanta
