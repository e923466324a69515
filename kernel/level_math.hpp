#pragma once

#include <algorithm>
#include <cmath>

#include "kernel/kernel.hpp"

/// Conversions between amplitude and dB, and curves of a control signal. Results are finite for every finite
/// input. Buffers may be equal but must not overlap otherwise; any length and alignment.
namespace vanta::kernel {

/// dB of one natural logarithmic unit of amplitude, and its inverse: 20 / ln(10) and ln(10) / 20.
inline constexpr float kLogToDb = 8.68588924f;
inline constexpr float kDbToLogSingle = 0.115129255f;
inline constexpr double kDbToLogDouble = 0.11512925465;

inline constexpr float kLargestFloat = 3.4028234e38f;

/// The largest exponent whose power is a finite float; every exponential here limits its argument to it.
inline constexpr double kExponentLimit = 88.3762589;

/// Bends beyond this are all the same; the limit keeps an infinite bend from meeting a level of 0.
inline constexpr double kLargestBend = 1e30;

/// e to the power x with the argument limited to +-kExponentLimit.
inline double limitedExp(double x) {
    return std::exp(std::clamp(x, -kExponentLimit, kExponentLimit));
}

/// out = 20 log10 |a|, never below -180, by a table of logarithms: within 2e-6 dB of the level for levels
/// up to 20 dB, and within the resolution of a float beyond.
extern const UnaryKernel decibelsFromAmplitude;
/// out = 10^(a / 20)
extern const UnaryKernel amplitudeFromDecibels;
/// Gain change: out = -20 log10 |1 - a|, never above 180
extern const UnaryKernel decibelsFromReduction;
/// Gain change: out = 1 - 10^(-a / 20), in double precision, so that a tiny change keeps its digits
extern const UnaryKernel reductionFromDecibels;

/// out = square root of a, 0 for a negative sample
extern const UnaryKernel squareRoot;

/// out = (e^(k a) - 1) / (e^k - 1), k = 15 b + 0.01, with a strength b
extern const BinaryKernel exponentialCurve;
/// out = a^(15 b + 1), with a strength b; a negative a counts as 0
extern const BinaryKernel powerCurve;
/// out = a^5.5; a negative a counts as 0
extern const UnaryKernel powerFiveAndHalf;

}  // namespace vanta::kernel
