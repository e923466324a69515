#include "dsp/detector/peak_hold.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/support/element_rig.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

constexpr double kRate = 48000.0;
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
    std::vector<std::vector<int>> courses(4);
    for (int i = 0; i < kCount; ++i) {
        courses[0].push_back(i % 480 < 240 ? i % 480 : 480 - i % 480);  // a sample at a time
        courses[1].push_back(random.between(0, 240));                   // anywhere at once
        courses[2].push_back(i % 600 < 300 ? 0 : 200);                  // off and on
        courses[3].push_back(i % 200 * 7 % 241);
    }
    for (const int hold : {0, 1, 2, 3, 7, 48, 239, 240}) courses.emplace_back(kCount, hold);
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
         {std::pair(1.0f, 48), {1.02f, 48}, {5.0f, 240}, {1000.0f, 240}, {-1.0f, 0}}) {
        ElementRig<PeakHold> rig(impulse(1000), kLargestMs);
        rig.play(rig.element.hold, Signal(1000, ms));
        const Signal out = rig.run(1000);
        EXPECT_EQ(std::count(out.begin(), out.end(), 1.0f), samples + 1) << ms;
    }
}

}  // namespace
}  // namespace vanta::test
