#include "dsp/envelope/capacitor.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "foundation/fast_exponential.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/instruction_sets.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

constexpr float kRate = 48000.0f;

struct Settings {
    float attack = 0.0005f, attackCurve = 1, attackSmoothing = 0;
    float release = 0.1f, releaseCurve = 1, releaseSmoothing = 0, hold = 0;
};

/// What the follower is by definition, in double precision, with an exponential wherever one is due.
Signal reference(const Signal& in, const Settings& s, double rate = kRate) {
    Signal out;
    double level = 0, ramp = 0;
    bool releasing = false;
    for (const float x : in) {
        double d = x - level;
        const bool attacking = d > -0x1p-23;
        const double sign = attacking ? 1 : -1;
        double t = attacking ? s.attack : s.release;
        const double bent = t * d * sign * 0.1;
        t = bent + (t - bent) * (attacking ? s.attackCurve : s.releaseCurve);
        if (!attacking && s.hold > 0) {
            if (!releasing) ramp = 0;
            ramp = std::min(ramp + 1 / std::max(-d / 24 * s.hold * rate, 1.0), 1.0);
            d *= ramp * ramp;
        }
        releasing = !attacking;
        // With a hold, steps from 10 dB up are not smoothed; without, they hardly are.
        if (s.hold == 0 || std::abs(d) < 10)
            t += std::exp(-std::abs(d)) * (attacking ? s.attackSmoothing : s.releaseSmoothing);
        const double n = t * rate;
        level += n <= 0x1p-23 ? d : -std::expm1(-std::log(10.0) / n) * d;
        out.push_back(static_cast<float>(level));
    }
    return out;
}

/// Gain changes as a detector makes them: dips of up to 20 dB that come and go, with rests.
Signal gainChanges(std::uint64_t seed, std::size_t count) {
    Random random(seed);
    Signal signal;
    while (signal.size() < count) {
        const int length = random.between(5, 2000);
        const double depth = random.between(0, 3) == 0 ? 0.0 : 10.0 + 10.0 * random.bipolar();
        for (int i = 0; i < length; ++i) {
            signal.push_back(static_cast<float>(depth * (0.8 + 0.2 * std::cos(i * 0.05))));
        }
    }
    signal.resize(count);
    return signal;
}

/// Dips of constant depth. A hold starts anew wherever the level crosses the signal, and from there on the
/// smallest rounding counts; steps do not come near.
Signal steps(std::uint64_t seed, std::size_t count) {
    Random random(seed);
    Signal signal;
    while (signal.size() < count) {
        signal.insert(signal.end(), static_cast<std::size_t>(random.between(500, 2000)),
                      static_cast<float>(random.between(0, 20)));
    }
    signal.resize(count);
    return signal;
}

void apply(const Settings& s, Capacitor& c) {
    const std::pair<wave::FloatParameterBus&, float> values[] = {
        {c.attack, s.attack},   {c.attackCurve, s.attackCurve},   {c.attackSmoothing, s.attackSmoothing},
        {c.release, s.release}, {c.releaseCurve, s.releaseCurve}, {c.releaseSmoothing, s.releaseSmoothing},
        {c.hold, s.hold},
    };
    for (const auto& [bus, value] : values) bus.parameter().setValue(value, 0.0f);
}

/// Every combination of what can make a time depend on the signal.
std::vector<Settings> modifierSets() {
    std::vector<Settings> sets;
    for (unsigned bits = 0; bits < 32; ++bits) {
        sets.push_back({.attack = 0.004f,
                        .attackCurve = bits & 1 ? 0.3f : 1.0f,
                        .attackSmoothing = bits & 2 ? 0.01f : 0.0f,
                        .release = 0.06f,
                        .releaseCurve = bits & 4 ? 0.0f : 1.0f,
                        .releaseSmoothing = bits & 8 ? 0.2f : 0.0f,
                        .hold = bits & 16 ? 0.05f : 0.0f});
    }
    return sets;
}

double largestDifference(const Signal& a, const Signal& b) {
    EXPECT_EQ(a.size(), b.size());
    double largest = 0;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        largest = std::max(largest, std::abs(double{a[i]} - double{b[i]}));
    }
    return largest;
}

/// Two capacitors that are partners.
struct Pair {
    explicit Pair(const Settings& s) {
        environment.setSampleRate(kRate);
        for (std::size_t c = 0; c < 2; ++c) {
            sides[c].source = &sources[c];
            apply(s, sides[c]);
        }
        sides[0].setPartner(&sides[1]);
    }
    void play(Signal left, Signal right) {
        sources[0].play(std::move(left));
        sources[1].play(std::move(right));
    }
    std::vector<Signal> run(const std::vector<int>& blocks, bool lastFirst = false) {
        wave::Producer* const order[] = {&sides[lastFirst], &sides[!lastFirst]};
        auto outputs = runElements(environment, order, blocks);
        if (lastFirst) std::swap(outputs[0], outputs[1]);
        return outputs;
    }

    Capacitor::Style style;
    wave::Environment environment{256};
    std::array<VectorSource, 2> sources{VectorSource(environment, {}), VectorSource(environment, {})};
    std::array<Capacitor, 2> sides{Capacitor(environment, style), Capacitor(environment, style)};
};

Signal follow(const Signal& in, const Settings& s) {
    Capacitor::Style style;
    ElementRig<Capacitor> rig(in, style);
    apply(s, rig.element);
    return rig.run(static_cast<int>(in.size()));
}

