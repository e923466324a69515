#include "dsp/envelope/capacitor.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "foundation/fast_exponential.hpp"
#include "kernel/follower.hpp"
#include "tests/support/element_rig.hpp"
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
        Settings s{.attack = 0.004f, .release = 0.06f};
        if (bits & 1) s.attackCurve = 0.3f;
        if (bits & 2) s.attackSmoothing = 0.01f;
        if (bits & 4) s.releaseCurve = 0.0f;
        if (bits & 8) s.releaseSmoothing = 0.2f;
        if (bits & 16) s.hold = 0.05f;
        sets.push_back(s);
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

/// One or two capacitors in a graph of their own.
struct Bench {
    explicit Bench(int channels, int largestBlock = 256) : environment(largestBlock) {
        environment.setSampleRate(kRate);
        for (int c = 0; c < channels; ++c) {
            sources.push_back(std::make_unique<VectorSource>(environment, Signal{}));
            capacitors.push_back(std::make_unique<Capacitor>(environment, style));
            capacitors.back()->source = sources.back().get();
        }
    }
    Capacitor& operator[](int c) { return *capacitors[static_cast<std::size_t>(c)]; }
    void play(int c, Signal signal) { sources[static_cast<std::size_t>(c)]->play(std::move(signal)); }
    void link() { (*this)[0].setPartner(&(*this)[1]); }
    void applyAll(const Settings& s) {
        for (auto& c : capacitors) apply(s, *c);
    }
    std::vector<Signal> run(const std::vector<int>& blocks, bool lastFirst = false) {
        std::vector<wave::Producer*> order;
        for (auto& c : capacitors) order.push_back(c.get());
        if (lastFirst) std::reverse(order.begin(), order.end());
        auto outputs = runElements(environment, order, blocks);
        if (lastFirst) std::reverse(outputs.begin(), outputs.end());
        return outputs;
    }

    Capacitor::Style style;
    wave::Environment environment;
    std::vector<std::unique_ptr<VectorSource>> sources;
    std::vector<std::unique_ptr<Capacitor>> capacitors;
};

Signal follow(const Signal& in, const Settings& s) {
    Bench bench(1);
    bench.applyAll(s);
    bench.play(0, in);
    return bench.run(evenBlocks(static_cast<int>(in.size()), 256))[0];
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
    for (const Settings& s : modifierSets()) {
        const Signal in = s.hold > 0 ? steps(2, 20000) : gainChanges(2, 20000);
        // With a hold, the release smoothing is looked up only now and then.
        const double tolerance = s.hold != 0 && s.releaseSmoothing != 0 ? 0.02 : 2e-5;
        EXPECT_LT(largestDifference(follow(in, s), reference(in, s)), tolerance)
            << s.attackCurve << ' ' << s.attackSmoothing << ' ' << s.releaseCurve << ' ' << s.releaseSmoothing
            << ' ' << s.hold;
    }
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
    Bench bench(1);
    Signal in(256, 1e-10f);
    in.resize(512, 0.0f);
    in[300] = 2e-9f;
    bench.play(0, in);
    VectorSource release(bench.environment, {});
    bench[0].release.setSource(&release);
    runElement(bench.environment, bench[0], {256});
    EXPECT_EQ(&bench[0].current(), &bench.sources[0]->current());
    EXPECT_EQ(release.blocksPlayed(), 1) << "what drives a control may not miss a block";
    runElement(bench.environment, bench[0], {256});
    EXPECT_NE(&bench[0].current(), &bench.sources[0]->current());
}

TEST(Capacitor, SettlesInSilenceWithoutSubnormalNumbers) {
    Signal in(1000, 20.0f);
    in.resize(400000, 0.0f);
    for (const Settings& s : modifierSets()) {
        Bench bench(2, 8192);
        bench.applyAll(s);
        bench.link();
        bench.play(0, in);
        bench.play(1, Signal(500, 10.0f));
        for (const Signal& out : bench.run(evenBlocks(400000, 8192))) {
            EXPECT_EQ(out.back(), 0.0f);
            for (const float x : out) ASSERT_TRUE(x == 0.0f || std::isnormal(x)) << x;
        }
    }
}

// ---- Partners ----

class LinkedCapacitors : public ::testing::TestWithParam<Settings> {};

TEST_P(LinkedCapacitors, GiveWhatEachGivesAloneWhicheverSideItIsOnAndWhoeverIsPulledFirst) {
    const auto run = [&](const Signal& a, const Signal& b, bool lastFirst) {
        Bench bench(2);
        bench.applyAll(GetParam());
        bench.link();
        bench.play(0, a);
        bench.play(1, b);
        return bench.run(evenBlocks(20000, 128), lastFirst);
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
    for (const int reset : {0, 1}) {
        for (const bool lastFirst : {false, true}) {
            Bench bench(2);
            bench.applyAll({.attack = 0.1f, .attackCurve = 0.5f});
            bench.link();
            for (const int samples : {4000, 250}) {
                bench.play(0, Signal(4000, 8.0f));
                bench.play(1, Signal(4000, 12.0f));
                const auto outputs = bench.run(evenBlocks(samples, 250), lastFirst);
                EXPECT_LT(outputs[0][0], 0.1f);
                EXPECT_LT(outputs[1][0], 0.1f);
                bench[reset].reset();
            }
        }
    }
}

// A reset that one side would carry out only with its next sound must not cut into the other's.
TEST(Capacitor, DoesNotClearAPartnerInTheMiddleOfASound) {
    Bench bench(2);
    bench.applyAll({.attack = 0.1f, .attackCurve = 0.5f});
    bench.link();
    Signal late(2000, 0.0f);
    late.resize(4000, 8.0f);
    bench.play(0, Signal(4000, 12.0f));
    bench.play(1, late);
    const Signal out = bench.run(evenBlocks(4000, 250))[0];
    for (std::size_t i = 1; i < out.size(); ++i) ASSERT_GE(out[i], out[i - 1]) << i;
}

}  // namespace
}  // namespace vanta::test
