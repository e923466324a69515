#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <memory>
#include <vector>

#include "limiter/overshoot_limiter.hpp"
#include "limiter/smart_clipper.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"

namespace vanta {
namespace {

using test::Signal;
constexpr float kRate = 48000.0f;
constexpr int kWindow = 2400;

// ---- SmartClipper ----

struct ClipperRig {
    explicit ClipperRig(Signal signal, int domain = GainChangeDomain::Decibels, float rate = kRate)
        : source(environment, std::move(signal)), element(environment) {
        environment.setSampleRate(rate);
        element.source = &source;
        element.domain = domain;
    }
    Signal run(const std::vector<int>& blocks) { return test::runElement(environment, element, blocks); }

    wave::Environment environment{256};
    test::VectorSource source;
    SmartClipper element;
};

/// The excess and the straight lines over its peaks, with a memory without end and times from the start.
Signal straightLines(const Signal& level, const Signal& excess, std::int64_t window) {
    struct Point {
        std::int64_t time;
        double value;
    };
    std::deque<Point> points;  // the first is the line's left end
    Signal out;
    int before = 0;  // the last step: up 1, level 0, down -1
    float previous = -180;
    for (std::int64_t n = 0; n < static_cast<std::int64_t>(level.size()); ++n) {
        const auto i = static_cast<std::size_t>(n);
        const double difference = double{level[i]} - previous;
        const int step = std::abs(difference) <= 0x1p-23 ? 0 : difference > 0 ? 1 : -1;
        const bool peak = step != before && step <= 0 && before >= 0;
        const Point last{n - 1, i ? excess[i - 1] : 0.0};
        bool keep = false;
        if (points.size() > 1 && points[1].time < n - window) {
            keep = points.size() == 2 && !peak && points[1].value != 0;
            points.pop_front();
        }
        if (points.size() <= 1 && peak) points = {{n - window - 1, 0.0}};
        if (keep || peak) points.push_back(last);
        double line = 0;
        if (points.size() > 1) {
            const double share = static_cast<double>(n - window - points[0].time) /
                                 static_cast<double>(points[1].time - points[0].time);
            line = points[0].value + (points[1].value - points[0].value) * share;
        }
        const double delayed = n >= window ? excess[static_cast<std::size_t>(n - window)] : 0.0;
        out.push_back(static_cast<float>(std::max(line, delayed)));
        before = step;
        previous = level[i];
    }
    return out;
}

/// Levels in dB that swing around 0 with the roughness of music, and runs of up, level, down: the densest
/// points.
Signal levels(std::uint64_t seed, std::size_t count) {
    test::Random random(seed);
    Signal signal;
    while (signal.size() < count) {
        const int kind = random.between(0, 3);
        const int length = random.between(10, 6000);
        for (int i = 0; i < length; ++i) {
            constexpr float kBumps[] = {3, 3, 1};
            if (kind == 0) {
                signal.push_back(-20.0f);
            } else if (kind == 1) {
                signal.push_back(kBumps[i % 3]);
            } else {
                signal.push_back(static_cast<float>(12 * std::sin(i * 0.07) + 4 * random.bipolar()));
            }
        }
    }
    signal.resize(count);
    return signal;
}

Signal excessOver(const Signal& level, float threshold) {
    Signal excess;
    for (const float x : level) excess.push_back(std::max(x - threshold, 0.0f));
    return excess;
}

void expectNear(const Signal& actual, const Signal& expected, double tolerance) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) ASSERT_NEAR(actual[i], expected[i], tolerance) << i;
}

TEST(SmartClipper, LeadsFromPeakToPeakInStraightLines) {
    const Signal in = levels(1, 100000);
    ClipperRig rig(in);
    EXPECT_EQ(rig.element.windowSamples(), kWindow);
    const Signal expected = straightLines(in, excessOver(in, 0), kWindow);
    expectNear(rig.run(test::randomBlocks(100000, 256, 1)), expected, 2e-5);
    rig.environment.resetGraph(wave::ResetMode::ResetActive);
    rig.source.rewind();
    expectNear(rig.run(test::evenBlocks(100000, 256)), expected, 2e-5);
}

