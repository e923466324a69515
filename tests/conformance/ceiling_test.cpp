#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "foundation/numbers.hpp"
#include "tests/conformance/program_material.hpp"
#include "tests/support/limiter_rig.hpp"

namespace vanta::test {
namespace {

constexpr std::array kGains = {6.0f, 12.0f, 24.0f};
constexpr std::array kFactorIndexes = {0, 1, 2};

/// How far true peaks may pass Output Level with True Peak Limiting on, in dB, for factors 1, 2 and 4.
/// Measured over all styles and gains, and rounded up; the README states the same figures.
using Tolerances = std::array<std::array<double, kFactorIndexes.size()>, kSpectra>;
constexpr Tolerances kTruePeakTolerances = {{
    {0.10, 0.10, 0.10},  // below 16 kHz
    {0.20, 0.15, 0.15},  // noise below 16 kHz: clipping adds what lies beyond 20 kHz
    {0.10, 0.10, 0.10},  // below 20 kHz
    {0.45, 0.30, 0.35},  // edges
    {0.80, 0.40, 0.45},  // pink noise
    {1.50, 1.00, 1.00},  // white noise
    {6.00, 2.00, 1.50},  // beyond 20 kHz
}};

float ceilingOf(const LimiterSetup& setup) {
    return static_cast<float>(gainFromDb(static_cast<double>(setup.outputLevelDb)));
}

/// Calls `body(material, setup)` for all material, factors and gains in one style.
template <typename Body>
void forAllMaterial(Style style, bool truePeak, Body&& body) {
    for (const Material& material : programMaterial()) {
        for (const int index : kFactorIndexes) {
            for (const float gain : kGains) {
                LimiterSetup setup{.style = style,
                                   .oversamplingIndex = index,
                                   .truePeak = truePeak,
                                   .gainDb = gain,
                                   .layout = material.layout()};
                SCOPED_TRACE(material.name + ", " + describe(setup));
                body(material, setup);
            }
        }
    }
}

class Ceiling : public testing::TestWithParam<Style> {};

INSTANTIATE_TEST_SUITE_P(Styles, Ceiling, testing::ValuesIn(kStyles),
                         [](const auto& instance) { return nameOf(instance.param); });

TEST_P(Ceiling, IsPassedByNoSample) {
    forAllMaterial(GetParam(), false, [](const Material& material, const LimiterSetup& setup) {
        const Channels out = limited(setup, material.channels);
        EXPECT_LE(peak(out), ceilingOf(setup)) << db(peak(out)) << " dB";
        // And the limiter uses the room that it has: what is too loud does not come out far below.
        const bool dense =
            material.spectrum == Spectrum::Below16kHz || material.spectrum == Spectrum::PinkNoise;
        if (dense && setup.factor() == 1) {
            EXPECT_GT(db(peak(out)), -0.1);
        }
    });
}

TEST_P(Ceiling, HoldsTruePeaksWithinTolerance) {
    std::array<std::array<double, kFactorIndexes.size()>, kSpectra> worst;
    for (auto& row : worst) row.fill(-400.0);
    forAllMaterial(GetParam(), true, [&](const Material& material, const LimiterSetup& setup) {
        const Channels out = limited(setup, material.channels);
        EXPECT_LE(peak(out), ceilingOf(setup)) << db(peak(out)) << " dB";
        const auto row = static_cast<std::size_t>(material.spectrum);
        const auto column = static_cast<std::size_t>(setup.oversamplingIndex);
        for (const Signal& signal : out) {
            const double over = db(truePeak(signal));
            EXPECT_LE(over, kTruePeakTolerances[row][column]);
            worst[row][column] = std::max(worst[row][column], over);
        }
    });
    for (std::size_t row = 0; row < worst.size(); ++row) {
        report("{:<12} true peak over Output Level, {:<18} 1x {:+.3f}  2x {:+.3f}  4x {:+.3f} dB\n",
               nameOf(GetParam()), kSpectrumNames[row], worst[row][0], worst[row][1], worst[row][2]);
    }
}

TEST_P(Ceiling, StandsAtEveryOutputLevel) {
    const Channels music = loudMusic(0.7);
    const Channels noise = {whiteNoise(8, 20000), whiteNoise(9, 20000)};
    for (const Channels* in : {&music, &noise}) {
        for (const float level : {-0.3f, -1.0f, -6.0f, -30.0f}) {
            for (const bool truePeak : {false, true}) {
                LimiterSetup setup{
                    .style = GetParam(), .truePeak = truePeak, .gainDb = 18.0f, .outputLevelDb = level};
                SCOPED_TRACE(describe(setup));
                const Channels out = limited(setup, *in);
                EXPECT_LE(peak(out), ceilingOf(setup));
                if (!truePeak) {
                    EXPECT_NEAR(db(peak(out)), static_cast<double>(level), 0.1);
                }
            }
        }
    }
}

/// Runs `in` and lets `move(limiter, random)` change something before each of the blocks, whose sizes are
/// random.
template <typename Move>
Channels whileMoving(LimiterRig& rig, const Channels& in, Move&& move) {
    Random random(99);
    Channels out(in.size(), Signal(in.front().size()));
    for (std::size_t at = 0; at < in.front().size();) {
        const auto count = std::min(static_cast<std::size_t>(random.between(1, 700)), in.front().size() - at);
        move(rig.limiter(), random);
        rig.processBlock(in, {}, out, at, count);
        at += count;
    }
    return out;
}

TEST_P(Ceiling, HoldsWhileGainAndTimesMove) {
    const Channels music = loudMusic(1.5);
    const Channels noise = {whiteNoise(8, 40000), whiteNoise(9, 40000)};
    const auto moveAll = [](VantaProcessor& limiter, Random& random) {
        for (FloatPluginParameter* knob : {static_cast<FloatPluginParameter*>(&limiter.gain),
                                           static_cast<FloatPluginParameter*>(&limiter.lookahead),
                                           static_cast<FloatPluginParameter*>(&limiter.attack),
                                           static_cast<FloatPluginParameter*>(&limiter.release)}) {
            knob->setValue(knob->denormalize(static_cast<float>(0.5 + 0.5 * random.bipolar())), 0);
        }
    };
    for (const Channels* in : {&music, &noise}) {
        for (const int index : {0, 1}) {
            LimiterSetup setup{.style = GetParam(), .oversamplingIndex = index, .outputLevelDb = -1.0f};
            SCOPED_TRACE(describe(setup));
            LimiterRig rig(setup);
            EXPECT_LE(peak(whileMoving(rig, *in, moveAll)), ceilingOf(setup));

            setup.truePeak = true;
            LimiterRig truePeakRig(setup);
            const Channels out = whileMoving(truePeakRig, *in, moveAll);
            EXPECT_LE(peak(out), ceilingOf(setup) * gainFromDb(0.01));
            if (in != &music) continue;
            // Without the cut at the end, which the limiter never saw.
            const double over = db(truePeak(faded(out[0], 882))) - static_cast<double>(setup.outputLevelDb);
            report("{:<12} {}x true peak of music over Output Level while knobs move: {:+.3f} dB\n",
                   nameOf(GetParam()), setup.factor(), over);
            EXPECT_LE(over, kTruePeakTolerances[0][static_cast<std::size_t>(index)]);
        }
    }
}

}  // namespace
}  // namespace vanta::test
