#include "tests/support/signals.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <numbers>

namespace vanta::test {
namespace {

constexpr double kQuarter = std::numbers::pi / 4.0;

/// A tone without edges: it swells and fades over 2048 samples.
Signal faded(Signal signal) {
    constexpr std::size_t kFade = 2048;
    for (std::size_t i = 0; i < kFade; ++i) {
        const auto gain = static_cast<float>(0.5 - 0.5 * std::cos(std::numbers::pi * double(i) / kFade));
        signal[i] *= gain;
        signal[signal.size() - 1 - i] *= gain;
    }
    return signal;
}

TEST(TruePeak, ReadsTheAmplitudeOfATone) {
    for (const double frequency : {20.0, 997.0, 11025.0, 15000.0, 19997.0, 21000.0, 0.48 * 44100}) {
        for (const double phase : {0.0, kQuarter, 1.0}) {
            const Signal tone = faded(sine(frequency, 44100.0, 12000, 0.5, phase));
            EXPECT_NEAR(db(truePeak(tone)), db(0.5), 0.0005) << frequency << " Hz, phase " << phase;
        }
    }
}

TEST(TruePeak, SeesBetweenTheSamples) {
    // At a quarter of the rate the samples of this tone stand at 45 degrees: 3 dB below its peak.
    const Signal tone = sine(12000.0, 48000.0, 8000, 1.0, kQuarter);
    EXPECT_NEAR(peak(tone), std::sqrt(0.5), 1e-6);
    EXPECT_NEAR(truePeak(tone, 2000, 6000), 1.0, 2e-5);
    // The cut edges ring above that.
    EXPECT_GT(truePeak(tone), 1.005);
}

TEST(TruePeak, NeverReadsBelowTheSamplesAndHitsAnImpulse) {
    const Signal noise = whiteNoise(7, 3000);
    EXPECT_GT(truePeak(noise), peak(noise));
    EXPECT_NEAR(truePeak(impulse(1500, 700, 0.25)), 0.25, 1e-9);
    // The ideal interpolation of two neighbours of one size is 4/pi of them half way between.
    Signal pair = impulse(2000, 999);
    pair[1000] = 1.0f;
    EXPECT_NEAR(truePeak(pair), 4.0 / std::numbers::pi, 1e-5);
    EXPECT_EQ(truePeak(Signal{}), 0.0);
    EXPECT_NEAR(truePeak(Signal{0.5f}), 0.5, 1e-12);
}

TEST(Signals, AreReproducibleAndHaveTheirLevels) {
    EXPECT_EQ(pinkNoise(5, 100), pinkNoise(5, 100));
    EXPECT_NE(pinkNoise(5, 100), pinkNoise(6, 100));
    EXPECT_EQ(Random(0).next(), 0xE220A8397B1DCDAFu);  // the published first value of SplitMix64
    EXPECT_NEAR(rms(pinkNoise(1, 20000, 0.2)), 0.2, 1e-6);
    EXPECT_NEAR(rms(whiteNoise(1, 200000)), std::sqrt(1.0 / 3.0), 2e-3);
    EXPECT_NEAR(rms(sine(1000, 48000, 48000)), std::sqrt(0.5), 1e-6);
    EXPECT_NEAR(rms(square(100, 48000, 4800, 0.5)), 0.5, 1e-9);
    EXPECT_NEAR(peak(sweep(20, 20000, 48000, 48000, 0.7)), 0.7, 1e-3);
    const Signal burst = bursts(1000, 48000, 400, 100, 100);
    EXPECT_TRUE(std::equal(burst.begin(), burst.begin() + 200, burst.begin() + 200));
    EXPECT_EQ(peak(std::span(burst).subspan(100, 100)), 0.0);
    EXPECT_GT(peak(std::span(burst).first(100)), 0.99);
}

TEST(Signals, PinkNoiseFallsByThreeDbAnOctave) {
    // Power in a band around f, from projections on tones of many frequencies within it.
    const Signal noise = pinkNoise(11, 1 << 16);
    const auto bandPower = [&](double low) {
        double sum = 0.0;
        constexpr int kTones = 60;
        for (int k = 0; k < kTones; ++k) {
            const double step = 2.0 * std::numbers::pi * low * (1.0 + double(k) / kTones) / 44100.0;
            double re = 0.0;
            double im = 0.0;
            for (std::size_t i = 0; i < noise.size(); ++i) {
                re += noise[i] * std::cos(step * double(i));
                im += noise[i] * std::sin(step * double(i));
            }
            sum += re * re + im * im;
        }
        return 10.0 * std::log10(sum);
    };
    EXPECT_NEAR(bandPower(200.0) - bandPower(3200.0), 4 * 3.01, 2.0);
}

TEST(Signals, NullTestReadsTheLargestDifference) {
    Signal a = sine(100, 48000, 100);
    Signal b = a;
    EXPECT_EQ(nullDb(a, b), -400.0);
    b[50] += 0.001f;
    EXPECT_NEAR(nullDb(a, b), -60.0, 0.01);
    b[3] = std::nanf("");
    EXPECT_TRUE(std::isnan(nullDb(a, b)));
    b.pop_back();
    EXPECT_THROW(nullDb(a, b), std::invalid_argument);
}

}  // namespace
}  // namespace vanta::test
