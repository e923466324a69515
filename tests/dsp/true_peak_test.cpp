#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "dsp/sr/true_peak_exposer.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"

namespace vanta {
namespace {

using sr::TruePeakExposer;
using test::Signal;

constexpr double kPi = std::numbers::pi;

struct Rig {
    Rig(float rate, Signal signal) : source(environment, std::move(signal)) {
        environment.setSampleRate(rate);
        exposer.source = &source;
    }
    Signal run(int count, int block = 256) {
        return test::runElement(environment, exposer, test::evenBlocks(count, block));
    }
    std::size_t delay() const { return static_cast<std::size_t>(style.delay()); }

    wave::Environment environment{256};
    TruePeakExposer::Style style{environment};
    test::VectorSource source;
    TruePeakExposer exposer{environment, style};
};

double settledPeakDb(const Signal& out) {
    return test::db(test::peak(std::span(out.data() + 500, out.size() - 500)));
}

struct Tone {
    const char* name;
    double divisor;  ///< of the sample rate
    double amplitude;
    double phase;  ///< degrees
    double expectedDb;
};

// The steady tones of EBU Tech 3341, test signals 15 to 19, and its tolerance for a meter.
constexpr Tone kEbuTones[] = {
    {"15", 4.0, 0.50, 0.0, -6.0},  {"16", 4.0, 0.50, 45.0, -6.0}, {"17", 6.0, 0.50, 60.0, -6.0},
    {"18", 8.0, 0.50, 67.5, -6.0}, {"19", 4.0, 1.41, 45.0, 3.0},
};

TEST(TruePeakExposer, readsTheTonesOfTheStandard) {
    for (const float rate : {44100.0f, 48000.0f, 88200.0f, 96000.0f, 192000.0f}) {
        for (const Tone& tone : kEbuTones) {
            const double hz = static_cast<double>(rate) / tone.divisor;
            Rig rig(rate, test::sine(hz, static_cast<double>(rate), 4000, tone.amplitude,
                                     tone.phase * kPi / 180.0));
            const double level = settledPeakDb(rig.run(4000));
            // Above 20 kHz the filters may fall; the table ends there.
            if (hz > 20000.0) continue;
            EXPECT_LT(level, tone.expectedDb + 0.2) << tone.name << " at " << rate;
            EXPECT_GT(level, tone.expectedDb - 0.2) << tone.name << " at " << rate;
        }
    }
}

// The worst place of the finer grid is half a step off the crest.
TEST(TruePeakExposer, missesNoMoreOfACrestThanItsGrid) {
    for (const float rate : {44100.0f, 48000.0f, 96000.0f, 192000.0f}) {
        for (const double hz : {997.0, 4999.0, 9973.0, 15013.0, 19997.0}) {
            Rig rig(rate, test::sine(hz, static_cast<double>(rate), 6000));
            const Signal out = rig.run(6000);
            const double grid = static_cast<double>(rate) * rig.style.factor();
            EXPECT_GT(settledPeakDb(out), test::db(std::cos(kPi * hz / grid)) - 0.05) << hz << " at " << rate;
            EXPECT_LT(settledPeakDb(out), 0.05) << hz << " at " << rate;
        }
    }
}

// Output n speaks of the time from sample n - delay to the next sample: a limiter that looks ahead by the
// delay has to find each crest in its place.
TEST(TruePeakExposer, putsEachCrestInItsPlace) {
    // The shorter the filter, the larger its ripple.
    const std::pair<float, double> cases[] = {{44100.0f, 0.003}, {96000.0f, 0.004}, {192000.0f, 0.012}};
    for (const auto& [rate, tolerance] : cases) {
        const double frequencies[] = {313.0, 4111.0, 11003.0, 18007.0};
        const auto value = [&](double t) {
            double sum = 0.0;
            for (const double f : frequencies)
                sum += 0.25 * std::sin(2.0 * kPi * f * t / static_cast<double>(rate));
            return sum;
        };
        Signal signal(3000);
        for (std::size_t n = 0; n < signal.size(); ++n)
            signal[n] = static_cast<float>(value(static_cast<double>(n)));
        Rig rig(rate, signal);
        const Signal out = rig.run(3000);
        for (std::size_t n = 300; n + rig.delay() < out.size(); ++n) {
            double crest = 0.0;
            for (int k = 0; k < rig.style.factor(); ++k) {
                crest =
                    std::max(crest, std::abs(value(static_cast<double>(n) + k * 1.0 / rig.style.factor())));
            }
            ASSERT_NEAR(static_cast<double>(out[n + rig.delay()]), crest, tolerance) << n << " at " << rate;
        }
    }
}

TEST(TruePeakExposer, isNeverBelowASample) {
    for (const float rate : {8000.0f, 44100.0f, 96000.0f, 192000.0f, 384000.0f}) {
        const Signal noise = test::whiteNoise(5, 3000);
        Rig rig(rate, noise);
        const Signal out = rig.run(3000, 77);
        for (std::size_t n = 0; n + rig.delay() < out.size(); ++n) {
            ASSERT_GE(out[n + rig.delay()], std::abs(noise[n]));
        }
    }
}

TEST(TruePeakExposer, choosesItsFactorByTheRate) {
    const std::pair<float, int> expected[] = {{8000.0f, 8},  {44100.0f, 8},  {48000.0f, 8},  {64000.0f, 4},
                                              {96000.0f, 4}, {176400.0f, 2}, {192000.0f, 2}, {384000.0f, 2}};
    Rig rig(22050.0f, {});
    for (const auto& [rate, factor] : expected) {
        rig.environment.setSampleRate(rate);
        EXPECT_EQ(rig.style.factor(), factor) << rate;
        EXPECT_EQ(sr::truePeakFactor(static_cast<double>(rate)), factor) << rate;
        EXPECT_EQ(rig.style.delay(), sr::filterLatency(factor, static_cast<double>(rate), 60.0, 20000.0) / 2);
    }
}

TEST(TruePeakExposer, followsAnOversampledEnvironment) {
    wave::Environment base(256);
    wave::SubEnvironment oversampled(base);
    TruePeakExposer::Style style(oversampled);
    test::VectorSource source(oversampled, {});
    TruePeakExposer exposer(oversampled, style);
    exposer.source = &source;
    for (const int factor : {1, 8, 32, 2}) {
        oversampled.setFactor(factor);
        const double rate = 44100.0 * factor;
        EXPECT_EQ(style.factor(), sr::truePeakFactor(rate));
        source.play(test::sine(rate / 4.0, rate, 8192, 1.0, kPi / 4.0));
        const Signal out = test::runElement(base, exposer, test::evenBlocks(8192 / factor, 256));
        // A quarter of the rate is beyond the passband of the highest ones.
        if (factor < 2) {
            EXPECT_NEAR(settledPeakDb(out), 0.0, 0.2);
        }
        EXPECT_TRUE(std::all_of(out.begin(), out.end(), [](float x) { return x >= 0.0f && x < 1.2f; }));
    }
}

TEST(TruePeakExposer, handsOnItsInputWhenDisabled) {
    const Signal noise = test::whiteNoise(2, 1000);
    Rig rig(44100.0f, noise);
    rig.exposer.enabled = false;
    EXPECT_EQ(rig.run(500, 100), Signal(noise.begin(), noise.begin() + 500));
    EXPECT_EQ(&rig.exposer.current(), &rig.source.current());
}

TEST(TruePeakExposer, startsAfreshWhenEnabledAgain) {
    const Signal noise = test::whiteNoise(2, 1000);
    Rig fresh(44100.0f, noise);
    Rig rig(44100.0f, noise);
    const Signal expected = fresh.run(1000, 100);
    rig.run(1000, 100);
    rig.exposer.enabled = false;
    rig.run(100, 100);
    rig.exposer.enabled = true;
    rig.source.rewind();
    EXPECT_EQ(rig.run(1000, 100), expected);
    rig.source.rewind();
    rig.environment.resetGraph(wave::ResetMode::ResetActive);
    EXPECT_EQ(rig.run(1000, 33), expected) << "after a reset, in other blocks";
}

TEST(TruePeakExposer, endsInExactSilence) {
    Rig rig(44100.0f, test::whiteNoise(2, 500));
    const Signal out = rig.run(1000, 100);
    for (std::size_t n = 500 + 2 * rig.delay(); n < out.size(); ++n) ASSERT_EQ(out[n], 0.0f);
}

}  // namespace
}  // namespace vanta
