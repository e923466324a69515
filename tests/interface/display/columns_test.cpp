#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include <fmt/format.h>

#include "interface/display/compression.hpp"
#include "interface/display/pen_motion.hpp"
#include "interface/display/scroll_clock.hpp"

namespace vanta::interface {
namespace {

constexpr float kWidth = 1330.0f;

/// Columns of so many seconds.
int columnsOf(ScrollClock& clock, float rate, const std::vector<int>& frames, int seconds) {
    int columns = 0;
    int ms = 0;
    for (std::size_t i = 0; ms < seconds * 1000; ++i) {
        const int frame = frames[i % frames.size()];
        clock.tick(frame, rate, kWidth);
        columns += clock.columns();
        ms += frame;
    }
    return columns;
}

struct Pace {
    const char* name;
    std::vector<int> frames;  ///< ms
    float rate;               ///< wanted
    float reached = rate;     ///< where frames allow no such step
};

TEST(ScrollClock, KeepsTheSpeedWithAStepThatStaysTheSame) {
    const std::vector<int> f60{17, 17, 16}, f30{33, 33, 34}, f20{50}, f15{67, 67, 66}, uneven{10, 25, 15};
    const Pace paces[] = {
        {"60", f60, 180}, {"60", f60, 120}, {"60", f60, 30},         {"60", f60, 90, 120},
        {"30", f30, 180}, {"30", f30, 120}, {"30", f30, 90},         {"30", f30, 30},
        {"20", f20, 180}, {"20", f20, 120}, {"15", f15, 180},        {"15", f15, 120},
        {"15", f15, 90},  {"15", f15, 30},  {"uneven", uneven, 120}, {"uneven", uneven, 30}};
    for (const Pace& pace : paces) {
        SCOPED_TRACE(fmt::format("{} frames a second, {} pixels a second", pace.name, pace.rate));
        ScrollClock clock;
        columnsOf(clock, pace.rate, pace.frames, 5);
        const float step = clock.step();
        EXPECT_NEAR(columnsOf(clock, pace.rate, pace.frames, 60), pace.reached * 60, pace.reached * 0.6f);
        EXPECT_EQ(clock.step(), step);
        EXPECT_NEAR(clock.pixelRate(), pace.reached, pace.reached * 0.25f) << "of single frames";
    }
}

TEST(ScrollClock, HoldsOnToItsStepAndForgetsAHiccup) {
    ScrollClock whole;
    columnsOf(whole, 60.0f, {17, 17, 16}, 5);
    EXPECT_EQ(whole.step(), 1.0f);
    columnsOf(whole, 42.0f, {17, 17, 16}, 5);
    EXPECT_EQ(whole.step(), 1.0f) << "0.7 pixels a frame";
    columnsOf(whole, 30.0f, {17, 17, 16}, 5);
    EXPECT_EQ(whole.step(), 0.5f);
    columnsOf(whole, 42.0f, {17, 17, 16}, 5);
    EXPECT_EQ(whole.step(), 0.5f) << "coming from below";

    ScrollClock clock;
    columnsOf(clock, 120.0f, {17, 17, 16}, 5);
    const float before = clock.frameWidth();
    clock.tick(1000, 120.0f, kWidth);
    EXPECT_FLOAT_EQ(clock.frameWidth(), before * 1.3f) << "as four frames";
    columnsOf(clock, 120.0f, {17, 17, 16}, 1);
    EXPECT_EQ(clock.step(), 2.0f);
    clock.tick(0, 120.0f, kWidth);
    EXPECT_EQ(clock.step(), 2.0f) << "two frames in a millisecond";
}

TEST(PenMotion, DriftsAndJumpsBackWithinItsTimeWithoutAJerk) {
    PenMotion pen;
    pen.reset(kWidth);
    const PenMotion::Frame frame{2.0f, 0.75f, kWidth, 16.7f};
    pen.advance(frame);
    EXPECT_NEAR(pen.position(), 0.3f * kWidth, 3.0f) << "at once, as nothing is drawn yet";
    float last = pen.position();
    float fastest = 0.0f;
    int returning = 0;
    for (int i = 0; i < 3600; ++i) {
        EXPECT_FALSE(pen.advance(frame));
        const float moved = pen.position() - last;
        last = pen.position();
        fastest = std::max(fastest, std::abs(moved));
        if (moved < 0.0f) ++returning;
        ASSERT_GT(last, 0.25f * kWidth);
        ASSERT_LT(last, kWidth + 4.0f);
    }
    const int jumps = static_cast<int>(std::round(3600 * 1.5f / (0.7f * kWidth)));
    EXPECT_NEAR(returning / jumps, 36, 8);
    EXPECT_LT(fastest, 0.7f * kWidth / 36 * 2.5f);
    PenMotion rested;
    rested.rest(kWidth);
    EXPECT_TRUE(rested.advance(frame));
    PenMotion still;
    still.reset(kWidth);
    still.advance({2.0f, 0.0f, kWidth, 16.7f});
    still.advance(frame);
    still.advance(frame);
    EXPECT_GT(still.position(), kWidth - 5.0f) << "a full picture leaves softly";
}

/// Against the direct definition, with random tables and widths.
TEST(Compression, KeepsEachExtreme) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> level(0.0f, 400.0f);
    for (int round = 0; round < 200; ++round) {
        std::vector<float> table(2 + random() % 2000);
        for (float& position : table) position = level(random);
        const int columns = static_cast<int>(table.size()) - kTableLead;
        const int count =
            kTableLead + (columns > 0 ? 1 + static_cast<int>(random() % static_cast<unsigned>(columns)) : 0);
        for (const auto operation : {RealTimeOperation::Maximum, RealTimeOperation::Minimum}) {
            std::vector<float> compressed;
            compressTable(table, std::max(count, kTableLead), operation, compressed);
            if (columns == 0) continue;
            const bool greatest = operation == RealTimeOperation::Maximum;
            const auto most = [&](auto from, auto to) {
                return greatest ? *std::min_element(from, to) : *std::max_element(from, to);
            };
            EXPECT_NEAR(most(compressed.begin() + 2, compressed.end()), most(table.begin() + 2, table.end()),
                        0.002f);
            // Each old column lies under the new one at its place.
            const double factor = static_cast<double>(compressed.size() - 2) / columns;
            for (int i = 0; i < columns; ++i) {
                const auto at = static_cast<std::size_t>(std::min<double>(i * factor, columns));
                const float old = table[static_cast<std::size_t>(i) + 2];
                const float around =
                    most(compressed.begin() + 2 + static_cast<std::ptrdiff_t>(at > 0 ? at - 1 : 0),
                         compressed.begin() + 2 +
                             static_cast<std::ptrdiff_t>(std::min(at + 2, compressed.size() - 2)));
                ASSERT_TRUE(greatest ? around <= old + 0.002f : around >= old - 0.002f);
            }
        }
    }
}

TEST(Spline, RisesSoftlyFromOneEndToTheOther) {
    const Spline ease;
    EXPECT_EQ(ease.valueAt(0.0f), 0.0f);
    EXPECT_EQ(ease.valueAt(1.0f), 1.0f);
    for (float x = 0.0f; x < 0.999f; x += 0.001f) EXPECT_LE(ease.valueAt(x), ease.valueAt(x + 0.001f));
    // At t = 1/2 the Bezier curve is at (1 + 3 * 0.7 + 3 * 0.6) / 8, (1 + 3 * 0.06 + 3 * 0.92) / 8.
    EXPECT_NEAR(ease.valueAt(0.6125f), 0.4925f, 1e-3f);
    EXPECT_NEAR(ease.valueAt(-0.7f), -0.06f, 1e-6f);
    EXPECT_NEAR(ease.valueAt(1.4f), 1.08f, 1e-6f);
}

}  // namespace
}  // namespace vanta::interface
