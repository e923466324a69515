#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "dsp/detector/db_converter.hpp"
#include "dsp/detector/peak_hold.hpp"
#include "dsp/detector/rms_filter.hpp"
#include "dsp/detector/transfer_curve_processor.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/instruction_sets.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

// --- RMSFilter ---

using RmsRig = ElementRig<RMSFilter>;

std::vector<double> meanSquares(const Signal& in, int window, double scale) {
    std::vector<double> out;
    for (int i = 0; i < static_cast<int>(in.size()); ++i) {
        double sum = 0.0;
        for (int k = std::max(0, i - window + 1); k <= i; ++k) {
            const double x = in[static_cast<std::size_t>(k)];
            sum += x * x;
        }
        out.push_back(scale * scale * sum / window);
    }
    return out;
}

void expectMeans(const char* set) {
    SCOPED_TRACE(set);
    const Signal in = whiteNoise(1, 3000);
    for (const float windowMs : {0.021f, 0.1f, 2.5f, 20.0f, 1e9f}) {
        const int window = 1 + static_cast<int>(std::min(windowMs, 20.0f) * 48.0);
        const auto expected = meanSquares(in, window, 0.7);
        for (const int domain : {RMSFilter::Power, RMSFilter::Amplitude}) {
            RmsRig rig(in, 20.0f);
            rig.element.scale = 0.7f;
            rig.element.domain = domain;
            rig.play(rig.element.window, Signal(3000, windowMs));
            const Signal out = rig.run(randomBlocks(3000, 128, 2));
            for (std::size_t i = 0; i < out.size(); ++i) {
                const double y = domain == RMSFilter::Power ? expected[i] : std::sqrt(expected[i]);
                ASSERT_NEAR(out[i], y, 1e-6 * y + 1e-12) << "window " << windowMs << " ms, sample " << i;
            }
        }
    }
}

TEST(RMSFilter, IsTheMeanOfTheLastSamplesOnEveryInstructionSet) {
    forEachInstructionSet(&expectMeans);
    // A window of one sample has no memory, and keeps the sign.
    RmsRig one(Signal{0.5f, -0.5f, 0.25f}, 10.0f);
    one.element.domain = RMSFilter::Amplitude;
    EXPECT_EQ(one.run(3), (Signal{0.5f, -0.5f, 0.25f}));
}

TEST(RMSFilter, StartsOverWithAnotherWindowScaleOrRate) {
    RmsRig rig(Signal(2000, 1.0f), 2.0f);
    RMSFilter& filter = rig.element;
    RmsRig::set(filter.window, 1.0);
    const auto firstAfter = [&](const std::function<void()>& change) {
        EXPECT_FLOAT_EQ(rig.run(128).back(), filter.scale * filter.scale);
        change();
        return rig.run(128).front();
    };
    EXPECT_FLOAT_EQ(firstAfter([&] { RmsRig::set(filter.window, 1.5); }), 1.0f / 73.0f);
    EXPECT_FLOAT_EQ(firstAfter([&] { filter.scale = 3.0f; }), 9.0f / 73.0f);
    EXPECT_FLOAT_EQ(firstAfter([&] { rig.environment.setSampleRate(96000.0f); }), 9.0f / 145.0f);
}

// One sample far beyond full scale costs the sum its digits, until the window has passed twice.
TEST(RMSFilter, LeavesNothingBehindALoudSample) {
    Signal in = whiteNoise(3, 4000);
    in[1000] = 1048576.0f;
    RmsRig rig(in, 5.0f);
    RmsRig::set(rig.element.window, 5.0);
    const Signal out = rig.run(randomBlocks(4000, 128, 4));
    const auto expected = meanSquares(in, 241, 1.0);
    for (std::size_t i = 1500; i < out.size(); ++i) ASSERT_NEAR(out[i], expected[i], 1e-6 * expected[i]) << i;
}

TEST(RMSFilter, RestsOnSilenceAndGoesOnAsIfItHadNot) {
    Signal in = whiteNoise(5, 6000);
    std::fill(in.begin() + 1500, in.begin() + 4000, 0.0f);
    RmsRig rig(Signal{}, 5.0f);
    VectorSource source(rig.environment, in, ConstantFlag::WhereTrue);
    rig.element.source = &source;
    RmsRig::set(rig.element.window, 5.0);
    Signal out = rig.run(randomBlocks(3800, 128, 6));
    EXPECT_TRUE(rig.element.holdsOneValue());
    const Signal rest = rig.run(randomBlocks(2200, 128, 7));
    out.insert(out.end(), rest.begin(), rest.end());
    const auto expected = meanSquares(in, 241, 1.0);
    for (std::size_t i = 0; i < out.size(); ++i) {
        ASSERT_NEAR(out[i], expected[i], 1e-6 * expected[i] + 1e-12) << i;
    }
}

// --- DBConverter ---

TEST(DBConverter, ConvertsEachWay) {
    const struct {
        int conversion;
        float in, out;
    } cases[] = {{DBConverter::AmplitudeToDb, 0.0f, -180.0f},
                 {DBConverter::AmplitudeToDb, -10.0f, 20.0f},
                 {DBConverter::DbToAmplitude, -20.0f, 0.1f},
                 {DBConverter::AmplitudeGainChangeToDb, 1.0f, 180.0f},
                 {DBConverter::AmplitudeGainChangeToDb, 0.9f, 20.0f},
                 {DBConverter::DbToAmplitudeGainChange, 0.0f, 0.0f},
                 {DBConverter::DbToAmplitudeGainChange, 20.0f, 0.9f}};
    for (const auto& [conversion, in, out] : cases) {
        ElementRig<DBConverter> rig(Signal(64, in));
        rig.element.conversion = conversion;
        EXPECT_FLOAT_EQ(rig.run(64).front(), out) << conversion << " of " << in;
    }
}

