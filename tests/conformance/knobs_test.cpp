#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "foundation/numbers.hpp"
#include "tests/support/limiter_rig.hpp"

namespace vanta::test {
namespace {

constexpr double kRate = 44100.0;
constexpr double kGainDb = 12.0;
constexpr double kRestGain = 0.05;

std::size_t atMs(double ms, double rate = kRate) {
    return static_cast<std::size_t>(std::lround(ms * rate / 1000.0));
}

struct Knobs {
    std::optional<float> lookaheadMs = {};
    std::optional<float> attackMs = {};
    std::optional<float> releaseMs = {};
    float linkTransients = 0.5f;
    float linkRelease = 0.5f;
};

LimiterSetup setupOf(Style style, const Knobs& knobs, ChannelLayout layout, double rate = kRate) {
    LimiterSetup setup{.style = style, .gainDb = static_cast<float>(kGainDb), .rate = rate, .layout = layout};
    setup.further = [knobs](VantaProcessor& limiter) {
        if (knobs.lookaheadMs) limiter.lookahead.setValue(*knobs.lookaheadMs, 0);
        if (knobs.attackMs) limiter.attack.setValue(limiter.attack.fromDisplay(*knobs.attackMs), 0);
        if (knobs.releaseMs) limiter.release.setValue(limiter.release.fromDisplay(*knobs.releaseMs), 0);
        limiter.channelLinkTransients.setValue(knobs.linkTransients, 0);
        limiter.channelLinkRelease.setValue(knobs.linkRelease, 0);
    };
    return setup;
}

/// A steady carrier that jumps to full scale and back.
struct Burst {
    std::size_t start;
    std::size_t end;
    Signal signal;
};
Burst burst(Signal carrier, double startMs, double lengthMs, double rate = kRate) {
    Burst made{atMs(startMs, rate), atMs(startMs + lengthMs, rate), std::move(carrier)};
    for (std::size_t i = 0; i < made.signal.size(); ++i) {
        if (i < made.start || i >= made.end) made.signal[i] *= static_cast<float>(kRestGain);
    }
    return made;
}

/// How far a limiter turns each sample down, in dB: at one times the rate its output is gain times input.
/// Where the input is small the last value stands.
std::vector<double> reductionsDb(const Signal& in, const Signal& out) {
    const double makeup = gainFromDb(kGainDb - 0.001);
    std::vector<double> reductions(in.size(), 0.0);
    double last = 0.0;
    for (std::size_t i = 0; i < in.size(); ++i) {
        const double magnitude = std::abs(static_cast<double>(in[i]));
        if (magnitude > 0.3 * kRestGain)
            last = -db(std::abs(static_cast<double>(out[i])) / (magnitude * makeup));
        reductions[i] = last;
    }
    return reductions;
}

std::vector<double> reductionsDb(Style style, const Knobs& knobs, const Signal& in, double rate = kRate) {
    return reductionsDb(in, limited(setupOf(style, knobs, kMonoLayout, rate), {in}, 256)[0]);
}

Signal squareFor(double ms, double rate = kRate) {
    return square(441.0, rate, atMs(ms, rate));
}

/// From the end of a burst of `burstMs` until a tenth of the reduction is left, in ms.
double recoveryMs(Style style, const Knobs& knobs, double burstMs, double rate = kRate) {
    const Burst b = burst(squareFor(4000.0, rate), 100.0, burstMs, rate);
    const auto reductions = reductionsDb(style, knobs, b.signal, rate);
    std::size_t i = b.end;
    while (i < reductions.size() && reductions[i] > 0.1 * kGainDb) ++i;
    return static_cast<double>(i - b.end) * 1000.0 / rate;
}

class KnobsOf : public testing::TestWithParam<Style> {};

INSTANTIATE_TEST_SUITE_P(Styles, KnobsOf, testing::ValuesIn(kStyles),
                         [](const auto& instance) { return nameOf(instance.param); });

TEST_P(KnobsOf, GainReducesByWhatIsTooMuch) {
    for (const double burstMs : {5.0, 300.0}) {
        const Burst b = burst(squareFor(600.0), 200.0, burstMs);
        const auto reductions = reductionsDb(GetParam(), {}, b.signal);
        EXPECT_NEAR(reductions[atMs(100.0)], 0.0, 1e-3);
        // From the first sample on; never too little, hardly too much.
        for (std::size_t i = b.start; i < b.end; ++i) {
            ASSERT_GT(reductions[i], kGainDb - 0.01) << i - b.start;
            ASSERT_LT(reductions[i], kGainDb + 2.5) << i - b.start;
        }
        EXPECT_NEAR(reductions[b.end - 1], kGainDb, burstMs > 100.0 ? 0.05 : 1.0);
    }
}

TEST_P(KnobsOf, ReleaseSetsTheTimeToRecover) {
    const double burstMs = 500.0;
    double previous = 0.0;
    for (const float release : {20.0f, 100.0f, 300.0f, 1000.0f}) {
        const double recovery = recoveryMs(GetParam(), {.releaseMs = release}, burstMs);
        report("{:<12} release {:>4} ms: {:.0f} ms to recover from {} ms of {} dB\n", nameOf(GetParam()),
               release, recovery, burstMs, kGainDb);
        EXPECT_GT(recovery, 1.1 * previous) << release << " ms";
        if (release >= 100.0f) {
            // Each style takes the knob in its own measure, but in that order of magnitude.
            EXPECT_GT(recovery, 0.25 * static_cast<double>(release));
            EXPECT_LT(recovery, 8.0 * static_cast<double>(release));
        }
        previous = recovery;
    }
}

TEST_P(KnobsOf, AttackSparesShortPeaksASlowRecovery) {
    constexpr double kShortMs = 5.0;
    const auto recovery = [&](float attack, double burstMs) {
        const double ms = recoveryMs(GetParam(), {.attackMs = attack, .releaseMs = 300.0f}, burstMs);
        report("{:<12} attack {:>4} ms: {:.1f} ms to recover from {} ms of {} dB\n", nameOf(GetParam()),
               attack, ms, burstMs, kGainDb);
        return ms;
    };
    const std::array<double, 3> ms = {recovery(10.0f, kShortMs), recovery(100.0f, kShortMs),
                                      recovery(1000.0f, kShortMs)};
    if (GetParam() == Style::Safe) {  // has no use for the knob
        EXPECT_EQ(ms[0], ms[1]);
        EXPECT_EQ(ms[0], ms[2]);
        return;
    }
    EXPECT_GT(ms[0], 1.1 * ms[1]);
    EXPECT_GT(ms[1], 1.1 * ms[2]);
    // What lasts longer than any attack recovers alike.
    EXPECT_NEAR(recovery(10.0f, 1500.0) / recovery(100.0f, 1500.0), 1.0, 0.1);
}

/// By how much the gain begins to fall before the burst, in ms.
double leadMs(Style style, float lookaheadMs) {
    const Burst b = burst(sine(kRate / 16.0, kRate, atMs(400.0), 1.0, 0.2), 200.0, 50.0);
    const auto reductions = reductionsDb(style, {.lookaheadMs = lookaheadMs}, b.signal);
    std::size_t first = 0;
    while (first < b.start && reductions[first] < 0.01) ++first;
    return static_cast<double>(b.start - first) * 1000.0 / kRate;
}

TEST_P(KnobsOf, LookaheadIsTheLeadOfTheGain) {
    constexpr std::array kMs = {0.0f, 0.5f, 1.0f, 2.0f, 3.5f, 5.0f};
    std::array<double, kMs.size()> leads{};
    for (std::size_t i = 0; i < kMs.size(); ++i) {
        leads[i] = leadMs(GetParam(), kMs[i]);
        report("{:<12} lookahead {:.1f} ms: gain leads by {:.2f} ms\n", nameOf(GetParam()), kMs[i], leads[i]);
    }
    switch (GetParam()) {
        case Style::Safe:  // looks ahead by itself
            EXPECT_TRUE(
                std::all_of(leads.begin(), leads.end(), [&](double lead) { return lead == leads[0]; }));
            break;
        case Style::Aggressive:
        case Style::Modern:
        case Style::Bus:  // their clipper joins the peaks of 50 ms by lines, on top of which the knob acts
            for (std::size_t i = 1; i < leads.size(); ++i) EXPECT_GE(leads[i], leads[i - 1]);
            EXPECT_GT(leads.back(), leads.front() + 2.0);
            break;
        default:
            // A sample of the window's edge and one of the carrier near 0 may be lost.
            for (std::size_t i = 0; i < leads.size(); ++i) {
                EXPECT_NEAR(leads[i], static_cast<double>(kMs[i]), 3.0 * 1000.0 / kRate);
            }
    }
}

TEST_P(KnobsOf, TransientsAndReleaseAreLinkedApart) {
    const Burst b = burst(squareFor(700.0), 200.0, 200.0);
    Signal quiet = squareFor(700.0);
    for (float& sample : quiet) sample *= static_cast<float>(kRestGain);
    struct Down {
        double loud, other;
    };
    const auto downAt = [&](const Knobs& knobs, std::size_t place) {
        const Channels in = {b.signal, quiet};
        const Channels out = limited(setupOf(GetParam(), knobs, kStereoLayout), in, 256);
        return Down{reductionsDb(in[0], out[0])[place], reductionsDb(in[1], out[1])[place]};
    };
    const std::size_t soon = b.start + atMs(0.5);
    const std::size_t later = b.end + atMs(50.0);
    // One detector of Dynamic always hears both channels, and lifts the other one by less than this.
    const double aloneDb = GetParam() == Style::Dynamic ? 1.0 : 0.2;

    const Knobs apart{.linkTransients = 0.0f, .linkRelease = 0.0f};
    EXPECT_NEAR(downAt(apart, soon).other, 0.0, aloneDb);
    EXPECT_NEAR(downAt(apart, later).other, 0.0, aloneDb);

    const Knobs transients{.linkTransients = 0.5f, .linkRelease = 0.0f};
    EXPECT_NEAR(downAt(transients, soon).other, downAt(transients, soon).loud, 0.5);
    EXPECT_NEAR(downAt(transients, later).other, 0.0, aloneDb);
    EXPECT_GT(downAt(transients, later).loud, 3.0);

    const Knobs release{.linkTransients = 0.0f, .linkRelease = 0.5f};
    EXPECT_NEAR(downAt(release, later).other, downAt(release, later).loud, 0.5);

    const Knobs together{.linkTransients = 0.5f, .linkRelease = 0.5f};
    for (const std::size_t place : {soon, later}) {
        EXPECT_NEAR(downAt(together, place).other, downAt(together, place).loud, 1e-3);
    }
}

TEST_P(KnobsOf, TimesMeanTheSameAtEveryRate) {
    const auto recoveryAt = [](double rate) {
        return recoveryMs(GetParam(), {.releaseMs = 200.0f}, 300.0, rate);
    };
    EXPECT_NEAR(recoveryAt(96000.0) / recoveryAt(48000.0), 1.0, 0.03);
}

// --- Automation ---

constexpr int kBlock = 315;

}  // namespace
}  // namespace vanta::test
