#include <gtest/gtest.h>

#include <cmath>

#include "dsp/saturator/saturator.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/instruction_sets.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

constexpr int kCurves = WaveShaper::kCurveCount;
bool isOdd(int function) {
    return function < WaveShaper::Tube;
}

struct Point {
    int function;
    double x, y;
};

// Worked out by hand from the closed forms.
constexpr Point kPoints[] = {
    {WaveShaper::ArcTan, 2.0 / 3.14159265358979, 0.5},
    {WaveShaper::Exp, 1.0986122886681098, 0.5},
    {WaveShaper::DivAbs, 3.0, 0.75},
    {WaveShaper::DivRootSquare, 0.75, 0.6},
    {WaveShaper::TanHyperbolic, 0.5493061443340549, 0.5},
    {WaveShaper::ErrorFunction, 7.5, 7.5},
    {WaveShaper::Sine, 1.0 / 3.0, 0.5},
    {WaveShaper::Sine, 5.0, 1.0},
    {WaveShaper::PolynomeOrder2, 0.5, 0.75},
    {WaveShaper::PolynomeOrder3, 0.5, 0.6875},
    {WaveShaper::PolynomeOrder4, 0.5, 0.6458333333333333},
    {WaveShaper::PolynomeOrder5, 0.5, 0.6171875},
    {WaveShaper::PolynomeOrder5, 9.0, 1.0},
    {WaveShaper::Tube, 0.2, 0.54138},
    {WaveShaper::Tube, 1.0, 0.629932761},
    {WaveShaper::Tube, -3.0, -1.17545104},
    {WaveShaper::Triode, 1.0, 1.4949991822},
    {WaveShaper::Triode, -30.0, -7.9292193},
    {WaveShaper::Rectify, -0.5, 0.75},
};

TEST(WaveShaper, KnowsItsCurves) {
    for (const Point& p : kPoints) {
        SCOPED_TRACE(testing::Message() << "curve " << p.function << " at " << p.x);
        const WaveShaper shaper(p.function);
        EXPECT_NEAR(shaper.curve(p.x), p.y, 1e-6);
        if (isOdd(p.function)) {
            EXPECT_EQ(shaper.curve(-p.x), -shaper.curve(p.x));
        }
        EXPECT_EQ(shaper.curve(0.0), 0.0);
    }
    // Scale and exponent change what lies between the ends, and of the scale only the negative half.
    WaveShaper shaper(WaveShaper::DivAbs);
    shaper.scale = 2.0f;
    EXPECT_NEAR(shaper.curve(-1.0), -1.0 / 3.0, 1e-12);
    EXPECT_EQ(shaper.curve(1.0), 0.5);
    shaper.exponent = 2.0f;
    EXPECT_NEAR(shaper.curve(1.0), std::sqrt(0.5), 1e-12);
    EXPECT_NEAR(shaper.curve(-1.0), -std::sqrt(0.8) / 2, 1e-12);
}

TEST(WaveShaper, GivesTheSameFastAndSlowly) {
    Signal in = spread(5, 500, -4.0, 4.0);
    const Signal small = spread(6, 500, -0.5, 0.5);
    in.insert(in.end(), small.begin(), small.end());
    const int count = static_cast<int>(in.size());
    for (int function = 0; function < kCurves; ++function) {
        Signal slow(in.size());
        WaveShaper(function).shape(in.data(), slow.data(), count);
        forEachInstructionSet([&](const char* set) {
            Signal fast = in;
            makeWaveShaper(function)->shape(fast.data(), fast.data(), count);
            for (std::size_t i = 0; i < in.size(); ++i) {
                ASSERT_NEAR(fast[i], slow[i], 1.5e-6) << set << ", curve " << function << " at " << in[i];
            }
        });
    }
}

Signal saturated(int function, double driveDb, Signal in, int factor = 1) {
    ElementRig<Saturator> rig(std::move(in));
    rig.element.transferFunction = function;
    rig.element.converterStyle.setFactor(factor);
    rig.set(rig.element.drive, driveDb);
    return rig.run(9600);
}

