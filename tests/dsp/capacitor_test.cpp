#include "dsp/capacitor.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "dsp/fast_exponential.hpp"
#include "dsp/kernel/follower.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"

namespace vanta {
namespace {

using test::Signal;
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
    test::Random random(seed);
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
    test::Random random(seed);
    Signal signal;
    while (signal.size() < count) {
        signal.insert(signal.end(), static_cast<std::size_t>(random.between(500, 2000)),
                      static_cast<float>(random.between(0, 20)));
    }
    signal.resize(count);
    return signal;
}

void apply(const Settings& s, Capacitor& c) {
    const auto set = [](FloatParameterBus& bus, float value) { bus.parameter().setValue(value, 0.0f); };
    set(c.attack, s.attack);
    set(c.attackCurve, s.attackCurve);
    set(c.attackSmoothing, s.attackSmoothing);
    set(c.release, s.release);
    set(c.releaseCurve, s.releaseCurve);
    set(c.releaseSmoothing, s.releaseSmoothing);
    set(c.hold, s.hold);
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
            sources.push_back(std::make_unique<test::VectorSource>(environment, Signal{}));
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
        auto outputs = test::runElements(environment, order, blocks);
        if (lastFirst) std::reverse(outputs.begin(), outputs.end());
        return outputs;
    }

    Capacitor::Style style;
    wave::Environment environment;
    std::vector<std::unique_ptr<test::VectorSource>> sources;
    std::vector<std::unique_ptr<Capacitor>> capacitors;
};

Signal follow(const Signal& in, const Settings& s, const std::vector<int>& blocks, int largestBlock = 256) {
    Bench bench(1, largestBlock);
    bench.applyAll(s);
    bench.play(0, in);
    return bench.run(blocks)[0];
}

TEST(FollowerCoefficients, AgreeWithTheirDefinitionAtAnyTimeAndLength) {
    std::vector<float> seconds{0.0f,  -1.0f, 1e-12f, 5.4e-7f, 1e-6f, 1e-5f, 9e-5f,
                               1e-4f, 1e-3f, 0.01f,  1,       10,    50};
    for (int offset = 0; offset < 3; ++offset) {
        for (std::size_t count = 0; count + 3 <= seconds.size(); ++count) {
            std::vector<float> out(count + 1, -7.0f);
            kernel::followerCoefficients(seconds.data() + offset, kRate, out.data(), count);
            EXPECT_EQ(out[count], -7.0f);
            for (std::size_t i = 0; i < count; ++i) {
                const double n = double{seconds[i + static_cast<std::size_t>(offset)]} * kRate;
                const double expected = n <= 0 ? 1.0 : -std::expm1(-std::log(10.0) / n);
                EXPECT_NEAR(out[i], expected, 4e-7 * expected) << n << " samples";
            }
        }
    }
}

TEST(FastExponential, IsAccurateAlsoNextToOne) {
    for (double x = -80; x < 80; x += 0.00731) {
        EXPECT_NEAR(kFastExponential(x) / std::exp(x), 1.0, 2e-11) << x;
    }
    for (double x = -80; x < -1e-12; x *= 0.97) {
        EXPECT_NEAR(kFastExponential.complement(x) / -std::expm1(x), 1.0, 3e-8) << x;
    }
}

TEST(Capacitor, CoversNineTenthsOfAStepInItsTimes) {
    for (const float seconds : {0.0005f, 0.01f, 0.3f}) {
        Settings s;
        s.attack = s.release = seconds;
        const auto samples = static_cast<std::size_t>(std::lround(seconds * kRate));
        Signal step(samples, 12.0f);
        step.resize(2 * samples, 0.0f);
        const Signal out = follow(step, s, test::evenBlocks(static_cast<int>(step.size()), 256));
        EXPECT_NEAR(out[samples - 1], 0.9 * 12, 1e-3);
        EXPECT_NEAR(out[2 * samples - 1], 0.1 * 0.9 * 12, 1e-3);
    }
}

TEST(Capacitor, JumpsWithTimesOfZero) {
    const Signal in = gainChanges(1, 1000);
    Settings s;
    s.attack = s.release = 0;
    EXPECT_EQ(follow(in, s, test::evenBlocks(1000, 100)), in);
}

TEST(Capacitor, FollowsItsDefinitionWithEveryModifier) {
    const auto blocks = test::evenBlocks(20000, 256);
    for (const Settings& s : modifierSets()) {
        const Signal in = s.hold > 0 ? steps(2, 20000) : gainChanges(2, 20000);
        // With a hold, the release smoothing is looked up only now and then.
        const double tolerance = s.hold != 0 && s.releaseSmoothing != 0 ? 0.02 : 2e-5;
        EXPECT_LT(largestDifference(follow(in, s, blocks), reference(in, s)), tolerance)
            << s.attackCurve << ' ' << s.attackSmoothing << ' ' << s.releaseCurve << ' ' << s.releaseSmoothing
            << ' ' << s.hold;
    }
}

