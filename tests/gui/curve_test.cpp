#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "gui/graphics/curve_outline.hpp"
#include "gui/graphics/curve_shapes.hpp"
#include "tests/gui/pictures.hpp"
#include "tests/gui/sheet.hpp"

namespace vanta::test {
namespace {

using namespace gui;
using Orientation = Canvas::CurveOrientation;

constexpr float kScales[] = {1.0f, 1.5f, 2.0f};
constexpr Color kWhite{255, 255, 255, 255};
constexpr Color kBlue{60, 140, 255, 255};

class Function final : public Curve {
public:
    explicit Function(std::function<float(float)> function) : function_(std::move(function)) {}
    float valueAt(float x) const override { return function_(x); }

private:
    std::function<float(float)> function_;
};

const Function kWave([](float x) { return 30 + 20 * std::sin(x * 0.15f) * std::cos(x * 0.02f); });

CurveSet lineOf(const Curve& curve, float width = 1.0f, int glow = 0) {
    CurveSet set;
    set.entries[0].curve = &curve;
    set.entries[0].line = kWhite;
    set.entries[0].lineWidth = width;
    set.entries[0].glowWidth = glow;
    return set;
}

std::vector<CurveColumn> neededColumns(const CurveSet& set, int count, float scale = 1.0f) {
    CurveOutline outline(set, 0, 0.0f, 1000.0f, scale);
    std::vector<CurveColumn> columns;
    forEachNeededColumn(outline, count, [&](const CurveColumn& column) { columns.push_back(column); });
    return columns;
}

TEST(CurveFilter, NeedsTwoColumnsForAStraightStretch) {
    for (const float slope : {0.0f, 0.3f, -2.0f}) {
        const Function straight([&](float x) { return 5 + slope * x; });
        const auto columns = neededColumns(lineOf(straight), 1000);
        ASSERT_EQ(columns.size(), 2u) << slope;
        EXPECT_EQ(columns[0].column, 0);
        EXPECT_EQ(columns[1].column, 1000);
    }
}

TEST(CurveFilter, KeepsAFlatStretchFlatUpToAStep) {
    const Function step([](float x) { return x < 500 ? 10.0f : 40.0f; });
    const auto columns = neededColumns(lineOf(step), 1000);
    ASSERT_GE(columns.size(), 4u);
    EXPECT_LE(columns.size(), 8u);
    EXPECT_EQ(columns[1].column, 498);
    EXPECT_EQ(columns[1].bands[0].glowBottom, columns[0].bands[0].glowBottom);
}

TEST(CurveFilter, LosesNothingThatCouldBeSeen) {
    const Function rough([](float x) { return 100 + std::sin(x * x); });
    const Function gentle([](float x) { return 100 + 80 * std::sin(x * 0.01f); });
    for (const Function* curve : {&kWave, &rough, &gentle}) {
        const CurveSet set = lineOf(*curve, 1.5f);
        const auto needed = neededColumns(set, 1900, 1.5f);
        EXPECT_LT(needed.size(), curve == &gentle ? 800u : 1902u);
        CurveOutline all(set, 0, 0.0f, 1000.0f, 1.5f);
        std::size_t next = 0;
        for (int i = 0; i <= 1900; ++i) {
            CurveColumn exact;
            all.next(exact);
            while (needed[next].column < i) ++next;
            const CurveColumn& to = needed[next];
            const CurveColumn& from = needed[next > 0 ? next - 1 : 0];
            const int span = std::max(to.column - from.column, 1);
            const float t = static_cast<float>(i - from.column) / static_cast<float>(span);
            const float middle = from.steps[0].middle + t * (to.steps[0].middle - from.steps[0].middle);
            EXPECT_NEAR(middle, exact.steps[0].middle, 0.25f) << i;
        }
    }
}

TEST(CurveStepper, ReachesAsFarAsTheSlopesBesideIt) {
    // Curves that bend one way leave no wiggle out, so that the mean over half the line is all there is.
    const Function bend([](float x) { return 0.01f * (x - 400) * (x - 400); });
    for (const auto& [width, glow] : {std::pair{1.0f, 0}, {3.0f, 2}, {5.0f, 14}, {3.0f, 60}}) {
        const int half = std::max((static_cast<int>(width) + glow + 1) / 2, 1);
        CurveStepper stepper;
        stepper.begin(bend, width, glow, 0, 7.0f, 1.0f);
        for (int x = 0; x < 300; ++x) {
            const CurveStepper::Step step = stepper.next();
            const auto at = [&](int column) { return bend.valueAt(static_cast<float>(column)); };
            EXPECT_FLOAT_EQ(step.middle, at(x) + 7.0f);
            // It falls all the way: the steeper slope on the left lets the line reach up.
            const float left = (at(x - half) - at(x)) / static_cast<float>(half);
            const float right = (at(x) - at(x + half)) / static_cast<float>(half);
            EXPECT_NEAR(std::max(step.up, step.down), left, 0.01f * left + 0.01f) << width << " " << x;
            EXPECT_NEAR(std::min(step.up, step.down), right, 0.01f * left + 0.01f) << width << " " << x;
        }
    }
}

void draw(Sheet& sheet, const CurveSet& set, Orientation orientation = Orientation::OverX) {
    sheet.canvas().drawCurves(set, sheet.bitmap.logicalRect(), {0, 0}, orientation);
}

CurveSet filled(const Curve& curve) {
    CurveSet set = lineOf(curve, 1.5f, 3);
    set.top = {200, 40, 40, 200};
    set.entries[0].above = {200, 40, 40, 30};
    set.entries[0].below = kBlue.withAlpha(150);
    set.bottom = kBlue.withAlpha(10);
    return set;
}

TEST(Curves, AreTheSameThroughEveryClipAndTurnedOnTheirSide) {
    for (const float scale : kScales) {
        const CurveSet set = filled(kWave);
        Sheet whole(100, 60, scale), parts(100, 60, scale), side(60, 100, scale);
        draw(whole, set);
        Canvas& canvas = parts.canvas();
        for (float x = 0; x < 100; x += 7) {
            for (float y = 0; y < 60; y += 22) {
                canvas.clip = {x, y, std::min(x + 7, 100.0f), std::min(y + 22, 60.0f)};
                canvas.drawCurves(set, {0, 0, 100, 60}, {0, 0}, Orientation::OverX);
            }
        }
        EXPECT_EQ(parts.pixels(), whole.pixels()) << scale;
        draw(side, set, Orientation::OverY);
        for (int y = 0; y < whole.bitmap.pixelRect().bottom; ++y) {
            for (int x = 0; x < whole.bitmap.pixelRect().right; ++x) {
                ASSERT_EQ(side.bitmap.row(x)[y], whole.bitmap.row(y)[x]) << x << ", " << y;
            }
        }
    }
}

TEST(Curves, SurviveWhatIsNoNumber) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const Function hostile([](float x) {
        return x < 10 ? std::nanf("") : x < 20 ? kInfinity : x < 30 ? -kInfinity : x < 40 ? 3e38f : 12.0f;
    });
    Sheet glowing(60, 24, 1.0f), plain(60, 24, 1.0f);
    draw(glowing, lineOf(hostile, 1.0f, 30));
    draw(plain, lineOf(hostile));
    EXPECT_EQ(plain.at(50, 12), kWhite);
    EXPECT_EQ(plain.at(50, 5).red, 0);
}

TEST(Curves, LookAsTheyWereApproved) {
    const Function steps([](float x) { return x < 40 ? 50.0f : x < 44 ? 10.0f : 36 + 8 * std::sin(x); });
    const Function spikes([](float x) { return std::fmod(x, 23.0f) < 1 ? 8.0f : 52.0f; });
    const Function low([](float x) { return 36 + 16 * std::cos(x * 0.08f); });
    const Gradient heat({255, 60, 60, 255}, {255, 200, 60, 255}, 0.5f, {80, 220, 120, 255});
    for (const float scale : kScales) {
        Sheet picture(160, 128, scale, {});
        Canvas& canvas = picture.canvas();
        canvas.drawCurves(filled(kWave), {0, 0, 78, 62}, {0, 0}, Orientation::OverX);
        CurveSet stepped = lineOf(steps, 2);
        stepped.entries[0].below = stepped.bottom = kBlue.withAlpha(60);
        canvas.drawCurves(stepped, {82, 0, 160, 62}, {82, 0}, Orientation::OverX);
        CurveSet two = lineOf(kWave, 1.5f, 6);
        two.count = 2;
        two.entries[0].lineGradient = &heat;
        two.entries[1] = two.entries[0];
        two.entries[1].curve = &low;
        two.entries[1].lineGradient = nullptr;
        two.entries[1].line = kBlue;
        canvas.drawCurves(two, {0, 66, 78, 128}, {0, 66}, Orientation::OverX);
        canvas.drawCurves(lineOf(spikes), {82, 66, 120, 128}, {82, 66}, Orientation::OverX);
        canvas.drawCurves(filled(kWave), {122, 66, 160, 128}, {116, 66}, Orientation::OverY);
        expectPicture(picture.bitmap, atScale("curves", scale), 1);
    }
}

TEST(Graph, JoinsItsValuesAndHoldsTheOuterOnes) {
    const std::vector<float> table{10, 20, 40};
    const Graph graph(table, 1);
    EXPECT_FLOAT_EQ(graph.valueAt(-5), 10);
    EXPECT_FLOAT_EQ(graph.valueAt(-0.5f), 15);
    EXPECT_FLOAT_EQ(graph.valueAt(0.25f), 25);
    EXPECT_FLOAT_EQ(graph.valueAt(1e30f), 40);
    EXPECT_FLOAT_EQ(Graph().valueAt(3), 0);
}

TEST(Cubic, GoesThroughItsPointsWithoutOvershoot) {
    const Cubic hermite({2, 10}, 1, {6, 14}, -1);
    for (const auto& [x, y] : {Point{2, 10}, {2.01f, 10.01f}, {5.99f, 14.01f}, {6, 14}}) {
        EXPECT_NEAR(hermite.valueAt(x), y, 2e-4f) << x;
    }
    const Cubic straight({{{0, 0}, {4, 2}, {8, 4}, {12, 6}}});
    for (float x = 4; x <= 8; ++x) EXPECT_NEAR(straight.valueAt(x), x / 2, 1e-4);
    std::mt19937 random(9);
    for (int i = 0; i < 200; ++i) {
        std::array<Point, 4> points;
        for (std::size_t k = 0; k < 4; ++k) {
            points[k] = {static_cast<float>(k) * 16 + 1, static_cast<float>(random() % 100)};
        }
        const Cubic joined(points);
        const auto [low, high] = std::minmax(points[1].y, points[2].y);
        for (float x = points[1].x; x <= points[2].x; ++x) {
            EXPECT_GE(joined.valueAt(x), low - 0.01f);
            EXPECT_LE(joined.valueAt(x), high + 0.01f);
        }
        EXPECT_NEAR(joined.valueAt(points[2].x), points[2].y, 0.01);
    }
}

}  // namespace
}  // namespace vanta::test
