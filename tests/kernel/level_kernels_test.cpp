#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "kernel/follower.hpp"
#include "kernel/level_math.hpp"
#include "tests/kernel/twin.hpp"

namespace vanta::test {
namespace {

TEST(LevelMath, ConvertsBetweenAmplitudeAndDecibels) {
    // A level has the resolution of its logarithm's two parts, of which the larger is near the level itself;
    // the chords of the table lie 3e-8 below the curve.
    expectTwin(amplitudes(), kernel::decibelsFromAmplitude, levelDb, units(2, 6.0));
    const auto reduced = [](double x) { return -levelDb(static_cast<double>(1.0f - static_cast<float>(x))); };
    expectTwin(amplitudes(), kernel::decibelsFromReduction, reduced, units(3));
    // The argument of an exponential is rounded: x ln(10)/20 units come on top.
    const auto decibels = uniform(-200.0f, 100.0f, 2);
    expectTwin(decibels, kernel::amplitudeFromDecibels, amplitude, units(25));
    const auto reduction = [](double x) { return -std::expm1(-x * std::numbers::ln10 / 20); };
    expectTwin(decibels, kernel::reductionFromDecibels, reduction, units(1));
    // Tiny gain changes keep their digits.
    expectTwin(uniform(0.0f, 1e-4f, 3), kernel::reductionFromDecibels, reduction, units(8, 1e-9));
}

TEST(LevelMath, LogarithmIsContinuousOverEveryMantissa) {
    // A walk over the mantissas of two octaves: any fault of the table or of the exponent's part is a step.
    Signal in;
    for (std::uint32_t bits = 0x3F000000; bits < 0x40000000; bits += 509)
        in.push_back(std::bit_cast<float>(bits));
    Signal out(in.size());
    kernel::decibelsFromAmplitude(in.data(), out.data(), in.size());
    for (std::size_t i = 0; i < in.size(); ++i) ASSERT_NEAR(out[i], levelDb(in[i]), 1.5e-6) << in[i];
}

TEST(FollowerCoefficients, AgreeWithTheirDefinitionAtAnyTime) {
    Signal seconds = uniform(-7.0f, 1.7f, 6);
    for (float& x : seconds) x = std::pow(10.0f, x);
    for (std::size_t i = 0; i < seconds.size(); i += 29) seconds[i] = i % 2 ? 0.0f : -1.0f;
    expectTwin(
        seconds,
        [](const float* in, float* out, std::size_t n) { kernel::followerCoefficients(in, 48e3f, out, n); },
        [](double s) { return s <= 0 ? 1.0 : -std::expm1(-std::log(10.0) / (s * 48000)); }, units(4));
}

}  // namespace
}  // namespace vanta::test
