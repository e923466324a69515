#pragma once

#include <cmath>
#include <numbers>

namespace vanta {

/// Kaiser window at -1 to 1, 1 in its middle (Kaiser 1974); 0 outside.
inline double kaiserWindow(double x, double beta) {
    if (x <= -1 || x >= 1) return 0;
    const auto bessel = [](double argument) {
        double sum = 1, term = 1;
        for (int k = 1; term > 1e-17 * sum; ++k) {
            term *= (argument / (2 * k)) * (argument / (2 * k));
            sum += term;
        }
        return sum;
    };
    return bessel(beta * std::sqrt(1 - x * x)) / bessel(beta);
}

/// Low-pass kernel at `x` samples from its centre: passes up to `cutoff` (of the sample rate, up to 0.5),
/// reaches `halfWidth` samples to either side, gain 1.
inline double windowedSinc(double x, double cutoff, double halfWidth, double beta) {
    const double angle = 2 * std::numbers::pi * cutoff * x;
    const double sinc = angle == 0 ? 1 : std::sin(angle) / angle;
    return 2 * cutoff * sinc * kaiserWindow(x / halfWidth, beta);
}

}  // namespace vanta
