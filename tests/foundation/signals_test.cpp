#include "tests/support/signals.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vanta::test {
namespace {

constexpr double kQuarter = std::numbers::pi / 4.0;

TEST(TruePeak, ReadsTheAmplitudeOfATone) {
    for (const double frequency : {20.0, 997.0, 11025.0, 15000.0, 19997.0, 21000.0, 0.48 * 44100}) {
        for (const double phase : {0.0, kQuarter, 1.0}) {
            const Signal tone = faded(sine(frequency, 44100.0, 12000, 0.5, phase), 2048);
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

}  // namespace
}  // namespace vanta::test
