#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace vanta::song {

/// Converts between any two rates with a windowed sinc of 64 crossings a side: flat to 0.9 of the lower
/// Nyquist frequency, images and aliases below -95 dB. Sample 0 stays at time 0.
class RateConverter {
public:
    RateConverter(double fromHz, double toHz);

    /// The first `count` samples at the new rate; the input counts as 0 beyond its ends.
    std::vector<float> convert(std::span<const double> in, std::size_t count) const;

private:
    double dot(std::span<const double> in, std::ptrdiff_t first, std::size_t row) const;

    double ratio_;          ///< input samples for one output sample
    std::ptrdiff_t reach_;  ///< taps a side
    std::size_t taps_;
    std::vector<double> rows_;  ///< the kernel at kPhases + 1 positions between two input samples
};

}  // namespace vanta::song