TEST(SmartClipper, RisesToASinglePeakAndFallsFromIt) {
    constexpr int kPeak = 4000;
    Signal in(12000, -20.0f);
    in[kPeak] = 6.0f;
    ClipperRig rig(in);
    const Signal out = rig.run(test::evenBlocks(12000, 240));
    const auto at = [&](int i) { return out[static_cast<std::size_t>(i)]; };
    EXPECT_EQ(at(kPeak), 0.0f);
    for (int i = 0; i <= kWindow; ++i) EXPECT_NEAR(at(kPeak + i), 6.0 * i / kWindow, 0.01) << i;
    EXPECT_EQ(at(kPeak + kWindow), 6.0f);
    for (int i = 0; i <= kWindow; ++i)
        EXPECT_NEAR(at(kPeak + kWindow + i), 6.0 - 6.0 * i / kWindow, 0.01) << i;
    EXPECT_NEAR(out.back(), 0.0, 1e-6);
}

TEST(SmartClipper, DoesNotFallBackBetweenPeaksWithinItsWindow) {
    for (const double second : {3.0, 9.0}) {
        Signal in(12000, -20.0f);
        const int first = 4000, gap = 1440;  // 30 ms
        in[first] = 6.0f;
        in[first + gap] = static_cast<float>(second);
        ClipperRig rig(in);
        const Signal out = rig.run(test::evenBlocks(12000, 240));
        for (int i = 0; i <= gap; ++i) {
            EXPECT_NEAR(out[static_cast<std::size_t>(first + kWindow + i)], 6.0 + (second - 6.0) * i / gap,
                        1e-4)
                << i;
        }
    }
}

TEST(SmartClipper, AlwaysCoversTheExcessOfAWindowAgo) {
    for (const float rate : {8000.0f, 44100.0f, 192000.0f}) {
        const Signal in = test::pinkNoise(3, 60000, 0.5);
        Signal magnitude, thresholds;
        for (std::size_t i = 0; i < in.size(); ++i) {
            magnitude.push_back(std::abs(in[i]));
            thresholds.push_back(-12.0f + 6.0f * std::sin(static_cast<float>(i) * 0.01f));
        }
        for (const bool moving : {false, true}) {
            ClipperRig rig(magnitude, GainChangeDomain::Amplitude, rate);
            test::VectorSource threshold(rig.environment, moving ? thresholds : Signal(60000, -12.0f),
                                         test::ConstantFlag::WhereTrue);
            rig.element.threshold.setSource(&threshold);
            const Signal out = rig.run(test::evenBlocks(60000, 250));
            const auto window = static_cast<std::size_t>(rig.element.windowSamples());
            EXPECT_EQ(window, static_cast<std::size_t>(rate * 0.05 + 1e-6));
            for (std::size_t i = window; i < out.size(); ++i) {
                // What is left after the reduction is at most the threshold.
                const double ceiling = std::pow(10.0, (moving ? thresholds[i - window] : -12.0f) / 20);
                ASSERT_LE(magnitude[i - window] * (1.0 - out[i]), ceiling * (1 + 1e-6)) << i;
                ASSERT_LT(out[i], 1.0f);
            }
        }
    }
}

TEST(SmartClipper, IsSilentBelowItsThreshold) {
    Signal in = test::whiteNoise(4, 20000, 20.0);
    for (float& x : in) x -= 20.1f;
    ClipperRig rig(in);
    EXPECT_EQ(rig.run(test::evenBlocks(20000, 250)), Signal(20000, 0.0f));
    EXPECT_TRUE(rig.element.isConstant());
}

// ---- OvershootLimiter ----

struct OvershootRig {
    explicit OvershootRig(Signal signal, float rate = kRate) : source(environment, std::move(signal)) {
        environment.setSampleRate(rate);
        style = std::make_unique<OvershootLimiter::Style>(environment);
        element = std::make_unique<OvershootLimiter>(environment, *style);
        element->source = &source;
    }
    Signal run(const std::vector<int>& blocks) { return test::runElement(environment, *element, blocks); }

    wave::Environment environment{256};
    test::VectorSource source;
    std::unique_ptr<OvershootLimiter::Style> style;
    std::unique_ptr<OvershootLimiter> element;
};

constexpr double kCeilingDb = -1.0;
const double kCeiling = std::pow(10.0, kCeilingDb / 20);

/// The largest sample of the delayed signal after the gain, as a factor of the ceiling.
double largestLimited(const Signal& in, const Signal& gain, int delay) {
    double largest = 0;
    const auto lag = static_cast<std::size_t>(delay);
    for (std::size_t i = lag; i < gain.size(); ++i) {
        largest = std::max(largest, std::abs(double{in[i - lag]} * gain[i]) / kCeiling);
    }
    return largest;
}