TEST(FastExponential, IsAccurateAlsoNextToOne) {
    for (double x = -80; x < 80; x += 0.00731) {
        EXPECT_NEAR(kFastExponential(x) / std::exp(x), 1.0, 2e-11) << x;
    }
    for (double x = -80; x < -1e-12; x *= 0.97) {
        EXPECT_NEAR(kFastExponential.complement(x) / -std::expm1(x), 1.0, 3e-8) << x;
    }
}

TEST(Capacitor, FollowsItsDefinitionWithEveryModifier) {
    forEachInstructionSet([](const char* set) {
        for (const Settings& s : modifierSets()) {
            const Signal in = s.hold > 0 ? steps(2, 20000) : gainChanges(2, 20000);
            // With a hold, the release smoothing is looked up only now and then.
            const double tolerance = s.hold != 0 && s.releaseSmoothing != 0 ? 0.02 : 2e-5;
            EXPECT_LT(largestDifference(follow(in, s), reference(in, s)), tolerance)
                << set << ' ' << s.attackCurve << ' ' << s.attackSmoothing << ' ' << s.releaseCurve << ' '
                << s.releaseSmoothing << ' ' << s.hold;
        }
    });
}

TEST(Capacitor, TakesASmoothedTimeBelowZeroAsZero) {
    Settings s{.release = 0.01f, .releaseSmoothing = -0.5f};
    Signal in(100, 6.0f);
    in.resize(5000, 0.0f);
    const Signal out = follow(in, s);
    EXPECT_LT(largestDifference(out, reference(in, s)), 0.02);
    // Below some distance exp(-d) / 2 exceeds the release time: the rest falls at once.
    EXPECT_EQ(out[2000], 0.0f);
}

TEST(Capacitor, HandsItsInputOnWhileBothRest) {
    Signal in(256, 1e-10f);
    in.resize(512, 0.0f);
    in[300] = 2e-9f;
    Capacitor::Style style;
    ElementRig<Capacitor> rig(in, style);
    const VectorSource& release = rig.play(rig.element.release, {});
    rig.run(256);
    EXPECT_EQ(&rig.element.current(), &rig.source.current());
    EXPECT_EQ(release.blocksPlayed(), 1) << "what drives a control may not miss a block";
    rig.run(256);
    EXPECT_NE(&rig.element.current(), &rig.source.current());
}

// ---- Partners ----

class LinkedCapacitors : public ::testing::TestWithParam<Settings> {};

TEST_P(LinkedCapacitors, GiveWhatEachGivesAloneWhicheverSideItIsOnAndWhoeverIsPulledFirst) {
    const auto run = [&](const Signal& a, const Signal& b, bool lastFirst) {
        Pair pair(GetParam());
        pair.play(a, b);
        return pair.run(evenBlocks(20000, 128), lastFirst);
    };
    Signal left = gainChanges(10, 20000), right = gainChanges(11, 20000);
    // In one pass, smoothing also counts above 10 dB, where it adds less than 1/20,000 of its time.
    const double tolerance =
        GetParam().releaseSmoothing != 0 || GetParam().attackSmoothing != 0 ? 0.05 : 2e-5;
    const auto together = run(left, right, false);
    EXPECT_LT(largestDifference(together[0], follow(left, GetParam())), tolerance);
    EXPECT_LT(largestDifference(together[1], follow(right, GetParam())), tolerance);
    // Each side rests for some blocks while the other does not.
    std::fill(left.begin() + 3000, left.begin() + 9000, 0.0f);
    std::fill(right.begin(), right.begin() + 1000, 0.0f);
    std::fill(right.begin() + 12000, right.end(), 0.0f);
    const auto straight = run(left, right, false);
    for (const bool lastFirst : {false, true}) {
        const auto swapped = run(right, left, lastFirst);
        EXPECT_EQ(straight[0], swapped[1]) << lastFirst;
        EXPECT_EQ(straight[1], swapped[0]) << lastFirst;
    }
}

INSTANTIATE_TEST_SUITE_P(Modifiers, LinkedCapacitors, ::testing::ValuesIn(modifierSets()),
                         [](const auto& set) { return std::to_string(set.index); });

TEST(Capacitor, ClearsBothPartnersWhenOneIsReset) {
    for (const bool second : {false, true}) {
        for (const bool lastFirst : {false, true}) {
            Pair pair({.attack = 0.1f, .attackCurve = 0.5f});
            for (const int samples : {4000, 250}) {
                pair.play(Signal(4000, 8.0f), Signal(4000, 12.0f));
                const auto outputs = pair.run(evenBlocks(samples, 250), lastFirst);
                EXPECT_LT(outputs[0][0], 0.1f);
                EXPECT_LT(outputs[1][0], 0.1f);
                pair.sides[second].reset();
            }
        }
    }
}

// A reset that one side would carry out only with its next sound must not cut into the other's.
TEST(Capacitor, DoesNotClearAPartnerInTheMiddleOfASound) {
    Pair pair({.attack = 0.1f, .attackCurve = 0.5f});
    Signal late(2000, 0.0f);
    late.resize(4000, 8.0f);
    pair.play(Signal(4000, 12.0f), late);
    const Signal out = pair.run(evenBlocks(4000, 250))[0];
    for (std::size_t i = 1; i < out.size(); ++i) ASSERT_GE(out[i], out[i - 1]) << i;
}

}  // namespace
}  // namespace vanta::test
