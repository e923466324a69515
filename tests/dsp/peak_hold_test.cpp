#include "dsp/peak_hold.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "foundation/numbers.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"

namespace vanta {
namespace {

using test::Signal;
constexpr float kRate = 48000.0f;
constexpr float kLargestMs = 5.0f;

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

struct Rig {
    explicit Rig(Signal signal, test::ConstantFlag flag = test::ConstantFlag::Never)
        : source(environment, std::move(signal), flag), element(environment, kLargestMs) {
        environment.setSampleRate(kRate);
        element.source = &source;
    }
    void setHold(float ms) { element.hold.parameter().setValue(ms, 0.0f); }
    Signal run(const std::vector<int>& blocks) { return test::runElement(environment, element, blocks); }

    wave::Environment environment{256};
    test::VectorSource source;
    PeakHold element;
};

/// Signals that tell different faults apart: each is a way for local maxima to come and go.
std::vector<Signal> signals(std::size_t count) {
    std::vector<Signal> all{test::whiteNoise(1, count), test::sine(997, kRate, count),
                            test::bursts(3000, kRate, count, 70, 400), test::impulse(count, 100)};
    Signal rising, falling, plateaus, zigzag;
    test::Random random(9);
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

TEST(PeakHold, IsTheMaximumOfItsWindowExactly) {
    constexpr int kCount = 6000;
    for (const Signal& in : signals(kCount)) {
        for (const int hold : {0, 1, 2, 3, 7, 48, 239, 240}) {
            Rig rig(in);
            rig.setHold(static_cast<float>(hold + 0.5) / kRate * 1000);
            const auto expected = slidingMaximum(in, std::vector<int>(kCount, std::min(hold, 240)));
            EXPECT_EQ(rig.run(test::randomBlocks(kCount, 256, 3)), expected) << hold;
        }
    }
}

TEST(PeakHold, TruncatesItsHoldAndLimitsItToTheLargest) {
    for (const auto& [ms, samples] :
         {std::pair(1.0f, 48), {1.02f, 48}, {5.0f, 240}, {1000.0f, 240}, {-1.0f, 0}}) {
        Rig rig(test::impulse(1000));
        test::VectorSource hold(rig.environment, Signal(1000, ms), test::ConstantFlag::WhereTrue);
        rig.element.hold.setSource(&hold);
        const Signal out = rig.run(test::evenBlocks(1000, 250));
        EXPECT_EQ(std::count(out.begin(), out.end(), 1.0f), samples + 1) << ms;
    }
}

TEST(PeakHold, StaysExactWhileTheHoldMoves) {
    constexpr int kCount = 8000;
    test::Random random(4);
    std::vector<std::vector<int>> courses(4);
    for (int i = 0; i < kCount; ++i) {
        courses[0].push_back(i % 480 < 240 ? i % 480 : 480 - i % 480);  // a sample at a time
        courses[1].push_back(random.between(0, 240));                   // anywhere at once
        courses[2].push_back(i % 600 < 300 ? 0 : 200);                  // off and on
        courses[3].push_back(i % 200 * 7 % 241);
    }
    for (const Signal& in : signals(kCount)) {
        for (std::size_t course = 0; course < courses.size(); ++course) {
            Signal ms;
            for (const int hold : courses[course])
                ms.push_back(static_cast<float>((hold + 0.5) / kRate * 1000));
            // With and without the flag, the blocks take different ways.
            for (const auto flag : {test::ConstantFlag::Never, test::ConstantFlag::WhereTrue}) {
                Rig rig(in, flag);
                test::VectorSource hold(rig.environment, ms, flag);
                rig.element.hold.setSource(&hold);
                EXPECT_EQ(rig.run(test::evenBlocks(kCount, 50)), slidingMaximum(in, courses[course]))
                    << course;
            }
        }
    }
}

TEST(PeakHold, DrainsAHoldThatIsTurnedOff) {
    Rig rig(test::bursts(3000, kRate, 1000, 40, 100));
    rig.setHold(4);
    rig.run({100});
    rig.environment.resetGraph(wave::ResetMode::MarkDiscontinuity);
    rig.setHold(0);
    const Signal out = rig.run({100});
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(out[static_cast<std::size_t>(i)], std::abs(rig.source.current()[i]));
}

TEST(PeakHold, RestsWithItsInput) {
    Signal in = test::whiteNoise(2, 500);
    in.resize(2000, -0.25f);
    for (int hold = 90; hold < 110; ++hold) {
        Rig rig(in, test::ConstantFlag::WhereTrue);
        rig.setHold(static_cast<float>(hold + 0.5) / kRate * 1000);
        const auto expected = slidingMaximum(in, std::vector<int>(2000, hold));
        EXPECT_EQ(rig.run(test::evenBlocks(2000, 50)), expected);
        EXPECT_TRUE(rig.element.isConstant());
        // The plateau that was passed over at rest is still held when it ends.
        const Signal after = rig.run({200});
        EXPECT_EQ(after[static_cast<std::size_t>(hold) - 1], 0.25f);
        EXPECT_EQ(after[static_cast<std::size_t>(hold)], 0.0f);
    }
}

TEST(PeakHold, StartsAfreshAfterAResetAndAtAnotherRate) {
    const Signal in = test::whiteNoise(3, 2000);
    for (const float rate : {kRate, 192000.0f}) {
        Rig rig(in);
        rig.setHold(3);
        rig.run(test::evenBlocks(1000, 100));
        rig.environment.setSampleRate(rate);
        rig.environment.resetGraph(wave::ResetMode::ResetActive);
        rig.source.rewind();
        const std::vector<int> hold(2000, samplesInMs(3, rate));
        EXPECT_EQ(rig.run(test::evenBlocks(2000, 100)), slidingMaximum(in, hold));
    }
}

}  // namespace
}  // namespace vanta
