#include "tools/level_table/levels.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <stdexcept>
#include <vector>

#include "foundation/numbers.hpp"

namespace vanta {
namespace {

/// A sine of `frequency` (of the sample rate) that fades in and out, so that its ends ring nowhere.
std::vector<float> tone(double frequency, double phase, double amplitude = 1) {
    constexpr std::size_t kLength = 8000;
    std::vector<float> out(kLength);
    for (std::size_t i = 0; i < kLength; ++i) {
        const double at = static_cast<double>(i);
        const double edge = std::fmin(1.0, std::fmin(at, kLength - at) / 1500);
        const double fade = 0.5 - 0.5 * std::cos(std::numbers::pi * edge);
        out[i] =
            static_cast<float>(fade * amplitude * std::sin(2 * std::numbers::pi * frequency * at + phase));
    }
    return out;
}

TEST(Levels, TruePeakFindsTheTopBetweenSamples) {
    for (const double frequency : {0.001, 0.083, 0.125, 0.2137, 0.25, 1.0 / 3, 0.41, 0.45})
        for (const double phase : {0.0, 0.4, std::numbers::pi / 4, 1.1})
            EXPECT_NEAR(dbFromGain(truePeak(tone(frequency, phase, 0.7))), dbFromGain(0.7), 0.01)
                << "frequency " << frequency << ", phase " << phase;
}

TEST(Levels, AQuarterRateToneHidesThreeDecibels) {
    const auto samples = tone(0.25, std::numbers::pi / 4);
    const std::vector<std::span<const float>> channels{samples};
    const Levels levels = measureLevels(channels);
    EXPECT_NEAR(levels.samplePeakDb, -3.01, 0.01);
    EXPECT_NEAR(levels.truePeakDb, 0, 0.01);
}

TEST(Levels, AlternatingStepPassesFullScaleFarly) {
    // Full-scale samples whose signs break the alternation once: the wave overshoots at the break.
    std::vector<float> samples(400);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = (i % 2 == 0) == (i < 200) ? 1.0f : -1.0f;
    // Two equal neighbours amid the alternation, summed straight from the sinc series at their middle.
    double expected = 0;
    for (int k = 0; k < 64; ++k) {
        const double x = k + 0.5;
        expected += 2 * std::abs(std::sin(std::numbers::pi * x) / (std::numbers::pi * x)) *
                    std::cyl_bessel_i(0, 9 * std::sqrt(1 - x * x / 4096)) / std::cyl_bessel_i(0, 9.0);
    }
    EXPECT_NEAR(truePeak(samples), expected, 0.001);
    EXPECT_GT(expected, 2) << "more than 6 dB over";
}

TEST(Levels, AnEdgeAtEitherEndIsSeen) {
    // Cut off, a constant rings: the wave passes it near its first and its last sample.
    const std::vector<float> block(300, 0.5f);
    std::vector<float> padded(700, 0.0f);
    std::fill(padded.begin() + 200, padded.begin() + 500, 0.5f);
    EXPECT_GT(truePeak(block), 0.53);
    EXPECT_NEAR(truePeak(block), truePeak(padded), 1e-6);
}

TEST(Levels, RmsAndCrestCountAllChannels) {
    std::vector<float> square(1000);
    for (std::size_t i = 0; i < square.size(); ++i) square[i] = i % 100 < 50 ? 1.0f : -1.0f;
    const std::vector<float> silence(1000, 0.0f);
    const std::vector<std::span<const float>> one{square};
    const std::vector<std::span<const float>> two{silence, square};
    EXPECT_NEAR(measureLevels(one).rmsDb, 0, 1e-6);
    EXPECT_NEAR(measureLevels(one).crestDb(), 0, 1e-6);
    EXPECT_NEAR(measureLevels(two).rmsDb, -3.0103, 1e-3);
    EXPECT_NEAR(measureLevels(two).samplePeakDb, 0, 1e-6);
}

TEST(Levels, SilenceAndNothing) {
    const std::vector<float> silence(100, 0.0f);
    const std::vector<std::span<const float>> channels{silence, {}};
    const Levels levels = measureLevels(channels);
    EXPECT_EQ(levels.samplePeakDb, kSilenceDb);
    EXPECT_EQ(levels.truePeakDb, kSilenceDb);
    EXPECT_EQ(levels.rmsDb, kSilenceDb);
    EXPECT_THROW(measureLevels({}), std::invalid_argument);
}

}  // namespace
}  // namespace vanta