/// Of a sine of that level on average of both half waves, without the constant part.
double gainOf(int function, double driveDb, double levelDb) {
    const double amplitude = std::pow(10.0, levelDb / 20);
    const Signal out = saturated(function, driveDb, sine(1000.0, 48000.0, 9600, amplitude));
    return amplitudeAt(out, 1000.0 / 48000.0) / amplitude;
}

TEST(Saturator, KeepsTheLevelOfWhatIsQuietAtEveryDrive) {
    for (int function = 0; function < kCurves; ++function) {
        for (const double drive : {-36.0, -20.0, -7.3, 0.0, 9.1, 24.0, 36.0}) {
            SCOPED_TRACE(testing::Message() << "curve " << function << ", drive " << drive);
            if (function == WaveShaper::Rectify) {
                // The positive half has to make up for the negative one, which is folded up.
                const Signal half = saturated(function, drive, Signal(9600, -0.001f));
                EXPECT_NEAR(half.back() / 0.001, 2.0, 0.01);
                continue;
            }
            // Some curves bend even at -60 dB when driven hard; a sine sees that from peak to zero.
            const bool hard = !isOdd(function) && drive > 30.0;
            EXPECT_NEAR(gainOf(function, drive, -60.0), 1.0, hard ? 0.3 : 0.02);
        }
    }
}

TEST(Saturator, BendsMoreTheHarderItIsDriven) {
    for (int function = 0; function < kCurves; ++function) {
        if (function == WaveShaper::ErrorFunction || function == WaveShaper::Rectify) continue;
        const double gentle = gainOf(function, -36.0, -6.0), hard = gainOf(function, 36.0, -6.0);
        EXPECT_GT(gentle, 0.9) << "curve " << function;
        EXPECT_LT(hard, 0.3 * gentle) << "curve " << function;
    }
    // A curve that changes nothing takes back just what the drive has given.
    const Signal in = whiteNoise(3, 9600);
    EXPECT_LT(nullDb(saturated(WaveShaper::ErrorFunction, 17.0, in), in), -70.0) << "the tables are chords";
}

TEST(Saturator, FollowsAMovingDriveSampleBySample) {
    const Signal in = whiteNoise(4, 600);
    Signal course = spread(7, 600, -36.0, 36.0);
    course[0] = -36.0f;
    course[1] = 36.0f;
    for (const int function : {0, 1, 2, 6, 11}) {
        ElementRig<Saturator> moving(in);
        moving.element.transferFunction = function;
        moving.play(moving.element.drive, course);
        const Signal out = moving.run(600);
        for (std::size_t i = 0; i < 600; i += 7) {
            const auto still = saturated(function, course[i], Signal(1, in[i]));
            ASSERT_NEAR(out[i], still[0], 2e-5 * std::abs(still[0]) + 1e-7)
                << "curve " << function << ", " << i;
        }
    }
}

/// The strongest of what does not belong to a tone: neither a harmonic below half the rate nor silence.
double aliasDb(int factor, double hz) {
    const Signal out = saturated(WaveShaper::PolynomeOrder3, 6.0, sine(hz, 48000.0, 9600, 0.7), factor);
    const std::span settled(out.data() + 1000, out.size() - 1000);
    double strongest = 0.0;
    for (int harmonic = 3; harmonic < 41; harmonic += 2) {
        const double f = harmonic * hz / 48000.0;
        if (f < 0.5) continue;
        strongest = std::max(strongest, amplitudeAt(settled, std::abs(f - std::round(f))));
    }
    return db(strongest);
}

TEST(Saturator, AliasesTheLessTheHigherTheRateAroundItsCurve) {
    double last[4] = {-400, -400, -400, -400};
    for (double hz = 3100.0; hz < 12000.0; hz *= 1.31) {
        for (int stages = 0; stages < 4; ++stages) {
            last[stages] = std::max(last[stages], aliasDb(1 << stages, hz));
        }
    }
    for (int stages = 1; stages < 4; ++stages) {
        EXPECT_LT(last[stages], last[stages - 1] - 8.0) << "at " << (1 << stages) << "x";
    }
}

}  // namespace
}  // namespace vanta::test
