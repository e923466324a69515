#include <gtest/gtest.h>

#include <algorithm>

#include "gui/graphics/curve_shapes.hpp"
#include "gui/graphics/gradient.hpp"
#include "tests/gui/pictures.hpp"
#include "tests/gui/sheet.hpp"

namespace vanta::test {
namespace {

using namespace gui;

constexpr float kScales[] = {1.0f, 1.5f, 2.0f};
constexpr Color kWhite{255, 255, 255, 255};
constexpr Color kRed{255, 0, 0, 255};

/// A picture whose every pixel tells where it is.
void numberPixels(Bitmap& bitmap, bool withAlpha) {
    for (int y = 0; y < bitmap.pixelRect().bottom; ++y) {
        for (int x = 0; x < bitmap.pixelRect().right; ++x) {
            bitmap.row(y)[x] = toPixel({static_cast<std::uint8_t>(x + 1), static_cast<std::uint8_t>(y + 1),
                                        200, static_cast<std::uint8_t>(withAlpha ? 100 + x : 255)});
        }
    }
    bitmap.hasAlpha = withAlpha;
}

TEST(Canvas, PutsLogicalCoordinatesOnWholePixels) {
    Sheet sheet(10, 10, 1.5f);
    sheet.canvas().fillRect({1, 2, 2, 3}, kWhite);
    EXPECT_EQ(sheet.ink(), (DeviceRect{2, 3, 3, 5}));
    // Moved by an origin that is no whole pixel, a rectangle keeps its size in pixels.
    for (float x = 0; x < 3; x += 0.25f) {
        Sheet moved(10, 10, 1.5f);
        Canvas& canvas = moved.canvas();
        canvas.clip = {-x, 0, 10 - x, 10};
        canvas.origin = {x, 0};
        canvas.fillRect({2, 2, 4, 4}, kWhite);
        EXPECT_EQ(moved.ink().width(), 3) << x;
        EXPECT_EQ(moved.ink().left, toDevice(x, 1.5f) + 3) << x;
    }
}

TEST(Canvas, DrawsNothingOutsideItsClipAndNothingIntoAnEmptyOne) {
    Sheet sheet(20, 20, 1.0f);
    Sheet image(20, 20, 1.0f, kWhite);
    Canvas& canvas = sheet.canvas();
    canvas.clip = {4, 5, 9, 10};
    canvas.origin = {1, 1};
    canvas.drawLine({0, 0}, {20, 20}, kWhite, 3);
    canvas.drawFrame({5, 6, 7, 8}, kWhite, 10);
    canvas.drawBitmap(image.bitmap, {0, 0});
    EXPECT_EQ(sheet.ink(), (DeviceRect{5, 6, 10, 11}));

    Sheet untouched(20, 20, 1.0f);
    Canvas& closed = untouched.canvas();
    closed.clip = Rect{};
    closed.fillRect({0, 0, 20, 20}, kWhite);
    closed.drawBitmap(image.bitmap, {0, 0});
    closed.drawLine({0, 0}, {20, 20}, kWhite, 3);
    closed.drawStretched(image.bitmap, {0, 0, 20, 20}, {0, 0, 8, 8});
    EXPECT_TRUE(untouched.ink().isEmpty());
}

TEST(Canvas, ShowsTheSamePictureThroughEveryClip) {
    for (const float scale : kScales) {
        for (const bool withAlpha : {false, true}) {
            Sheet image(9, 9, scale), mask(9, 9, scale);
            numberPixels(image.bitmap, withAlpha);
            numberPixels(mask.bitmap, true);
            const auto draw = [&](Canvas& canvas) {
                canvas.drawBitmap(image.bitmap, {2.3f, 1});
                canvas.drawBitmap(image.bitmap, {3, 10, 9, 16}, {1, 2}, 180);
                canvas.drawBitmapMasked(image.bitmap, {9, 9, 16, 16}, {1, 0}, mask.bitmap, {2, 1});
            };
            Sheet whole(18, 18, scale), parts(18, 18, scale);
            draw(whole.canvas());
            Canvas& canvas = parts.canvas();
            for (const auto& [left, right] : {std::pair{0.0f, 5.0f}, {5.0f, 6.7f}, {6.7f, 18.0f}}) {
                for (const auto& [top, bottom] : {std::pair{0.0f, 3.0f}, {3.0f, 18.0f}}) {
                    canvas.clip = {left, top, right, bottom};
                    draw(canvas);
                }
            }
            EXPECT_EQ(parts.pixels(), whole.pixels()) << scale;
        }
    }
}

TEST(Canvas, FadesAllThatItDraws) {
    Sheet image(4, 4, 1.0f, kWhite), mask(4, 4, 1.0f, {0, 0, 0, 128});
    image.bitmap.hasAlpha = false;
    const auto drawn = [&](int alpha, auto draw) {
        Sheet sheet(4, 4, 1.0f);
        Canvas& canvas = sheet.canvas();
        canvas.alpha = alpha;
        draw(canvas);
        return int{sheet.at(1, 1).red};
    };
    const auto bitmap = [&](Canvas& canvas) { canvas.drawBitmap(image.bitmap, {0, 0}, 128); };
    EXPECT_EQ(drawn(255, bitmap), 128);
    EXPECT_EQ(drawn(128, bitmap), 64);
    EXPECT_EQ(drawn(0, bitmap), 0);
    EXPECT_EQ(drawn(128, [](Canvas& canvas) { canvas.fillRect({0, 0, 4, 4}, kWhite); }), 128);
    const auto masked = [&](Canvas& canvas) {
        canvas.drawBitmapMasked(image.bitmap, {0, 0, 4, 4}, {0, 0}, mask.bitmap, {0, 0});
    };
    EXPECT_EQ(drawn(128, masked), 64);
    EXPECT_EQ(drawn(128, [](Canvas& canvas) { canvas.drawLine({0, 1}, {4, 1}, kWhite, 1); }), 128);
    const Graph atTop;
    CurveSet below;
    below.entries[0].curve = &atTop;
    below.entries[0].below = below.bottom = kWhite;
    const auto area = [&](Canvas& canvas) {
        canvas.drawCurves(below, {0, -4, 4, 4}, {0, -4}, Canvas::CurveOrientation::OverX);
    };
    EXPECT_EQ(drawn(128, area), 128);
}

TEST(Canvas, FramesARectangleOnItsOutside) {
    Sheet sheet(10, 10, 1.0f);
    sheet.canvas().drawFrame({3, 3, 6, 6}, kWhite.withAlpha(128), 2);
    EXPECT_EQ(sheet.ink(), (DeviceRect{1, 1, 8, 8}));
    // No pixel twice, and none inside.
    const std::vector<Pixel> pixels = sheet.pixels();
    EXPECT_EQ(std::ranges::count(pixels, toPixel({128, 128, 128, 255})), 7 * 7 - 3 * 3);
    EXPECT_EQ(std::ranges::count(pixels, 0u), 10 * 10 - 40);
}

TEST(Canvas, GrowsPicturesByRepeatingTheirMiddle) {
    for (const float scale : kScales) {
        Sheet image(12, 8, scale);
        numberPixels(image.bitmap, false);
        for (const Rect target : {Rect{2, 2, 60, 40}, Rect{2, 2, 14, 40}, Rect{2, 2, 60, 10},
                                  Rect{2, 2, 9, 7}, Rect{2, 2, 6, 6}}) {
            Sheet sheet(64, 44, scale);
            Canvas& canvas = sheet.canvas();
            canvas.drawStretched(image.bitmap, target, image.bitmap.logicalRect());
            ASSERT_EQ(sheet.ink(), toDevice(target, scale));
            // What is shown at a pixel is what the inverse says.
            const DeviceRect pixels = toDevice(target, scale);
            for (int y = pixels.top; y < pixels.bottom; ++y) {
                for (int x = pixels.left; x < pixels.right; ++x) {
                    const Point at{(static_cast<float>(x) + 0.01f) / scale,
                                   (static_cast<float>(y) + 0.01f) / scale};
                    const Point from = canvas.stretchedPoint(image.bitmap, target, at);
                    const Color shown = sheet.at(x, y);
                    // A tile that is no whole number of pixels may be a pixel off.
                    const float off = scale == 1.5f ? 1.01f : 0.51f;
                    EXPECT_NEAR(static_cast<float>(shown.red) - 0.5f, from.x * scale, off) << x;
                    EXPECT_NEAR(static_cast<float>(shown.green) - 0.5f, from.y * scale, off) << y;
                }
            }
        }
    }
}

TEST(Lines, OnWholePixelsAreCrisp) {
    Sheet flat(20, 20, 1.0f), upright(20, 20, 1.0f);
    flat.canvas().drawLine({3, 5}, {13, 5}, kWhite, 1);
    EXPECT_EQ(flat.ink(), (DeviceRect{3, 5, 13, 6}));
    upright.canvas().drawLine({3, 5}, {3, 15}, kWhite, 1);
    EXPECT_EQ(upright.ink(), (DeviceRect{3, 5, 4, 15}));
    Sheet nothing(20, 20, 1.0f);
    nothing.canvas().drawLine({5, 5}, {5.005f, 5.005f}, kWhite, 4);
    nothing.canvas().drawLine({5, 5}, {15, 5}, kWhite, 0);
    nothing.canvas().drawLine({5, std::nanf("")}, {15, 5}, kWhite, 1);
    nothing.canvas().drawLine({-1e30f, 50}, {1e30f, 50}, kWhite, 1);
    EXPECT_TRUE(nothing.ink().isEmpty());
}

TEST(Lines, LookAsTheyWereApproved) {
    for (const float scale : kScales) {
        Sheet sheet(96, 64, scale, {});
        Canvas& canvas = sheet.canvas();
        for (int i = 0; i <= 6; ++i) {
            const float step = static_cast<float>(i);
            canvas.drawLine({4, 4}, {60, 4 + step * 9}, kWhite, 0.5f + 0.25f * step);
            canvas.drawLine({90 - step * 4, 60}, {70 + step * 3, 4}, {255, 180, 60, 255}, 1);
        }
        expectPicture(sheet.bitmap, atScale("lines", scale), 1);
    }
}

TEST(Gradient, MixesBetweenItsStops) {
    const Gradient three(kRed, {0, 0, 0, 255}, 0.25f, {0, 0, 255, 0});
    EXPECT_EQ(three.at(-1), kRed);
    EXPECT_EQ(three.at(0.625f), (Color{0, 0, 128, 128}));
    EXPECT_EQ(three.at(2), (Color{0, 0, 255, 0}));
    EXPECT_EQ(three.scaled(128).at(0), kRed.withAlpha(128));
    EXPECT_EQ(Gradient().at(0.5f), Color{});
    const Gradient step({{kRed, 0.0f}, {kRed, 0.5f}, {kWhite, 0.5f}, {kWhite, 1.0f}});
    EXPECT_EQ(step.at(0.49f), kRed);
    EXPECT_EQ(step.at(0.5f), kWhite);
}

}  // namespace
}  // namespace vanta::test