// --- TransferCurveProcessor ---

void expectCurves(const char* set) {
    SCOPED_TRACE(set);
    const Signal in = spread(5, 256, 0.0, 1.0);
    for (const float strength : {0.0f, 0.1f, 0.3f, 0.3000002f, 1.0f}) {
        for (const bool power : {false, true}) {
            for (const auto flag : {ConstantFlag::WhereTrue, ConstantFlag::Never}) {
                ElementRig<TransferCurveProcessor> rig(in);
                rig.element.function = power ? TransferCurveProcessor::Power : TransferCurveProcessor::Exp;
                rig.play(rig.element.strength, Signal(256, strength), flag);
                const Signal out = rig.run(randomBlocks(256, 70, 9));
                const double k = 15.0 * strength + (power ? 1.0 : 0.01);
                for (std::size_t i = 0; i < out.size(); ++i) {
                    const double x = in[i],
                                 expected = power ? std::pow(x, k) : std::expm1(k * x) / std::expm1(k);
                    // The rounding of the exponent counts as often as the exponent is large.
                    const double bound =
                        power ? 2.4e-7 * expected * (1.0 + std::abs(std::log(expected))) + 1e-37 : 1e-6;
                    ASSERT_NEAR(out[i], expected, bound) << (power ? "power " : "exp ") << strength;
                }
            }
        }
    }
}

TEST(TransferCurveProcessor, BendsByItsStrengthOnEveryInstructionSet) {
    forEachInstructionSet(&expectCurves);
}

// --- PeakHold ---

constexpr double kRate = 48000.0;
constexpr float kLargestMs = 15.0f;

/// Every sample compared with all of its window.
Signal slidingMaximum(const Signal& in, const std::vector<int>& hold) {
    Signal out;
    for (std::size_t n = 0; n < in.size(); ++n) {
        const std::size_t first = n - std::min(n, static_cast<std::size_t>(hold[n]));
        float largest = 0;
        for (std::size_t i = first; i <= n; ++i) largest = std::max(largest, std::abs(in[i]));
        out.push_back(largest);
    }
    return out;
}

/// Signals that tell different faults apart: each is a way for local maxima to come and go.
std::vector<Signal> signals(std::size_t count) {
    std::vector<Signal> all{whiteNoise(1, count), sine(997, kRate, count),
                            bursts(3000, kRate, count, 70, 400), impulse(count, 100)};
    Signal rising, falling, plateaus, zigzag;
    Random random(9);
    for (std::size_t i = 0; i < count; ++i) {
        rising.push_back(static_cast<float>(i % 700));
        falling.push_back(static_cast<float>(700 - i % 700));
        plateaus.push_back(static_cast<float>(random.between(0, 3)));
        // Every second sample a peak, each lower than the one before: the queue is as full as it can be.
        zigzag.push_back(i % 2 ? 0.0f : 1.0f - static_cast<float>(i % 500) / 1000.0f);
    }
    all.insert(all.end(), {rising, falling, plateaus, zigzag});
    return all;
}

TEST(PeakHold, IsTheMaximumOfItsWindowExactlyWhereverTheHoldMoves) {
    constexpr int kCount = 8000;
    Random random(4);
    std::vector<std::vector<int>> courses(5);
    for (int i = 0; i < kCount; ++i) {
        courses[0].push_back(i % 480 < 240 ? i % 480 : 480 - i % 480);  // a sample at a time
        courses[1].push_back(random.between(0, 240));                   // anywhere at once
        courses[2].push_back(i % 600 < 300 ? 0 : 200);                  // off and on
        courses[3].push_back(i % 200 * 7 % 241);
        // Stands still for many blocks, moves, and comes back.
        courses[4].push_back(i % 4000 < 1600 ? 600 : i % 4000 < 2400 ? 30 + i % 600 : 100);
    }
    for (const int hold : {0, 1, 2, 3, 4, 7, 48, 239, 511, 512, 700, 720}) courses.emplace_back(kCount, hold);
    for (const Signal& in : signals(kCount)) {
        for (std::size_t course = 0; course < courses.size(); ++course) {
            Signal ms;
            for (const int hold : courses[course])
                ms.push_back(static_cast<float>((hold + 0.5) / kRate * 1000));
            ElementRig<PeakHold> rig(in, kLargestMs);
            rig.play(rig.element.hold, ms);
            EXPECT_EQ(rig.run(randomBlocks(kCount, 100, 3)), slidingMaximum(in, courses[course])) << course;
        }
    }
}

TEST(PeakHold, TruncatesItsHoldAndLimitsItToTheLargest) {
    for (const auto& [ms, samples] :
         {std::pair(1.0f, 48), {1.02f, 48}, {15.0f, 720}, {1000.0f, 720}, {-1.0f, 0}}) {
        ElementRig<PeakHold> rig(impulse(1000), kLargestMs);
        rig.play(rig.element.hold, Signal(1000, ms));
        const Signal out = rig.run(1000);
        EXPECT_EQ(std::count(out.begin(), out.end(), 1.0f), samples + 1) << ms;
    }
}

}  // namespace
}  // namespace vanta::test