TEST(Capacitor, TakesASmoothedTimeBelowZeroAsZero) {
    Settings s{.release = 0.01f, .releaseSmoothing = -0.5f};
    Signal in(100, 6.0f);
    in.resize(5000, 0.0f);
    const Signal out = follow(in, s, test::evenBlocks(5000, 250));
    EXPECT_LT(largestDifference(out, reference(in, s)), 0.02);
    // Below some distance exp(-d) / 2 exceeds the release time: the rest falls at once.
    EXPECT_EQ(out[2000], 0.0f);
}

TEST(Capacitor, EasesTheReleaseInOverTheHold) {
    Settings s{.attack = 0, .release = 0, .hold = 0.01f};
    Signal in(10, 24.0f);
    in.resize(1000, 0.0f);
    const Signal out = follow(in, s, test::evenBlocks(1000, 256));
    // In the first sample the ramp stands at one of 480 samples, and its square is taken.
    EXPECT_NEAR(out[10], 24.0 * (1 - 1.0 / (480.0 * 480.0)), 1e-5);
    EXPECT_GT(out[40], 20.0f);
    EXPECT_LT(out[150], 1e-3f);
    // A tiny distance is not held at all.
    Signal small(10, 0.01f);
    small.resize(100, 0.0f);
    EXPECT_EQ(follow(small, s, test::evenBlocks(100, 50))[10], 0.0f);
}

TEST(Capacitor, GivesTheSameForAnySplitIntoBlocks) {
    const Signal in = gainChanges(3, 30000);
    for (const Settings& s : modifierSets()) {
        const Signal whole = follow(in, s, test::evenBlocks(30000, 512), 512);
        const Signal split = follow(in, s, test::randomBlocks(30000, 512, 7), 512);
        const Signal single = follow(in, s, test::evenBlocks(30000, 1), 512);
        EXPECT_LT(largestDifference(whole, split), 2e-6) << s.hold;
        EXPECT_LT(largestDifference(whole, single), 2e-6);
    }
}

TEST(Capacitor, FollowsTimesThatMove) {
    Signal times;
    for (int i = 0; i < 8000; ++i) times.push_back(0.001f + 0.00001f * static_cast<float>(i % 977));
    const Signal in = gainChanges(4, 8000);
    const auto run = [&](const std::vector<int>& blocks) {
        Bench bench(1);
        test::VectorSource attack(bench.environment, times);
        test::VectorSource release(bench.environment, times);
        bench[0].attack.setSource(&attack);
        bench[0].release.setSource(&release);
        bench.play(0, in);
        return bench.run(blocks)[0];
    };
    double level = 0;
    Signal expected;
    for (std::size_t i = 0; i < in.size(); ++i) {
        level += -std::expm1(-std::log(10.0) / (double{times[i]} * kRate)) * (in[i] - level);
        expected.push_back(static_cast<float>(level));
    }
    EXPECT_LT(largestDifference(run(test::evenBlocks(8000, 256)), expected), 1e-5);
    EXPECT_LT(largestDifference(run(test::randomBlocks(8000, 256, 5)), expected), 1e-5);
}

TEST(Capacitor, HandsItsInputOnWhileBothRest) {
    Bench bench(1);
    Signal in(256, 1e-10f);
    in.resize(512, 0.0f);
    in[300] = 2e-9f;
    bench.play(0, in);
    test::VectorSource release(bench.environment, {});
    bench[0].release.setSource(&release);
    test::runElement(bench.environment, bench[0], {256});
    EXPECT_EQ(&bench[0].current(), &bench.sources[0]->current());
    EXPECT_EQ(release.blocksPlayed(), 1) << "what drives a control may not miss a block";
    test::runElement(bench.environment, bench[0], {256});
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
        for (const Signal& out : bench.run(test::evenBlocks(400000, 8192))) {
            EXPECT_EQ(out.back(), 0.0f);
            for (const float x : out) ASSERT_TRUE(x == 0.0f || std::isnormal(x)) << x;
        }
    }
}

TEST(Capacitor, StartsAfreshAfterAReset) {
    const Signal in = gainChanges(5, 3000);
    for (const Settings& s : modifierSets()) {
        Bench bench(1);
        bench.applyAll(s);
        bench.play(0, gainChanges(6, 5000));
        bench.run(test::evenBlocks(4000, 200));
        bench.environment.resetGraph(wave::ResetMode::ResetActive);
        bench.play(0, in);
        EXPECT_LT(largestDifference(bench.run(test::evenBlocks(3000, 200))[0],
                                    follow(in, s, test::evenBlocks(3000, 200))),
                  2e-6);
    }
}

// ---- Partners ----

class LinkedCapacitors : public ::testing::TestWithParam<Settings> {};

