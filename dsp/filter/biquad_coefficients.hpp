#pragma once

#include "dsp/filter/analog_filter_prototype.hpp"

namespace vanta {

/// y = b0 x + b1 x1 + b2 x2 - a1 y1 - a2 y2. The default is a wire.
struct BiquadCoefficients {
    double b0 = 1.0, b1 = 0.0, b2 = 0.0;
    double a1 = 0.0, a2 = 0.0;

    bool operator==(const BiquadCoefficients&) const = default;
};

/// The scale of the bilinear transform that puts `frequency` Hz where the prototype has its cut-off.
/// Frequencies at and above the Nyquist frequency count as a little below it, so that the tangent stays
/// finite.
double bilinearScale(double frequency, double sampleRate);

/// The digital filter of an analog section, for the scale of `bilinearScale`.
BiquadCoefficients bilinearTransform(const AnalogFilterPrototype::BiquadPrototype& section, double k);

/// Hertz of a filter's frequency control, which is the logarithm to base 2; at least 1.
double frequencyFromControl(double octaves);

}  // namespace vanta
