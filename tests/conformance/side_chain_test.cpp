#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "foundation/numbers.hpp"
#include "tests/conformance/program_material.hpp"
#include "tests/support/limiter_rig.hpp"

namespace vanta::test {
namespace {

constexpr double kRate = 44100.0;
constexpr double kMarginDb = 0.001;

class SideChain : public testing::TestWithParam<Style> {
protected:
    LimiterSetup triggered(int oversamplingIndex = 0) const {
        LimiterSetup setup{.style = GetParam(), .oversamplingIndex = oversamplingIndex, .gainDb = 12.0f};
        setup.further = [](VantaProcessor& limiter) {
            limiter.sideChainTriggering.setMapped(true);
            limiter.setSideChainInUse(true);
        };
        return setup;
    }
};

INSTANTIATE_TEST_SUITE_P(Styles, SideChain, testing::ValuesIn(kStyles),
                         [](const auto& instance) { return nameOf(instance.param); });

TEST_P(SideChain, DucksTheMainSignal) {
    constexpr std::size_t kCount = 40000;
    constexpr std::size_t kOnset = 15000;
    const Channels main(2, sine(300.0, kRate, kCount, 0.1));
    Channels trigger(2, sine(500.0, kRate, kCount, 1.0));
    for (Signal& signal : trigger) std::fill_n(signal.begin(), kOnset, 0.0f);
    for (const int index : {0, 1}) {
        LimiterRig rig(triggered(index));
        const Channels out = rig.processAligned(main, 512, trigger);
        const double makeup = gainFromDb(12.0 - kMarginDb);
        const auto level = [&](std::size_t from) { return db(rms(std::span(out[0]).subspan(from, 4410))); };
        const double untouched = db(0.1 * makeup / std::sqrt(2.0));
        EXPECT_NEAR(level(3000), untouched, 0.01);
        // 12 dB of Gain take a trigger of full scale 12 dB down.
        EXPECT_NEAR(level(kOnset + 15000), untouched - 12.0, 2.0);
    }
}

TEST_P(SideChain, OfSilenceLeavesAlone) {
    // Nothing triggers, so the signal leaves with its makeup, however loud.
    const Signal tone = sine(1000.0, kRate, 20000, 0.2);
    LimiterSetup setup = triggered();
    setup.layout = kMonoLayout;
    const Signal out = LimiterRig(setup).processAligned({tone}, 512, {Signal(tone.size(), 0.0f)})[0];
    Signal expected(tone);
    for (float& sample : expected) sample *= static_cast<float>(gainFromDb(12.0 - kMarginDb));
    EXPECT_LT(nullDb(out, expected), -120.0);
}

TEST_P(SideChain, ThatIsNotDeliveredIsTheMainSignal) {
    // Also where the host delivers one that is not to be used.
    const Channels music = loudMusic(0.5);
    LimiterSetup plain{.style = GetParam(), .gainDb = 12.0f};
    const Channels reference = limited(plain, music);
    EXPECT_LT(nullDb(limited(triggered(), music), reference), -110.0);

    LimiterSetup unused = triggered();
    unused.further = [](VantaProcessor& limiter) { limiter.sideChainTriggering.setMapped(true); };
    const Channels noise(2, whiteNoise(1, music[0].size()));
    EXPECT_LT(nullDb(LimiterRig(unused).processAligned(music, 512, noise), reference), -110.0);

    LimiterSetup off = plain;
    off.further = [](VantaProcessor& limiter) { limiter.setSideChainInUse(true); };
    EXPECT_EQ(LimiterRig(off).processAligned(music, 512, noise), reference);
}

TEST_P(SideChain, IsNeverHeardItself) {
    // The main signal is silence; whatever comes out is a part of the side chain.
    constexpr std::size_t kPiece = 9000;
    const Channels silence(2, Signal(kPiece, 0.0f));
    const Channels loud(2, whiteNoise(5, kPiece));
    for (const int index : {0, 1}) {
        LimiterSetup setup = triggered(index);
        setup.further = [](VantaProcessor& limiter) { limiter.setSideChainInUse(true); };
        for (const int block : {64, 1024}) {
            SCOPED_TRACE(fmt::format("{}, blocks of {}", describe(setup), block));
            LimiterRig rig(setup);
            rig.process(silence, block, loud);
            for (const bool on : {true, false, true}) {
                rig.limiter().sideChainTriggering.setMapped(on);
                EXPECT_LT(db(peak(rig.process(silence, block, loud))), -120.0) << (on ? "on" : "off");
            }
        }
    }
}

class Audition : public testing::TestWithParam<Style> {
protected:
    LimiterSetup setup(bool audition, int oversamplingIndex = 0) const {
        LimiterSetup made{.style = GetParam(), .oversamplingIndex = oversamplingIndex, .gainDb = 12.0f};
        made.further = [audition](VantaProcessor& limiter) { limiter.auditionLimiting.setMapped(audition); };
        return made;
    }
};

INSTANTIATE_TEST_SUITE_P(Styles, Audition, testing::ValuesIn(kStyles),
                         [](const auto& instance) { return nameOf(instance.param); });

TEST_P(Audition, OfNothingLimitedIsSilence) {
    const Channels quiet(2, sine(300.0, kRate, 20000, 0.1));
    EXPECT_EQ(peak(limited(setup(true), quiet)), 0.0);
}

TEST_P(Audition, AndTheLimitedSignalAddUpToTheInput) {
    // The audition is input times (1 - gain), the output input times gain and makeup. Oversampled, the gain
    // is thinned out to one value a sample, so the sum is close, not equal.
    const Channels music = loudMusic(0.6);
    const double makeup = gainFromDb(12.0 - kMarginDb);
    for (const int index : {0, 2}) {
        const Channels taken = limited(setup(true, index), music);
        EXPECT_GT(peak(taken), 0.05);
        Channels rest = limited(setup(false, index), music);
        for (std::size_t c = 0; c < 2; ++c) {
            for (std::size_t i = 0; i < rest[c].size(); ++i) {
                rest[c][i] = static_cast<float>(static_cast<double>(rest[c][i]) / makeup +
                                                static_cast<double>(taken[c][i] - music[c][i]));
            }
        }
        const double residual = db(rms(rest[0])) - db(rms(music[0]));
        report("{:<12} {}x: audition plus output differ from the input by {:.1f} dB\n", nameOf(GetParam()),
               1 << index, residual);
        EXPECT_LT(residual, index == 0 ? -110.0 : -30.0);
    }
}

TEST(UnityGain, LeavesUnlimitedSignalsAsTheyWere) {
    for (const Style style : kStyles) {
        for (const float gain : {0.0f, 6.0f, 20.0f}) {
            for (const float level : {0.0f, -3.0f}) {
                LimiterSetup setup{.style = style, .gainDb = gain, .outputLevelDb = level};
                setup.further = [](VantaProcessor& limiter) { limiter.unityGain.setMapped(true); };
                SCOPED_TRACE(describe(setup));
                const Channels quiet(2, sine(500.0, kRate, 15000, 0.05));
                const Channels out = limited(setup, quiet);
                EXPECT_NEAR(db(rms(out[0])) - db(rms(quiet[0])), 0.0, 0.0015);
                // What is limited stays below -Gain dB.
                const Channels loud(2, sine(500.0, kRate, 15000, 0.99));
                EXPECT_LE(db(peak(limited(setup, loud))), -static_cast<double>(gain) + 1e-5);
            }
        }
    }
}

TEST(Dithering, OfTheWholeLimiterStandsOnTheGridBelowTheCeiling) {
    const Channels music = loudMusic(0.5);
    for (const auto& [index, bits] : {std::pair(1, 16), {2, 18}, {3, 20}, {4, 22}, {5, 24}}) {
        for (int shaping = 0; shaping < 4; ++shaping) {
            LimiterSetup setup{.style = Style::Modern, .gainDb = 18.0f, .outputLevelDb = -0.3f};
            setup.further = [choice = index, shaping](VantaProcessor& limiter) {
                limiter.dithering.setValue(static_cast<float>(choice), 0);
                limiter.noiseShaping.setValue(static_cast<float>(shaping), 0);
            };
            SCOPED_TRACE(fmt::format("{} bits, shaping {}", bits, shaping));
            const Channels out = limited(setup, music);
            const double steps = std::ldexp(1.0, bits - 1);
            for (const Signal& signal : out) {
                for (const float sample : signal) {
                    const double place = static_cast<double>(sample) * steps;
                    ASSERT_EQ(place, std::round(place));
                }
            }
            EXPECT_LE(peak(out), gainFromDb(-0.3));
            EXPECT_GT(db(peak(out)), -0.4);
        }
    }
}

}  // namespace
}  // namespace vanta::test
