#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/limiter_rig.hpp"

namespace vanta::test {
namespace {

constexpr double kFadeSeconds = 0.05;

std::size_t fadeSamples(double rate) {
    return static_cast<std::size_t>(std::lround(kFadeSeconds * rate));
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

TEST_F(BypassFade, GoesToDryInAStraightLineAtOnce) {
    setBypass(true);
    const Signal share = run(2 * fade);
    for (std::size_t i = 0; i < share.size(); ++i) {
        ASSERT_NEAR(share[i], std::min(static_cast<double>(i) / static_cast<double>(fade), 1.0), 1e-5) << i;
    }
}

TEST_F(BypassFade, ComesBackWhenTheLimiterHasFilledWithSignal) {
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

TEST_F(BypassFade, TurnsRoundWhereItStands) {
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

TEST_F(BypassFade, EndsWhenNeitherHostNorParameterAsksForIt) {
    rig.limiter().setBypassed(true, 0);
    setBypass(true);
    run(2 * fade);
    setBypass(false);
    for (const float share : run(3 * fade)) ASSERT_EQ(share, 1.0f);
    rig.limiter().setBypassed(false, 0);
    EXPECT_EQ(run(rig.latency() + 2 * fade).back(), 0.0f);
}

}  // namespace
}  // namespace vanta::test
