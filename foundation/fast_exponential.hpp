#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

#include "foundation/realtime.hpp"

namespace vanta {

/// exp(x) of one value without a call into the mathematics library: a power of two from a table of 1024 steps
/// an octave, times a parabola for the rest. Within 1e-11 of the value.
class FastExponential {
public:
    FastExponential() {
        for (int i = 0; i < kSteps; ++i) powers_[static_cast<std::size_t>(i)] = std::exp2(i / double{kSteps});
    }

    /// exp(x), x limited to -88 to 88.
    VANTA_REALTIME double operator()(double x) const { return exponential(std::clamp(x, -88.0, 88.0)); }

    /// exp(x) for x of at most 0; below -88 it counts as that.
    VANTA_REALTIME double ofNegative(double x) const { return exponential(std::max(x, -88.0)); }

    /// 1 - exp(x) for x of at most 0, accurate to seven digits also where exp(x) is next to 1.
    VANTA_REALTIME double complement(double x) const {
        // Most time constants are many samples long: a short way that waits for no table.
        if (x > -0.0625) {
            const double square = x * x;
            return x *
                   ((-1.0 - x * (1.0 / 2)) - square * ((1.0 / 6 + x * (1.0 / 24)) + square * (1.0 / 120)));
        }
        const Split split = splitArgument(std::max(x, -88.0));
        return (1.0 - split.power) - split.power * split.rest;
    }

private:
    static constexpr int kSteps = 1024;
    static constexpr double kStepsPerUnit = 1477.3197218702985;     // 1024 / ln 2
    static constexpr double kUnitsPerStep = 0.0006769015435155716;  // ln 2 / 1024

    struct Split {
        double power;  ///< the nearest step of 2
        double rest;   ///< what the exponential of the remainder has beyond 1
    };

    double exponential(double x) const {
        const Split split = splitArgument(x);
        return split.power + split.power * split.rest;
    }

    Split splitArgument(double x) const {
        const auto step = static_cast<int>(std::lrint(x * kStepsPerUnit));
        const double r = x - step * kUnitsPerStep;
        const auto exponent = static_cast<std::uint64_t>((step >> 10) + 1023) << 52;
        const double octave = std::bit_cast<double>(exponent);
        return {octave * powers_[static_cast<std::size_t>(step & (kSteps - 1))], r + 0.5 * r * r};
    }

    std::array<double, kSteps> powers_;
};

/// Filled before `main`, so that nothing has to ask whether it is.
inline const FastExponential kFastExponential;

}  // namespace vanta