TEST_P(LinkedCapacitors, GiveWhatEachGivesAlone) {
    const Signal left = gainChanges(10, 20000);
    const Signal right = gainChanges(11, 20000);
    const auto blocks = test::evenBlocks(20000, 256);
    Bench bench(2);
    bench.applyAll(GetParam());
    bench.link();
    bench.play(0, left);
    bench.play(1, right);
    const auto outputs = bench.run(blocks);
    // In one pass, smoothing also counts above 10 dB, where it adds less than 1/20,000 of its time.
    const double tolerance =
        GetParam().releaseSmoothing != 0 || GetParam().attackSmoothing != 0 ? 0.05 : 2e-5;
    EXPECT_LT(largestDifference(outputs[0], follow(left, GetParam(), blocks)), tolerance);
    EXPECT_LT(largestDifference(outputs[1], follow(right, GetParam(), blocks)), tolerance);
}

TEST_P(LinkedCapacitors, SwapWithTheirSidesWhoeverIsPulledFirst) {
    Signal left = gainChanges(12, 20000);
    Signal right = gainChanges(13, 20000);
    // Each side rests for some blocks while the other does not.
    std::fill(left.begin() + 3000, left.begin() + 9000, 0.0f);
    std::fill(right.begin(), right.begin() + 1000, 0.0f);
    std::fill(right.begin() + 12000, right.end(), 0.0f);
    const auto run = [&](const Signal& a, const Signal& b, bool lastFirst) {
        Bench bench(2);
        bench.applyAll(GetParam());
        bench.link();
        bench.play(0, a);
        bench.play(1, b);
        return bench.run(test::evenBlocks(20000, 128), lastFirst);
    };
    const auto straight = run(left, right, false);
    for (const bool lastFirst : {false, true}) {
        const auto swapped = run(right, left, lastFirst);
        EXPECT_EQ(straight[0], swapped[1]) << lastFirst;
        EXPECT_EQ(straight[1], swapped[0]) << lastFirst;
    }
    EXPECT_EQ(run(left, left, false)[0], run(left, left, false)[1]);
}

TEST_P(LinkedCapacitors, DoNotHearEachOther) {
    const Signal left = gainChanges(14, 8000);
    const auto run = [&](const Signal& right) {
        Bench bench(2);
        bench.applyAll(GetParam());
        bench.link();
        bench.play(0, left);
        bench.play(1, right);
        return bench.run(test::evenBlocks(8000, 64))[0];
    };
    const Signal beside = run(gainChanges(15, 8000));
    EXPECT_EQ(run(Signal(8000, 0.0f)), beside);
    EXPECT_EQ(run(Signal(8000, 30.0f)), beside);
}

INSTANTIATE_TEST_SUITE_P(Modifiers, LinkedCapacitors, ::testing::ValuesIn(modifierSets()),
                         [](const auto& set) { return std::to_string(set.index); });

TEST(Capacitor, ComputesAPartnerThatNobodyPulls) {
    Bench bench(2);
    bench.applyAll({.releaseCurve = 0.5f});
    bench.link();
    bench.play(0, Signal(4000, 8.0f));
    bench.play(1, Signal(4000, 12.0f));
    test::runElement(bench.environment, bench[0], test::evenBlocks(4000, 250));
    EXPECT_NEAR(bench[1].current()[249], 12.0f, 1e-3f);
}

TEST(Capacitor, ClearsBothPartnersWhenOneIsReset) {
    for (const int reset : {0, 1}) {
        for (const bool lastFirst : {false, true}) {
            Bench bench(2);
            bench.applyAll({.attack = 0.1f, .attackCurve = 0.5f});
            bench.link();
            bench.play(0, Signal(4000, 8.0f));
            bench.play(1, Signal(4000, 12.0f));
            bench.run(test::evenBlocks(4000, 250), lastFirst);
            bench[reset].reset();
            bench.play(0, Signal(250, 8.0f));
            bench.play(1, Signal(250, 12.0f));
            const auto outputs = bench.run({250}, lastFirst);
            EXPECT_LT(outputs[0][0], 0.1f);
            EXPECT_LT(outputs[1][0], 0.1f);
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
    const Signal out = bench.run(test::evenBlocks(4000, 250))[0];
    for (std::size_t i = 1; i < out.size(); ++i) ASSERT_GE(out[i], out[i - 1]) << i;
}

TEST(Capacitor, PartsBothWays) {
    Bench bench(2);
    bench.link();
    EXPECT_EQ(bench[1].partner(), &bench[0]);
    {
        Capacitor third(bench.environment, bench.style);
        third.setPartner(&bench[1]);
        EXPECT_EQ(bench[0].partner(), nullptr);
        EXPECT_EQ(bench[1].partner(), &third);
    }
    EXPECT_EQ(bench[1].partner(), nullptr);
    bench.link();
    bench[1].setPartner(nullptr);
    EXPECT_EQ(bench[0].partner(), nullptr);
}

}  // namespace
}  // namespace vanta
