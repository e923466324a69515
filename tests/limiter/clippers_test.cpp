#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <memory>
#include <vector>

#include "limiter/clippers/overshoot_limiter.hpp"
#include "limiter/clippers/smart_clipper.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

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
    Signal run(const std::vector<int>& blocks) { return runElement(environment, element, blocks); }

    wave::Environment environment{256};
    VectorSource source;
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
    Random random(seed);
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

TEST(SmartClipper, LeadsFromPeakToPeakInStraightLines) {
    const Signal in = levels(1, 100000);
    ClipperRig rig(in);
    EXPECT_EQ(rig.element.windowSamples(), kWindow);
    Signal excess;
    for (const float x : in) excess.push_back(std::max(x, 0.0f));
    const Signal expected = straightLines(in, excess, kWindow);
    const Signal out = rig.run(randomBlocks(100000, 256, 1));
    for (std::size_t i = 0; i < out.size(); ++i) ASSERT_NEAR(out[i], expected[i], 2e-5) << i;
}

// From nothing up to the first peak and from the last one down to nothing, a window each; between two peaks
// within a window it does not fall back.
TEST(SmartClipper, RisesToAPeakLeadsToTheNextAndFallsFromTheLast) {
    constexpr int kFirst = 4000, kGap = 1440, kSecond = kFirst + kGap;
    Signal in(12000, -20.0f);
    in[kFirst] = 6.0f;
    in[kSecond] = 9.0f;
    const Signal out = ClipperRig(in).run(evenBlocks(12000, 240));
    const auto expectLine = [&](int start, int length, double from, double to) {
        for (int i = 0; i <= length; ++i) {
            const double line = from + (to - from) * i / length;
            ASSERT_NEAR(out[static_cast<std::size_t>(start + i)], line, 0.01) << i;
        }
    };
    expectLine(kFirst, kWindow, 0.0, 6.0);
    expectLine(kFirst + kWindow, kGap, 6.0, 9.0);
    expectLine(kSecond + kWindow, kWindow, 9.0, 0.0);
}

TEST(SmartClipper, AlwaysCoversTheExcessOfAWindowAgo) {
    for (const float rate : {8000.0f, 44100.0f, 192000.0f}) {
        const Signal in = pinkNoise(3, 60000, 0.5);
        Signal magnitude, thresholds;
        for (std::size_t i = 0; i < in.size(); ++i) {
            magnitude.push_back(std::abs(in[i]));
            thresholds.push_back(-12.0f + 6.0f * std::sin(static_cast<float>(i) * 0.01f));
        }
        for (const bool moving : {false, true}) {
            ClipperRig rig(magnitude, GainChangeDomain::Amplitude, rate);
            VectorSource threshold(rig.environment, moving ? thresholds : Signal(60000, -12.0f),
                                   ConstantFlag::WhereTrue);
            rig.element.threshold.setSource(&threshold);
            const Signal out = rig.run(evenBlocks(60000, 250));
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

// ---- OvershootLimiter ----

struct OvershootRig {
    explicit OvershootRig(Signal signal, float rate = kRate) : source(environment, std::move(signal)) {
        environment.setSampleRate(rate);
        style = std::make_unique<OvershootLimiter::Style>(environment);
        element = std::make_unique<OvershootLimiter>(environment, *style);
        element->source = &source;
    }
    Signal run(const std::vector<int>& blocks) { return runElement(environment, *element, blocks); }

    wave::Environment environment{256};
    VectorSource source;
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
        for (const Signal& in : {whiteNoise(1, kCount, 1.5), sine(30, rate, kCount, 1.2),
                                 bursts(5000, rate, kCount, 20, 900, 3.0), square(441, rate, kCount, 0.95),
                                 impulse(kCount, 0, 2.0)}) {
            OvershootRig rig(in, rate);
            rig.element->ceiling = static_cast<float>(kCeilingDb);
            const Signal gain = rig.run(randomBlocks(kCount, 256, 5));
            EXPECT_LE(largestLimited(in, gain, delay), 1 + 2e-6) << rate;
            EXPECT_LE(*std::max_element(gain.begin(), gain.end()), 1.0f + 1e-6f);
        }
    }
}

TEST(OvershootLimiter, TakesASinglePeakDownInAWindowAroundIt) {
    constexpr int kPeak = 3000;
    OvershootRig rig(impulse(8000, kPeak, 2.0));
    const Signal gain = rig.run(evenBlocks(8000, 200));
    const int delay = OvershootLimiter::delaySamples(kRate);
    const int window = delay - 128;
    EXPECT_NEAR(gain[static_cast<std::size_t>(kPeak + delay)], 0.5 * 0.996, 1e-5);
    for (int i = 0; i < 8000; ++i) {
        const int distance = i - (kPeak + delay);
        const float g = gain[static_cast<std::size_t>(i)];
        const float before = i > 0 ? gain[static_cast<std::size_t>(i - 1)] : 1.0f;
        EXPECT_TRUE(std::abs(distance) <= window || std::abs(g - 1.0f) <= 1e-6f) << distance;
        EXPECT_GE((distance <= 0 ? before - g : g - before), -1e-6) << distance;
    }
}

TEST(OvershootLimiter, IsExactWithoutDelayInHardMode) {
    const Signal in = whiteNoise(2, 5000, 2.0);
    OvershootRig rig(in);
    rig.element->mode = OvershootLimiter::Hard;
    rig.element->ceiling = static_cast<float>(kCeilingDb);
    const Signal gain = rig.run(randomBlocks(5000, 256, 6));
    const float ceiling = static_cast<float>(kCeiling);
    for (std::size_t i = 0; i < in.size(); ++i) {
        ASSERT_LE(std::abs(in[i] * gain[i]), ceiling) << i;
        ASSERT_TRUE(std::abs(in[i]) > kCeiling * (1 - 1e-6) || gain[i] == 1.0f) << i;
        ASSERT_TRUE(std::abs(in[i]) < kCeiling || std::abs(in[i] * gain[i]) > kCeiling * (1 - 1e-6)) << i;
    }
}

TEST(OvershootLimiter, GoesOverToAnotherRate) {
    constexpr int kCount = 20000;
    const Signal in = whiteNoise(4, kCount, 2.0);
    OvershootRig rig(in);
    rig.element->ceiling = static_cast<float>(kCeilingDb);
    rig.run(evenBlocks(2000, 200));
    rig.environment.setSampleRate(176400.0f);
    auto fresh = std::make_unique<OvershootLimiter::Style>(rig.environment);
    rig.element->setStyle(*fresh);
    rig.style = std::move(fresh);
    rig.source.rewind();
    const Signal gain = rig.run(evenBlocks(kCount, 200));
    EXPECT_LE(largestLimited(in, gain, OvershootLimiter::delaySamples(176400)), 1 + 2e-6);
}

}  // namespace
}  // namespace vanta::test
