#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "dsp/delay/averaging_filter.hpp"
#include "dsp/delay/delay_line.hpp"
#include "tests/dsp/element_patch.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

constexpr double kRate = 48000.0;

void expectNear(const Signal& actual, const Signal& expected, double tolerance) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) ASSERT_NEAR(actual[i], expected[i], tolerance) << i;
}

// ---- AveragingFilter ----

using Windows = std::vector<int>;

struct Domain {
    double power = 1;
    bool keepSign = true;
    bool gainReduction = false;
};

/// Each mean summed from scratch.
Signal meanOfEach(const Signal& in, const Windows& window, const Domain& domain) {
    const auto power = [&](long double x, double exponent) {
        const long double magnitude = std::pow(std::abs(x), static_cast<long double>(exponent));
        return domain.keepSign && x < 0 ? -magnitude : magnitude;
    };
    Signal out;
    for (std::size_t n = 0; n < in.size(); ++n) {
        long double sum = 0;
        const std::size_t span = std::min(n + 1, static_cast<std::size_t>(window[n]));
        for (std::size_t i = n + 1 - span; i <= n; ++i) {
            const long double x = power(in[i], domain.power);
            sum += domain.gainReduction ? std::pow(10.0L, -x / 20) : x;
        }
        long double mean = sum / window[n];
        if (domain.gainReduction) mean = std::min(-20 * std::log10(std::abs(mean)), 180.0L);
        out.push_back(static_cast<float>(power(mean, 1 / domain.power)));
    }
    return out;
}

/// What the filter makes of the same, in random blocks.
Signal meanOf(const Signal& in, const Windows& window, const Domain& domain, float largestMs = 5.0f) {
    ElementRig<AveragingFilter> rig(in, largestMs);
    rig.element.power = static_cast<float>(domain.power);
    rig.element.keepSign = domain.keepSign;
    rig.element.conversion = domain.gainReduction ? AveragingFilter::GainReduction : AveragingFilter::Plain;
    Signal control;
    // One sample more than the truncated time.
    for (const int n : window) control.push_back(static_cast<float>((n - 0.5) / kRate * 1000));
    rig.play(rig.element.window, control);
    return rig.run(randomBlocks(static_cast<int>(in.size()), 512, 2));
}

TEST(AveragingFilter, IsTheMeanOfItsWindowWhereverThatMoves) {
    // With plateaus, on which the sum is made anew.
    const Signal in = feedSignal(Feed::Audio, 1, 6000);
    Random random(5);
    std::vector<Windows> courses(3);
    for (int i = 0; i < 6000; ++i) {
        courses[0].push_back(random.between(1, 241));
        courses[1].push_back(i % 1000 < 500 ? 1 + i / 1000 : 240);
        courses[2].push_back(1 + i % 241);
    }
    for (const Windows& course : courses)
        expectNear(meanOf(in, course, {}), meanOfEach(in, course, {}), 1e-6);
    for (const int window : {1, 2, 3, 10, 240, 241}) {
        const Windows course(6000, window);
        expectNear(meanOf(in, course, {}), meanOfEach(in, course, {}), 1e-7);
    }
}

TEST(AveragingFilter, AveragesPowersAndGains) {
    const Signal in = whiteNoise(4, 3000, 12.0);
    const Windows course(3000, 100);
    for (const Domain& d : {Domain{2, false}, {2, true}, {0.5, true}, {3, true}, {1, true, true}}) {
        const Signal out = meanOf(in, course, d), expected = meanOfEach(in, course, d);
        // A root near 0 is steep: judged by the power that it is a root of.
        for (std::size_t i = 0; i < out.size(); ++i) {
            ASSERT_NEAR(std::pow(std::abs(out[i]), d.power), std::pow(std::abs(expected[i]), d.power),
                        1e-5 * std::pow(12, d.power))
                << d.power << ' ' << i;
            ASSERT_TRUE(std::abs(expected[i]) < 0.1 || (out[i] < 0) == (expected[i] < 0)) << i;
        }
    }
}

// Half an hour at 96 kHz would be this often the ring; levels differ by 180 dB, and then all is silent.
TEST(AveragingFilter, DoesNotDriftAndForgetsEverything) {
    constexpr std::size_t kLoud = 2'000'000, kTail = 6000;
    Signal in = whiteNoise(7, kLoud);
    Random random(8);
    for (float& x : in) x *= random.between(0, 1) ? 1000.0f : 1e-6f;
    in.resize(kLoud + kTail, 0.0f);
    const Signal out = meanOf(in, Windows(in.size(), 2001), {}, 50.0f);
    long double sum = 0;
    for (std::size_t i = kLoud - 2001; i < kLoud; ++i) sum += in[i];
    EXPECT_NEAR(out[kLoud - 1], static_cast<double>(sum / 2001), 1e-6);
    EXPECT_EQ(out.back(), 0.0f);
}

