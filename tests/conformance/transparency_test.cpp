#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "foundation/numbers.hpp"
#include "tests/support/limiter_rig.hpp"

namespace vanta::test {
namespace {

/// The makeup stays this far below what the ceiling allows; the threshold never stands higher than this above
/// it.
constexpr double kMarginDb = 0.001;

double makeupGain(const LimiterSetup& setup) {
    const double raised = std::max(static_cast<double>(setup.gainDb), kMarginDb);
    return gainFromDb(raised + static_cast<double>(setup.outputLevelDb) - kMarginDb);
}

LimiterSetup monoSetup(Style style, int oversamplingIndex, bool truePeak) {
    return {
        .style = style, .oversamplingIndex = oversamplingIndex, .truePeak = truePeak, .layout = kMonoLayout};
}

/// A tone split into the sine that fits best and all else.
struct Fit {
    double amplitude;
    double residualRms;
};
Fit fitSine(std::span<const float> signal, double frequency, double rate) {
    // Over whole cycles that is its Fourier coefficient.
    const auto sine = transformAt(signal, frequency / rate) * (2.0 / static_cast<double>(signal.size()));
    Signal rest(signal.begin(), signal.end());
    for (std::size_t i = 0; i < rest.size(); ++i) {
        const double cycles = std::fmod(static_cast<double>(i) * frequency / rate, 1.0);
        const double fitted = (sine * std::polar(1.0, 2.0 * std::numbers::pi * cycles)).real();
        rest[i] = static_cast<float>(static_cast<double>(rest[i]) - fitted);
    }
    return {std::abs(sine), rms(rest)};
}

TEST(Transparency, IsTheMakeupGainAndADelayAtOneTimesTheRate) {
    for (const Style style : kStyles) {
        for (const bool truePeak : {false, true}) {
            for (const float gain : {0.0f, 6.0f, 18.0f, 30.0f}) {
                LimiterSetup setup = monoSetup(style, 0, truePeak);
                setup.gainDb = gain;
                setup.outputLevelDb = -1.5f;
                SCOPED_TRACE(describe(setup));
                // Peaks 1 dB below the threshold, between the samples as well.
                const double level = gainFromDb(-1.0 - static_cast<double>(gain));
                const Signal in = sweep(20.0, 15000.0, setup.rate, 30000, level);
                Signal expected(in);
                for (float& sample : expected) {
                    sample = static_cast<float>(static_cast<double>(sample) * makeupGain(setup));
                }
                const double error = nullDb(limited(setup, {in})[0], expected);
                EXPECT_LT(error, -130.0);
            }
        }
    }
}

/// Whole cycles of 997 Hz and of every other whole frequency.
constexpr std::size_t kSecond = 44100;

TEST(Transparency, AddsNoDistortionAtAnyFactor) {
    for (int index = 0; index <= 5; ++index) {
        for (const bool truePeak : {false, true}) {
            // The converters are the same in all styles; the engine's path runs the more seldom the dearer.
            for (const Style style : kStyles) {
                if (index > 1 && style != Style::Transparent && style != Style::Modern) continue;
                LimiterSetup setup = monoSetup(style, index, truePeak);
                setup.gainDb = 12.0f;
                SCOPED_TRACE(describe(setup));
                const std::size_t settling = 8000;
                const Signal in = sine(997.0, setup.rate, kSecond + settling, gainFromDb(-13.0));
                const Signal out = limited(setup, {in})[0];
                const Fit fit = fitSine(std::span(out).subspan(settling / 2, kSecond), 997.0, setup.rate);
                const double noise = db(fit.residualRms * std::numbers::sqrt2 / fit.amplitude);
                const double gain = db(fit.amplitude) - db(gainFromDb(-13.0) * makeupGain(setup));
                report(
                    "{:<12} {:>2}x true peak {:<3} THD+N of 997 Hz at -1 dB: {:.1f} dB, gain error {:+.5f} "
                    "dB\n",
                    nameOf(style), setup.factor(), truePeak ? "on" : "off", noise, gain);
                EXPECT_LT(noise, -120.0);
                EXPECT_NEAR(gain, 0.0, index == 0 ? 1e-5 : 2e-3);
            }
        }
    }
}

TEST(Transparency, IsFlatFrom20HzTo20kHz) {
    constexpr std::array kFrequencies = {20.0,    50.0,    100.0,   997.0,   3000.0,
                                         6000.0,  9000.0,  12000.0, 14000.0, 16000.0,
                                         18000.0, 19000.0, 19500.0, 19800.0, 20000.0};
    for (const double rate : {44100.0, 48000.0, 96000.0}) {
        for (int index = 0; index <= 5; ++index) {
            LimiterSetup setup = monoSetup(Style::Transparent, index, false);
            setup.rate = rate;
            SCOPED_TRACE(describe(setup));
            // The impulse response is finite, so its transform at a frequency is the response there.
            LimiterRig rig(setup);
            const std::size_t half = 200;
            const Signal out = rig.processAligned({impulse(2 * half + 1, half, 0.5)})[0];
            double largest = 0.0;
            for (const double frequency : kFrequencies) {
                largest = std::max(largest, std::abs(db(std::abs(transformAt(out, frequency / rate)) / 0.5)));
            }
            report("{:>2}x at {} Hz: largest deviation from flat, 20 Hz to 20 kHz: {:.5f} dB\n",
                   setup.factor(), rate, largest);
            EXPECT_LT(largest, index == 0 ? 1e-5 : 0.004);
        }
    }
}

}  // namespace
}  // namespace vanta::test