TEST(OvershootLimiter, HoldsTheCeilingSmoothlyAtItsDelay) {
    for (const float rate : {8000.0f, 44100.0f, 48000.0f, 96000.0f, 192000.0f, 384000.0f}) {
        const int delay = OvershootLimiter::delaySamples(rate);
        EXPECT_EQ(delay, 128 + static_cast<int>(rate * 0.00133 + 1e-6));
        constexpr int kCount = 60000;
        Signal first = test::impulse(kCount, 0, 2.0);
        for (const Signal& in :
             {test::whiteNoise(1, kCount, 1.5), test::sine(30, rate, kCount, 1.2),
              test::bursts(5000, rate, kCount, 20, 900, 3.0), test::square(441, rate, kCount, 0.95), first}) {
            OvershootRig rig(in, rate);
            rig.element->ceiling = static_cast<float>(kCeilingDb);
            const Signal gain = rig.run(test::randomBlocks(kCount, 256, 5));
            EXPECT_LE(largestLimited(in, gain, delay), 1 + 2e-6) << rate;
            EXPECT_LE(*std::max_element(gain.begin(), gain.end()), 1.0f + 1e-6f);
        }
    }
}

TEST(OvershootLimiter, TakesASinglePeakDownInAWindowAroundIt) {
    constexpr int kPeak = 3000;
    OvershootRig rig(test::impulse(8000, kPeak, 2.0));
    const Signal gain = rig.run(test::evenBlocks(8000, 200));
    const int delay = OvershootLimiter::delaySamples(kRate);
    const int window = delay - 128;
    EXPECT_NEAR(gain[static_cast<std::size_t>(kPeak + delay)], 0.5 * 0.996, 1e-5);
    for (int i = 0; i < 8000; ++i) {
        const int distance = i - (kPeak + delay);
        const float g = gain[static_cast<std::size_t>(i)];
        const float before = i > 0 ? gain[static_cast<std::size_t>(i - 1)] : 1.0f;
        if (std::abs(distance) > window) {
            EXPECT_NEAR(g, 1.0f, 1e-6) << distance;
        } else if (distance <= 0) {
            EXPECT_LE(g, before + 1e-6) << distance;
        } else {
            EXPECT_GE(g, before - 1e-6) << distance;
        }
    }
}

TEST(OvershootLimiter, IsExactWithoutDelayInHardMode) {
    const Signal in = test::whiteNoise(2, 5000, 2.0);
    OvershootRig rig(in);
    rig.element->mode = OvershootLimiter::Hard;
    rig.element->ceiling = static_cast<float>(kCeilingDb);
    const Signal gain = rig.run(test::randomBlocks(5000, 256, 6));
    const float ceiling = static_cast<float>(kCeiling);
    for (std::size_t i = 0; i < in.size(); ++i) {
        ASSERT_LE(std::abs(in[i] * gain[i]), ceiling) << i;
        ASSERT_TRUE(std::abs(in[i]) > kCeiling * (1 - 1e-6) || gain[i] == 1.0f) << i;
        ASSERT_TRUE(std::abs(in[i]) < kCeiling || std::abs(in[i] * gain[i]) > kCeiling * (1 - 1e-6)) << i;
    }
}

TEST(OvershootLimiter, GivesAConstantGainOfOneWhereNothingPassesTheCeiling) {
    for (const auto mode : {OvershootLimiter::Smooth, OvershootLimiter::Off}) {
        OvershootRig rig(test::whiteNoise(3, 4000, mode == OvershootLimiter::Off ? 4.0 : 1.0));
        rig.element->mode = mode;
        EXPECT_EQ(rig.run(test::evenBlocks(4000, 200)), Signal(4000, 1.0f));
        EXPECT_TRUE(rig.element->isConstant());
    }
}

TEST(OvershootLimiter, GoesOverToAnotherRate) {
    constexpr int kCount = 20000;
    const Signal in = test::whiteNoise(4, kCount, 2.0);
    OvershootRig rig(in);
    rig.element->ceiling = static_cast<float>(kCeilingDb);
    rig.run(test::evenBlocks(2000, 200));
    rig.environment.setSampleRate(176400.0f);
    auto fresh = std::make_unique<OvershootLimiter::Style>(rig.environment);
    rig.element->setStyle(*fresh);
    rig.style = std::move(fresh);
    rig.source.rewind();
    const Signal gain = rig.run(test::evenBlocks(kCount, 200));
    EXPECT_LE(largestLimited(in, gain, OvershootLimiter::delaySamples(176400)), 1 + 2e-6);
}

}  // namespace
}  // namespace vanta