// ---- DelayLine ----

struct DelayRig : ElementRig<DelayLine> {
    explicit DelayRig(Signal signal, int readType = DelayLine::Interpolated)
        : ElementRig(std::move(signal), 10.0f) {
        element.delayInterpretation = DelayLine::Samples;
        element.readType = readType;
    }
    Signal run(const Signal& delays, const std::vector<int>& blocks) {
        play(element.delay, delays);
        return ElementRig::run(blocks);
    }
};

double at(const Signal& signal, std::ptrdiff_t i) {
    return i < 0 ? 0.0 : static_cast<double>(signal[static_cast<std::size_t>(i)]);
}

TEST(DelayLine, DelaysByWholeSamplesWhileItStandsStill) {
    const Signal in = whiteNoise(1, 4000);
    for (const int type :
         {DelayLine::Interpolated, DelayLine::TwoTaps, DelayLine::Switched, DelayLine::Overlapped}) {
        for (const float delay : {0.0f, 1.0f, 10.4f, 10.6f, 480.0f, 5000.0f, -3.0f}) {
            const Signal out = DelayRig(in, type).run(Signal(4000, delay), randomBlocks(4000, 512, 3));
            const auto whole = std::clamp(std::lround(delay), 0L, 480L);
            for (int i = 0; i < 4000; ++i) ASSERT_EQ(at(out, i), at(in, i - whole)) << delay;
        }
    }
    DelayRig rig(in);
    rig.element.delayInterpretation = DelayLine::Milliseconds;
    EXPECT_EQ(rig.run(Signal(4000, 1.02f), {500, 500})[600], in[600 - 48]);
}

TEST(DelayLine, InterpolatesBetweenSamples) {
    const Signal in = whiteNoise(2, 20000);
    Signal delays = sine(7.6, kRate, 20000, 239.0);
    for (float& delay : delays) delay += 240.0f;
    DelayRig rig(in);
    rig.element.smooth = false;
    const Signal out = rig.run(delays, randomBlocks(20000, 512, 4));
    for (int i = 0; i < 20000; ++i) {
        const double place = i - at(delays, i);
        const auto left = static_cast<std::ptrdiff_t>(std::floor(place));
        const double share = place - static_cast<double>(left);
        const double right = share > 0 ? at(in, left + 1) : 0.0;
        ASSERT_NEAR(at(out, i), left < 0 ? 0.0 : at(in, left) * (1 - share) + right * share, 3e-7) << i;
    }
}

TEST(DelayLine, GlidesToANewDelayAndSettlesThere) {
    // A ramp tells the delay that it was read at.
    Signal in, delays(2000, 100.0f);
    for (int i = 0; i < 100000; ++i) in.push_back(static_cast<float>(i));
    delays.resize(100000, 400.0f);
    const Signal out = DelayRig(in).run(delays, evenBlocks(100000, 500));
    EXPECT_EQ(out, DelayRig(in).run(delays, randomBlocks(100000, 512, 8))) << "where blocks begin counts";
    const auto delayAt = [&](int i) { return at(in, i) - at(out, i); };
    for (int i = 500; i < 100000; ++i) {
        ASSERT_GE(delayAt(i), delayAt(i - 1) - 0.02) << i;
        ASSERT_LT(delayAt(i) - delayAt(i - 1), 0.1) << i;
    }
    EXPECT_EQ(delayAt(1999), 100.0);
    // Two poles at 5 Hz: (1 + w t) e^(-w t) of the way is left.
    const double w = 2 * std::acos(-1.0) * 5;
    for (const int after : {500, 2400, 4800, 9600}) {
        const double t = after / kRate;
        EXPECT_NEAR(delayAt(2000 + after), 400 - 300 * (1 + w * t) * std::exp(-w * t), 0.3);
    }
    EXPECT_EQ(delayAt(99999), 400.0);
}

TEST(DelayLine, CrossfadesBetweenDelaysWithoutAStep) {
    const Signal in = sine(100, kRate, 60000);
    Signal delays(5000, 20.0f);
    // A course that never stands still, for the taps read plainly where it does.
    for (int i = 5000; i < 60000; ++i) delays.push_back(300.0f + static_cast<float>(i % 2));
    for (const int type : {DelayLine::TwoTaps, DelayLine::Switched}) {
        const Signal out = DelayRig(in, type).run(delays, evenBlocks(60000, 500));
        for (std::size_t i = 1000; i < out.size(); ++i) {
            // The sine's own slope, and what the fade of at most 2 in 85 ms adds.
            ASSERT_LT(std::abs(out[i] - out[i - 1]), 0.0131 + 0.002) << type << ' ' << i;
        }
        for (std::size_t i = 50000; i < out.size(); ++i) ASSERT_NEAR(out[i], in[i - 300], 0.014) << type;
    }
}

}  // namespace
}  // namespace vanta::test
