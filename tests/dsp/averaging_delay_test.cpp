#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "dsp/averaging_filter.hpp"
#include "dsp/delay_line.hpp"
#include "foundation/numbers.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"

namespace vanta {
namespace {

using test::Signal;
constexpr float kRate = 48000.0f;

template <typename Element>
struct Rig {
    Rig(Signal signal, float largestMs, FloatParameterBus Element::*controlBus)
        : source(environment, std::move(signal)),
          control(environment, {}, test::ConstantFlag::WhereTrue),
          element(environment, largestMs) {
        environment.setSampleRate(kRate);
        element.source = &source;
        (element.*controlBus).setSource(&control);
    }
    Signal run(const Signal& controls, const std::vector<int>& blocks) {
        control.play(controls);
        return test::runElement(environment, element, blocks);
    }

    wave::Environment environment{512};
    test::VectorSource source;
    test::VectorSource control;
    Element element;
};

float ms(double samples) {
    return static_cast<float>(samples / kRate * 1000);
}

// ---- AveragingFilter ----

struct MeanRig : Rig<AveragingFilter> {
    explicit MeanRig(Signal signal, float largestMs = 5.0f)
        : Rig(std::move(signal), largestMs, &AveragingFilter::window) {}
};

/// Windows of a given number of samples: one more than the truncated time.
Signal windows(const std::vector<int>& samples) {
    Signal control;
    for (const int n : samples) control.push_back(ms(n - 0.5));
    return control;
}

struct Domain {
    double power = 1;
    bool keepSign = true;
    bool gainReduction = false;
};

/// Each mean summed from scratch.
Signal meanOfEach(const Signal& in, const std::vector<int>& window, const Domain& domain = {}) {
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

void expectNear(const Signal& actual, const Signal& expected, double tolerance) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) ASSERT_NEAR(actual[i], expected[i], tolerance) << i;
}

TEST(AveragingFilter, IsTheMeanOfItsWindow) {
    const Signal in = test::whiteNoise(1, 6000);
    for (const int window : {2, 3, 10, 240, 241}) {
        MeanRig rig(in);
        const std::vector<int> course(6000, window);
        expectNear(rig.run(windows(course), test::randomBlocks(6000, 512, 2)), meanOfEach(in, course), 1e-7);
    }
}

TEST(AveragingFilter, HandsItsInputOnWithAWindowOfOne) {
    const Signal in = test::whiteNoise(2, 2000);
    MeanRig rig(in);
    rig.element.conversion = AveragingFilter::GainReduction;
    rig.element.power = 0.5f;
    const Signal out = rig.run(windows(std::vector<int>(2000, 1)), test::evenBlocks(2000, 100));
    // The first block changes the window; from then on nothing is computed on the way.
    for (std::size_t i = 100; i < out.size(); ++i) ASSERT_EQ(out[i], in[i]);
}

TEST(AveragingFilter, TakesBackWhatAGrowingWindowCoversAgain) {
    const Signal in = test::whiteNoise(3, 6000);
    test::Random random(5);
    std::vector<int> anywhere, stepped, sweeping;
    for (int i = 0; i < 6000; ++i) {
        anywhere.push_back(random.between(1, 241));
        stepped.push_back(i % 1000 < 500 ? 1 + i / 1000 : 240);
        sweeping.push_back(1 + i % 241);
    }
    for (const auto& course : {anywhere, stepped, sweeping}) {
        MeanRig rig(in);
        expectNear(rig.run(windows(course), test::evenBlocks(6000, 125)), meanOfEach(in, course), 1e-6);
    }
}

TEST(AveragingFilter, AveragesPowersAndGains) {
    Signal in = test::whiteNoise(4, 3000, 12.0);
    const std::vector<int> course(3000, 100);
    for (const Domain& d : {Domain{2, false}, {2, true}, {0.5, true}, {3, true}, {1, true, true}}) {
        MeanRig rig(in);
        rig.element.power = static_cast<float>(d.power);
        rig.element.keepSign = d.keepSign;
        rig.element.conversion = d.gainReduction ? AveragingFilter::GainReduction : AveragingFilter::Plain;
        const Signal out = rig.run(windows(course), test::evenBlocks(3000, 250));
        const Signal expected = meanOfEach(in, course, d);
        // A root near 0 is steep: judged by the power that it is a root of.
        for (std::size_t i = 0; i < out.size(); ++i) {
            ASSERT_NEAR(std::pow(std::abs(out[i]), d.power), std::pow(std::abs(expected[i]), d.power),
                        1e-5 * std::pow(12, d.power))
                << d.power << ' ' << i;
            ASSERT_TRUE(std::abs(expected[i]) < 0.1 || (out[i] < 0) == (expected[i] < 0)) << i;
        }
    }
}

TEST(AveragingFilter, AveragesReductionsAsFactors) {
    Signal in;
    for (int i = 0; i < 1000; ++i) in.push_back(i % 2 ? 20.0f : 0.0f);
    MeanRig rig(in);
    rig.element.conversion = AveragingFilter::GainReduction;
    const Signal out = rig.run(windows(std::vector<int>(1000, 100)), test::evenBlocks(1000, 100));
    EXPECT_NEAR(out.back(), -20 * std::log10(0.55), 1e-5);
}

TEST(AveragingFilter, CountsAPowerNextToOneAsOne) {
    const Signal in = test::whiteNoise(6, 1000);
    const Signal course = windows(std::vector<int>(1000, 50));
    MeanRig one(in), almost(in), beyond(in);
    almost.element.power = 1.0001f;
    beyond.element.power = 1.001f;
    const Signal expected = one.run(course, test::evenBlocks(1000, 100));
    EXPECT_EQ(almost.run(course, test::evenBlocks(1000, 100)), expected);
    EXPECT_NE(beyond.run(course, test::evenBlocks(1000, 100)), expected);
}

// Half an hour at 96 kHz would be this often the ring; levels differ by 180 dB, and then all is silent.
TEST(AveragingFilter, DoesNotDriftAndForgetsEverything) {
    constexpr int kLoud = 2'000'000;
    Signal in = test::whiteNoise(7, kLoud);
    test::Random random(8);
    for (float& x : in) x *= random.between(0, 1) ? 1000.0f : 1e-6f;
    MeanRig rig(in, 50.0f);
    const Signal out = rig.run(Signal(kLoud, ms(2000.5)), test::evenBlocks(kLoud, 500));
    long double sum = 0;
    for (int i = kLoud - 2001; i < kLoud; ++i) sum += in[static_cast<std::size_t>(i)];
    EXPECT_NEAR(out.back(), static_cast<double>(sum / 2001), 1e-6);
    const Signal tail = rig.run(Signal(6000, ms(2000.5)), test::evenBlocks(6000, 500));
    EXPECT_EQ(tail.back(), 0.0f);
}

TEST(AveragingFilter, StaysTheMeanWhereTheSignalStandsStill) {
    Signal in = test::whiteNoise(9, 4000);
    for (const int start : {300, 700, 1500, 2600}) {
        std::fill_n(in.begin() + start, start / 2, static_cast<float>(start));
    }
    std::fill_n(in.begin() + 2250, 350, 7.0f);  // from one plateau to the next
    const std::vector<int> course(4000, 200);
    for (const int block : {7, 50, 64, 500}) {
        MeanRig rig(in);
        expectNear(rig.run(windows(course), test::evenBlocks(4000, block)), meanOfEach(in, course), 1e-4);
    }
}

TEST(AveragingFilter, StartsOverWhenItIsEnabledOrReset) {
    const Signal in(4000, 1.0f);
    MeanRig rig(in);
    const Signal course = windows(std::vector<int>(4000, 200));
    rig.run(course, test::evenBlocks(1000, 100));
    rig.element.enabled = false;
    rig.run(course, {100});
    EXPECT_EQ(&rig.element.current(), &rig.source.current());
    rig.element.enabled = true;
    EXPECT_NEAR(rig.run(course, {100})[49], 50 / 200.0, 1e-6);
    rig.environment.resetGraph(wave::ResetMode::ResetActive);
    EXPECT_NEAR(rig.run(course, {100})[49], 50 / 200.0, 1e-6);
}

// ---- DelayLine ----

struct DelayRig : Rig<DelayLine> {
    explicit DelayRig(Signal signal, float largestMs = 10.0f)
        : Rig(std::move(signal), largestMs, &DelayLine::delay) {
        element.delayInterpretation = DelayLine::Samples;
    }
};

float at(const Signal& signal, std::ptrdiff_t i) {
    return i < 0 ? 0.0f : signal[static_cast<std::size_t>(i)];
}

TEST(DelayLine, DelaysByWholeSamplesWhileItStandsStill) {
    const Signal in = test::whiteNoise(1, 4000);
    for (const int type : {DelayLine::Interpolated, DelayLine::TwoTaps, DelayLine::Switched}) {
        for (const float delay : {0.0f, 1.0f, 10.4f, 10.6f, 480.0f, 5000.0f, -3.0f}) {
            DelayRig rig(in);
            rig.element.readType = type;
            const Signal out = rig.run(Signal(4000, delay), test::randomBlocks(4000, 512, 3));
            const auto whole = std::clamp(std::lround(delay), 0L, 480L);
            for (int i = 0; i < 4000; ++i)
                ASSERT_EQ(out[static_cast<std::size_t>(i)], at(in, i - whole)) << delay;
        }
    }
    DelayRig rig(in);
    rig.element.delayInterpretation = DelayLine::Milliseconds;
    EXPECT_EQ(rig.run(Signal(4000, 1.02f), {500, 500})[600], in[600 - 48]);
}

TEST(DelayLine, InterpolatesBetweenSamples) {
    const Signal in = test::whiteNoise(2, 20000);
    Signal delays;
    for (int i = 0; i < 20000; ++i)
        delays.push_back(240.0f + 239.0f * std::sin(static_cast<float>(i) * 0.001f));
    DelayRig rig(in);
    rig.element.smooth = false;
    const Signal out = rig.run(delays, test::randomBlocks(20000, 512, 4));
    for (int i = 0; i < 20000; ++i) {
        const double place = i - double{delays[static_cast<std::size_t>(i)]};
        const auto left = static_cast<std::ptrdiff_t>(std::floor(place));
        const double share = place - static_cast<double>(left);
        const double expected =
            left < 0 ? 0.0 : at(in, left) * (1 - share) + (share > 0 ? at(in, left + 1) * share : 0);
        ASSERT_NEAR(out[static_cast<std::size_t>(i)], expected, 3e-7) << i;
    }
}

TEST(DelayLine, GlidesToANewDelayAndSettlesThere) {
    // A ramp tells the delay that it was read at.
    Signal in;
    for (int i = 0; i < 200000; ++i) in.push_back(static_cast<float>(i));
    const auto run = [&](const std::vector<int>& blocks) {
        DelayRig rig(in);
        Signal delays(2000, 100.0f);
        delays.resize(200000, 400.0f);
        Signal out = rig.run(delays, blocks);
        for (std::size_t i = 0; i < out.size(); ++i) out[i] = in[i] - out[i];
        return out;
    };
    const Signal delay = run(test::evenBlocks(100000, 500));
    for (std::size_t i = 500; i < 100000; ++i) {
        ASSERT_GE(delay[i], delay[i - 1] - 0.02f) << i;
        ASSERT_LT(delay[i] - delay[i - 1], 0.1f) << i;
    }
    EXPECT_EQ(delay[1999], 100.0f);
    // Two poles at 5 Hz: (1 + w t) e^(-w t) of the way is left.
    const double w = 2 * std::acos(-1.0) * 5;
    for (const int after : {500, 2400, 4800, 9600}) {
        const double t = after / double{kRate};
        EXPECT_NEAR(delay[2000 + static_cast<std::size_t>(after)], 400 - 300 * (1 + w * t) * std::exp(-w * t),
                    0.3);
    }
    EXPECT_EQ(delay.back(), 400.0f);
    expectNear(run(test::evenBlocks(100000, 250)), delay, 0.02);
}

TEST(DelayLine, CrossfadesBetweenDelaysWithoutAStep) {
    const Signal in = test::sine(100, kRate, 60000);
    for (const int type : {DelayLine::TwoTaps, DelayLine::Switched}) {
        DelayRig rig(in);
        rig.element.readType = type;
        Signal delays(5000, 20.0f);
        // A course that never stands still, for the taps read plainly where it does.
        for (int i = 5000; i < 60000; ++i) delays.push_back(300.0f + static_cast<float>(i % 2));
        const Signal out = rig.run(delays, test::evenBlocks(60000, 500));
        for (std::size_t i = 1000; i < out.size(); ++i) {
            // The sine's own slope, and what the fade of at most 2 in 85 ms adds.
            ASSERT_LT(std::abs(out[i] - out[i - 1]), 0.0131 + 0.002) << type << ' ' << i;
        }
        for (std::size_t i = 50000; i < out.size(); ++i) ASSERT_NEAR(out[i], in[i - 300], 0.014) << type;
    }
}

TEST(DelayLine, IsEmptyAfterAReset) {
    for (const int type : {DelayLine::Interpolated, DelayLine::TwoTaps, DelayLine::Switched}) {
        DelayRig rig(Signal(4000, 1.0f));
        rig.element.readType = type;
        Signal delays;
        for (int i = 0; i < 4000; ++i) delays.push_back(200.0f + static_cast<float>(i % 3));
        rig.run(delays, test::evenBlocks(2000, 250));
        rig.environment.resetGraph(wave::ResetMode::ResetActive);
        rig.source.rewind();
        const Signal out = rig.run(delays, test::evenBlocks(1000, 250));
        EXPECT_TRUE(std::all_of(out.begin(), out.begin() + 199, [](float x) { return x == 0.0f; })) << type;
        EXPECT_TRUE(std::all_of(out.begin() + 210, out.end(), [](float x) {
            return std::abs(x - 1) < 1e-6f;
        })) << type;
    }
}

TEST(DelayLine, TakesAnotherLargestDelay) {
    DelayRig rig(test::impulse(4000));
    rig.element.setMaxDelay(40.0f);
    const Signal out = rig.run(Signal(4000, 1900.0f), test::evenBlocks(4000, 500));
    EXPECT_EQ(out[1900], 1.0f);
    EXPECT_EQ(std::count(out.begin(), out.end(), 0.0f), 3999);
}

}  // namespace
}  // namespace vanta
