#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/curve_outline.hpp"
#include "gui/graphics/curve_shapes.hpp"
#include "tests/gui/pictures.hpp"

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
    std::mt19937 random(3);
    std::vector<float> table(2000);
    float value = 100;
    for (float& x : table) x = value += 0.02f * static_cast<float>(static_cast<int>(random() % 101) - 50);
    const Graph rough(table);
    const Function gentle([](float x) { return 100 + 80 * std::sin(x * 0.01f); });
    for (const Curve* curve : {static_cast<const Curve*>(&kWave), static_cast<const Curve*>(&rough),
                               static_cast<const Curve*>(&gentle)}) {
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

TEST(CurveStepper, ReachesAsFarAsTheWeightedSlopesBesideIt) {
    // Curves that bend one way leave no wiggle out, so that the mean over half the line is all there is.
    const Function bend([](float x) { return 0.01f * (x - 400) * (x - 400); });
    for (const auto& [width, glow] : {std::pair{1.0f, 0}, {3.3f, 2}, {5.0f, 14}, {4.0f, 60}}) {
        const float half = std::max((width + static_cast<float>(glow) + 1) / 2, 1.0f);
        CurveStepper stepper;
        stepper.begin(bend, width, glow, 0, 7.0f, 1.0f);
        for (int i = 0; i < 300; ++i) {
            const CurveStepper::Step step = stepper.next();
            EXPECT_FLOAT_EQ(step.middle, bend.valueAt(static_cast<float>(i)) + 7.0f);
            // The slope over a distance of `half` columns, where the last may be a fraction.
            const float whole = std::floor(half), x = static_cast<float>(i);
            const auto rise = [&](float direction) {
                const auto at = [&](float d) { return bend.valueAt(x + direction * d); };
                const float inner = at(whole) - at(0), outer = at(whole + 1) - at(whole);
                return direction * (inner + (half - whole) * outer) / half;
            };
            // It falls all the way: the steeper slope on the left lets the line reach up.
            const float expected = std::max(-rise(-1), -rise(1));
            EXPECT_NEAR(std::max(step.up, step.down), expected, 0.01f * expected + 0.01f)
                << width << " " << i;
            EXPECT_NEAR(std::min(step.up, step.down), std::min(-rise(-1), -rise(1)),
                        0.01f * expected + 0.01f);
        }
    }
}

struct Picture {
    Picture(float width, float height, float scale, Color ground = {0, 0, 0, 255}) {
        backing.setScale(scale);
        bitmap.setLogicalSize(width, height);
        bitmap.fill(ground);
    }
    void draw(const CurveSet& set, Orientation orientation = Orientation::OverX) {
        bitmap.canvas().drawCurves(set, bitmap.logicalRect(), {0, 0}, orientation);
    }
    Color at(int x, int y) const { return toColor(bitmap.row(y)[x]); }
    std::vector<Pixel> pixels() const {
        return {bitmap.row(0), bitmap.row(0) + bitmap.pixelRect().width() * bitmap.pixelRect().height()};
    }
    DeviceBacking backing;
    Bitmap bitmap{backing};
};

CurveSet filled(const Curve& curve) {
    CurveSet set = lineOf(curve, 1.5f, 3);
    set.top = {200, 40, 40, 200};
    set.entries[0].above = {200, 40, 40, 30};
    set.entries[0].below = kBlue.withAlpha(150);
    set.bottom = kBlue.withAlpha(10);
    return set;
}

TEST(Curves, PutAFlatLineOnWholePixels) {
    const Function flat([](float) { return 10.0f; });
    for (const float scale : {1.0f, 2.0f}) {
        Picture picture(20, 20, scale);
        picture.draw(lineOf(flat));
        double ink = 0;
        const int x = 5;
        for (int y = 0; y < picture.bitmap.pixelRect().bottom; ++y) ink += picture.at(x, y).red / 255.0;
        EXPECT_NEAR(ink, scale, 0.02);
        EXPECT_EQ(picture.at(x, static_cast<int>(10 * scale)).red, 255);
    }
}

TEST(Curves, AreTheSameThroughEveryClipAndTurnedOnTheirSide) {
    for (const float scale : kScales) {
        const CurveSet set = filled(kWave);
        Picture whole(100, 60, scale), parts(100, 60, scale), side(60, 100, scale);
        whole.draw(set);
        Canvas& canvas = parts.bitmap.canvas();
        for (float x = 0; x < 100; x += 7) {
            for (float y = 0; y < 60; y += 22) {
                canvas.clip = {x, y, std::min(x + 7, 100.0f), std::min(y + 22, 60.0f)};
                canvas.drawCurves(set, {0, 0, 100, 60}, {0, 0}, Orientation::OverX);
            }
        }
        EXPECT_EQ(parts.pixels(), whole.pixels()) << scale;
        side.draw(set, Orientation::OverY);
        for (int y = 0; y < whole.bitmap.pixelRect().bottom; ++y) {
            for (int x = 0; x < whole.bitmap.pixelRect().right; ++x) {
                ASSERT_EQ(side.bitmap.row(x)[y], whole.bitmap.row(y)[x]) << x << ", " << y;
            }
        }
    }
}

TEST(Curves, FillTheAreaFromEdgeToLine) {
    const Function flat([](float) { return 50.0f; });
    CurveSet set = lineOf(flat, 2.0f);
    set.top = {255, 0, 0, 255};
    set.entries[0].above = {0, 0, 0, 255};
    set.entries[0].below = set.bottom = {0, 0, 255, 128};
    Picture picture(8, 100, 1.0f);
    picture.draw(set);
    EXPECT_NEAR(picture.at(3, 0).red, 255, 4);
    EXPECT_NEAR(picture.at(3, 24).red, 128, 4);
    EXPECT_NEAR(picture.at(3, 48).red, 2, 4);
    EXPECT_EQ(picture.at(3, 50), kWhite);
    for (const int y : {53, 80, 99}) EXPECT_EQ(picture.at(3, y).blue, 128);
    // Faded by its canvas, all of it is.
    Picture faded(8, 100, 1.0f);
    Canvas& canvas = faded.bitmap.canvas();
    canvas.alpha = 128;
    canvas.drawCurves(set, {0, 0, 8, 100}, {0, 0}, Orientation::OverX);
    EXPECT_EQ(faded.at(3, 50).red, 128);
    EXPECT_EQ(faded.at(3, 80).blue, 64);
}

TEST(Curves, OfASetNeverOverlap) {
    const Function upper([](float x) { return 20 + x * 0.3f; });
    const Function lower([](float x) { return 40 - x * 0.3f; });
    CurveSet set = lineOf(upper, 2.0f, 4);
    set.count = 2;
    set.entries[1] = set.entries[0];
    set.entries[1].curve = &lower;
    CurveOutline outline(set, 0, 0.0f, 100.0f, 1.0f);
    for (int i = 0; i < 100; ++i) {
        CurveColumn column;
        outline.next(column);
        float last = -1000;
        for (const CurveBand& band : column.bands) {
            for (const float row : {band.glowTop, band.coreTop, band.coreBottom, band.glowBottom}) {
                EXPECT_GE(row, last) << i;
                last = row;
            }
        }
        EXPECT_NEAR(column.bands[1].coreTop, 40 - static_cast<float>(i) * 0.3f, 3) << "the lower one stays";
    }
}

TEST(Curves, SurviveWhatIsNoNumber) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const Function hostile([](float x) {
        return x < 10 ? std::nanf("") : x < 20 ? kInfinity : x < 30 ? -kInfinity : x < 40 ? 3e38f : 12.0f;
    });
    Picture picture(60, 24, 1.0f);
    for (const int glow : {0, 30}) picture.draw(lineOf(hostile, 1.0f, glow));
    Picture sound(60, 24, 1.0f);
    sound.draw(lineOf(hostile));
    EXPECT_EQ(sound.at(50, 12), kWhite);
    EXPECT_EQ(sound.at(50, 5).red, 0);
}

TEST(Curves, LookAsTheyWereApproved) {
    const Function steps([](float x) { return x < 40 ? 50.0f : x < 44 ? 10.0f : 36 + 8 * std::sin(x); });
    const Function spikes([](float x) { return std::fmod(x, 23.0f) < 1 ? 8.0f : 52.0f; });
    const Function low([](float x) { return 36 + 16 * std::cos(x * 0.08f); });
    const Gradient heat({255, 60, 60, 255}, {255, 200, 60, 255}, 0.5f, {80, 220, 120, 255});
    for (const float scale : kScales) {
        Picture picture(160, 128, scale, {});
        Canvas& canvas = picture.bitmap.canvas();
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
    const auto slope = [&](float x) {
        return (hermite.valueAt(x + 0.01f) - hermite.valueAt(x - 0.01f)) / 0.02f;
    };
    EXPECT_NEAR(hermite.valueAt(2), 10, 1e-4);
    EXPECT_NEAR(hermite.valueAt(6), 14, 1e-4);
    EXPECT_NEAR(slope(2), 1, 0.01);
    EXPECT_NEAR(slope(6), -1, 0.01);

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
