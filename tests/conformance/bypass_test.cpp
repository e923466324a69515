#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/limiter_rig.hpp"

namespace vanta::test {
namespace {

constexpr double kFadeSeconds = 0.05;

std::size_t fadeSamples(double rate) {
    return static_cast<std::size_t>(std::lround(kFadeSeconds * rate));
}

LimiterSetup hot(Style style, int oversamplingIndex, bool truePeak, double rate) {
    LimiterSetup setup;
    setup.style = style;
    setup.oversamplingIndex = oversamplingIndex;
    setup.truePeak = truePeak;
    setup.rate = rate;
    setup.gainDb = 15.0f;
    setup.outputLevelDb = -2.0f;
    return setup;
}

TEST(Bypass, isTheInputBitForBitDelayedByTheLatency) {
    std::vector<LimiterSetup> setups = {
        hot(Style::Transparent, 0, false, 44100), hot(Style::Punchy, 1, true, 48000),
        hot(Style::Dynamic, 2, false, 96000),     hot(Style::Allround, 0, true, 44100),
        hot(Style::Aggressive, 3, true, 44100),   hot(Style::Modern, 1, false, 192000),
        hot(Style::Bus, 5, true, 48000),          hot(Style::Safe, 0, false, 8000),
    };
    setups[1].further = [](VantaProcessor& limiter) { limiter.dithering.setValue(1, 0); };
    setups[2].further = [](VantaProcessor& limiter) { limiter.filterDcOffset.setMapped(true); };
    setups[3].further = [](VantaProcessor& limiter) { limiter.unityGain.setMapped(true); };
    setups[4].further = [](VantaProcessor& limiter) { limiter.auditionLimiting.setMapped(true); };
    for (const LimiterSetup& setup : setups) {
        SCOPED_TRACE(describe(setup));
        LimiterRig rig(setup);
        rig.limiter().bypass.setMapped(true);
        // The sub-block in which the fade ends is still mixed.
        const std::size_t settled = fadeSamples(setup.rate) + GenericPluginProcessor::kMaxSubBlock;
        const std::size_t count = settled + rig.latency() + 3000;
        const Channels in = {whiteNoise(1, count, 1.4), whiteNoise(2, count, 1.4)};
        const Channels out = rig.process(in, 333);
        for (std::size_t c = 0; c < 2; ++c) {
            for (std::size_t i = settled; i < count; ++i) {
                const float expected = i < rig.latency() ? 0.0f : in[c][i - rig.latency()];
                ASSERT_EQ(out[c][i], expected) << "channel " << c << " sample " << i;
            }
        }
    }
}

/// Auditions what is limited of a constant that is not limited: the wet signal is silence, and the output is
/// the share of the dry one.
class BypassFade : public testing::Test {
protected:
    static constexpr float kLevel = 0.25f;

    static LimiterSetup silentWet() {
        LimiterSetup setup;
        setup.further = [](VantaProcessor& limiter) { limiter.auditionLimiting.setMapped(true); };
        return setup;
    }
    BypassFade() { run(4000); }

    /// The share of the dry signal over the next samples.
    Signal run(std::size_t count) {
        const Channels in(2, Signal(count, kLevel));
        Signal share = rig.process(in, 250)[0];
        for (float& value : share) value /= kLevel;
        return share;
    }
    void setBypass(bool on) { rig.limiter().bypass.setMapped(on); }

    LimiterRig rig{silentWet()};
    const std::size_t fade = fadeSamples(44100);
};

double largestStep(const Signal& signal) {
    double largest = 0.0;
    for (std::size_t i = 1; i < signal.size(); ++i) {
        largest = std::max(largest, std::abs(static_cast<double>(signal[i]) - signal[i - 1]));
    }
    return largest;
}

TEST_F(BypassFade, goesToDryInAStraightLineAtOnce) {
    setBypass(true);
    const Signal share = run(2 * fade);
    for (std::size_t i = 0; i < share.size(); ++i) {
        ASSERT_NEAR(share[i], std::min(static_cast<double>(i) / static_cast<double>(fade), 1.0), 1e-5) << i;
    }
}

TEST_F(BypassFade, comesBackWhenTheLimiterHasFilledWithSignal) {
    setBypass(true);
    run(2 * fade + 77);
    setBypass(false);
    const std::size_t latency = rig.latency();
    const Signal share = run(latency + 2 * fade);
    for (std::size_t i = 0; i < share.size(); ++i) {
        const double gone = i <= latency ? 0.0 : static_cast<double>(i - latency) / static_cast<double>(fade);
        ASSERT_NEAR(share[i], std::max(1.0 - gone, 0.0), 1e-5) << i;
    }
}

TEST_F(BypassFade, turnsRoundWhereItStands) {
    const double slope = 1.0 / static_cast<double>(fade);
    Signal share;
    const auto append = [&share](const Signal& more) { share.insert(share.end(), more.begin(), more.end()); };
    setBypass(true);
    append(run(fade / 2));
    setBypass(false);  // the limiter has never rested, so there is nothing to wait for
    append(run(fade / 4));
    EXPECT_LT(share.back(), 0.5);
    setBypass(true);
    append(run(fade / 4));
    setBypass(false);
    append(run(2 * fade));
    EXPECT_EQ(share.back(), 0.0f);
    // A fade of 50 ms from half way is slower, never faster.
    EXPECT_LE(largestStep(share), slope * 1.001);
}

TEST_F(BypassFade, endsWhenNeitherHostNorParameterAsksForIt) {
    rig.limiter().setBypassed(true, 0);
    setBypass(true);
    run(2 * fade);
    setBypass(false);
    for (const float share : run(3 * fade)) ASSERT_EQ(share, 1.0f);
    rig.limiter().setBypassed(false, 0);
    EXPECT_EQ(run(rig.latency() + 2 * fade).back(), 0.0f);
}

TEST(Bypass, leavesAsAFreshLimiterWould) {
    for (const Style style : kStyles) {
        const LimiterSetup setup = hot(style, 0, true, 44100);
        SCOPED_TRACE(describe(setup));
        LimiterRig rig(setup);
        LimiterRig fresh(setup);
        const Channels before = {whiteNoise(3, 9000, 1.0), whiteNoise(4, 9000, 1.0)};
        const Channels after = {pinkNoise(5, 30000, 0.2), pinkNoise(6, 30000, 0.2)};
        rig.process(before);
        rig.limiter().bypass.setMapped(true);
        rig.process(before);
        rig.limiter().bypass.setMapped(false);
        const std::size_t settled = rig.latency() + fadeSamples(setup.rate) + 1;
        EXPECT_LT(nullDb(rig.process(after), fresh.process(after), settled), -130.0);
    }
}

}  // namespace
}  // namespace vanta::test
