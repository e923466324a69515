#pragma once

#include <cmath>
#include <complex>
#include <numbers>
#include <span>

namespace vanta::test {

/// The Fourier transform of a signal at one frequency, in cycles per sample.
inline std::complex<double> transformAt(std::span<const float> signal, double frequency) {
    std::complex<double> sum;
    for (std::size_t n = 0; n < signal.size(); ++n) {
        sum += static_cast<double>(signal[n]) *
               std::polar(1.0, -2.0 * std::numbers::pi * frequency * static_cast<double>(n));
    }
    return sum;
}

/// The amplitude of a sine of that frequency in a signal, seen through a window of Blackman and Harris, whose
/// side lobes lie at -92 dB.
inline double amplitudeAt(std::span<const float> signal, double frequency) {
    std::complex<double> sum;
    double weight = 0.0;
    for (std::size_t n = 0; n < signal.size(); ++n) {
        const double angle =
            2.0 * std::numbers::pi * static_cast<double>(n) / static_cast<double>(signal.size());
        const double window = 0.35875 - 0.48829 * std::cos(angle) + 0.14128 * std::cos(2.0 * angle) -
                              0.01168 * std::cos(3.0 * angle);
        weight += window;
        sum += window * static_cast<double>(signal[n]) *
               std::polar(1.0, -2.0 * std::numbers::pi * frequency * static_cast<double>(n));
    }
    return 2.0 * std::abs(sum) / weight;
}

}  // namespace vanta::test
