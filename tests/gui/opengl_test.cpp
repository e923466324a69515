// The renderer by itself, on a window that nobody sees, beside the one that draws in memory.

#include "tests/gui/opengl_stage.hpp"

// After the stage, whose headers define what must be taken back before ours.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <mutex>

#include "app/gallery/gallery_page.hpp"
#include "gui/graphics/curve_shapes.hpp"
#include "gui/opengl/accelerated_renderer.hpp"
#include "gui/opengl/render_thread.hpp"
#include "gui/text/x11_text.hpp"
#include "gui/x11/glx_context.hpp"
#include "gui/x11/x11_session.hpp"
#include "gui/x11/x11_window.hpp"
#include "tests/gui/sheet.hpp"
#include "tests/gui/test_interface.hpp"

namespace vanta::gui {
namespace {

template <typename Draw>
Difference differenceOf(Stage& stage, test::Sheet& sheet, Draw&& draw) {
    draw(sheet.canvas());
    const DeviceRect& size = sheet.bitmap.pixelRect();
    return {sheet.pixels(), stage.frame(size.right, size.bottom, draw)};
}

class OpenGlPicture : public testing::TestWithParam<float> {
protected:
    OpenGlPicture() : sheet(200.0f, 160.0f, GetParam()), stage(sheet.backing) {
        image.setLogicalSize(60.0f, 40.0f);
        image.fill({0, 0, 0, 0});
        image.canvas().fillRect({5.0f, 5.0f, 40.0f, 30.0f}, {220, 120, 40, 255});
        image.canvas().fillRect({20.0f, 10.0f, 60.0f, 40.0f}, {20, 90, 200, 120});
        mask.setLogicalSize(50.0f, 50.0f);
        mask.fill({0, 0, 0, 0});
        for (int i = 0; i < 25; ++i) {
            const auto at = static_cast<float>(2 * i);
            mask.canvas().fillRect({at, 0.0f, at + 2.0f, 50.0f},
                                   {255, 255, 255, static_cast<std::uint8_t>(10 * i)});
        }
    }

    test::Sheet sheet;
    Stage stage;
    AcceleratedBitmap image{sheet.backing};
    AcceleratedBitmap mask{sheet.backing};
};

INSTANTIATE_TEST_SUITE_P(Scales, OpenGlPicture, testing::Values(1.0f, 1.5f, 2.0f));

TEST_P(OpenGlPicture, RectanglesPicturesAndTextAreTheSamePixels) {
    X11Text text(sheet.backing, std::make_unique<AcceleratedBitmap>(sheet.backing));
    text.text = "-12.5 dB";
    text.color = Color{230, 210, 180, 255};
    Bitmap plain(sheet.backing);
    plain.setLogicalSize(30.0f, 20.0f);
    plain.fill({200, 30, 90, 255});
    const auto draw = [&](Canvas& canvas) {
        canvas.fillRect({0.0f, 0.0f, 200.0f, 160.0f}, {40, 50, 60, 255});
        canvas.fillRect({10.3f, 10.7f, 90.2f, 33.3f}, {250, 200, 100, 77});
        canvas.drawFrame({20.0f, 50.0f, 80.0f, 70.0f}, {255, 255, 255, 200}, 1.0f);
        canvas.drawPoint({3.0f, 3.0f}, {255, 0, 0, 255});
        canvas.drawBitmap(image, {100.0f, 10.0f});
        canvas.drawBitmap(plain, {150.0f, 130.0f}, 200);
        canvas.drawText(text, {10.0f, 80.0f});
        canvas.origin = Point{0.3f, 5.4f};
        canvas.alpha = 130;
        canvas.clip = Rect{105.0f, 50.0f, 140.0f, 90.0f};
        canvas.drawBitmap(image, {100.0f, 40.0f}, 220);
        canvas.clip = Rect{0.0f, 0.0f, 200.0f, 150.0f};
        canvas.drawBitmapMasked(image, {10.0f, 100.0f, 70.0f, 140.0f}, {2.0f, 3.0f}, mask, {5.0f, 1.0f}, 240);
        canvas.drawStretched(image, {80.0f, 95.0f, 190.0f, 150.0f}, image.logicalRect());
        canvas.drawBitmap(image, {-30.0f, -20.0f});
        canvas.drawBitmap(image, {180.0f, 140.0f});
    };
    EXPECT_LE(differenceOf(stage, sheet, draw).worst, 3);
    // Again, from textures that are there already.
    EXPECT_LE(Difference(sheet.pixels(),
                         stage.frame(sheet.bitmap.pixelRect().right, sheet.bitmap.pixelRect().bottom, draw))
                  .worst,
              3);
}

TEST_P(OpenGlPicture, TexturesFollowTheirBitmapsAndGoWithThem) {
    const DeviceRect size = sheet.bitmap.pixelRect();
    const auto draw = [&](Canvas& canvas) { canvas.drawBitmap(image, {20.0f, 30.0f}); };
    const auto expectSame = [&] {
        sheet.bitmap.fill({0, 0, 0, 255});
        EXPECT_LE(differenceOf(stage, sheet, draw).worst, 3);
    };
    expectSame();
    const GLuint name = image.texture().name;
    for (int i = 0; i < 5; ++i) {
        const auto at = static_cast<float>(i * 11);
        image.canvas().fillRect(Rect::ofSize(at, at / 2.0f, 5.0f, 7.0f), {90, 255, 10, 255});
        if (i > 1) expectSame();
    }
    image.setLogicalSize(20.0f, 70.0f);
    image.fill({255, 255, 255, 200});
    expectSame();
    EXPECT_EQ(image.texture().name, name);

    auto isTexture = stage.find<decltype(glIsTexture)>("glIsTexture");
    auto passing = std::make_unique<AcceleratedBitmap>(sheet.backing);
    passing->setPixelSize(3, 3);
    stage.frame(size.right, size.bottom, [&](Canvas& canvas) { canvas.drawBitmap(*passing, {0.0f, 0.0f}); });
    const GLuint doomed = passing->texture().name;
    EXPECT_TRUE(isTexture(doomed));
    passing.reset();
    EXPECT_TRUE(isTexture(doomed)) << "the context may be current elsewhere";
    stage.frame(size.right, size.bottom, [](Canvas&) {});
    EXPECT_FALSE(isTexture(doomed));
    stage.renderer().deleteTextures();
    EXPECT_FALSE(isTexture(name));
}

TEST_P(OpenGlPicture, LinesAgree) {
    const auto draw = [&](Canvas& canvas) {
        for (int i = 0; i < 24; ++i) {
            const float angle = static_cast<float>(i) * 0.2618f;
            const Point middle{100.0f, 80.0f};
            canvas.drawLine(middle + Point{20.0f * std::cos(angle), 20.0f * std::sin(angle)},
                            middle + Point{70.0f * std::cos(angle), 70.0f * std::sin(angle)},
                            {255, 240, 200, 230}, 0.5f + static_cast<float>(i) * 0.1f);
        }
        canvas.clip = Rect{10.0f, 10.0f, 60.0f, 40.0f};
        canvas.drawLine({0.0f, 0.0f}, {100.0f, 50.0f}, {90, 255, 90, 255}, 3.0f);
        canvas.drawLine({30.0f, 20.0f}, {30.005f, 20.0f}, {255, 0, 0, 255}, 3.0f);
    };
    // At the corners of its ends a line is joined by triangles, and in memory by a product.
    const Difference found = differenceOf(stage, sheet, draw);
    EXPECT_LE(found.worst, 64);
    EXPECT_LE(found.notable, 120);
}

/// Values that are flat, straight, steep, wavy and broken in turn.
std::vector<float> shape() {
    std::vector<float> values;
    for (int i = 0; i < 200; ++i) {
        const auto x = static_cast<float>(i);
        values.push_back(i < 40    ? 60.0f
                         : i < 80  ? 60.0f - (x - 40.0f)
                         : i < 140 ? 40.0f + 20.0f * std::sin((x - 80.0f) * 0.3f)
                         : i < 150 ? 150.3f
                                   : 90.0f + 2.0f * std::sin(x * 3.0f));
    }
    return values;
}

TEST_P(OpenGlPicture, CurvesAgreeInBothDirections) {
    const std::vector<float> values = shape();
    std::vector<float> lower = values;
    for (float& value : lower) value = 150.0f - 0.5f * value;
    Graph upperGraph(values), lowerGraph(lower);
    const Gradient gradient({255, 60, 60, 255}, {255, 220, 80, 200}, 0.4f, {60, 255, 120, 255});
    CurveSet filled;
    filled.top = {20, 20, 30, 0};
    filled.entries[0] = {&upperGraph, {60, 60, 90, 200}, {}, &gradient, {120, 120, 255, 180}, 2.0f, 6};
    filled.bottom = {10, 10, 40, 40};
    CurveSet both;
    both.count = 2;
    both.top = both.entries[0].above = {0, 40, 0, 80};
    both.entries[0] = {&upperGraph, {0, 40, 0, 80}, {255, 255, 255, 255}, nullptr, {90, 0, 0, 120}, 1.0f, 0};
    both.entries[1] = {&lowerGraph, {90, 0, 0, 120}, {255, 180, 0, 255}, nullptr, {0, 0, 90, 160}, 3.0f, 2};
    both.bottom = {0, 0, 90, 160};
    for (const auto orientation : {Canvas::CurveOrientation::OverX, Canvas::CurveOrientation::OverY}) {
        for (const CurveSet* set : {&filled, &both}) {
            sheet.bitmap.fill({0, 0, 0, 255});
            const auto draw = [&](Canvas& canvas) {
                canvas.alpha = 220;
                canvas.drawCurves(*set, {5.0f, 3.0f, 190.0f, 150.0f}, {4.0f, 6.0f}, orientation);
                canvas.alpha = 255;
                canvas.drawCurve(upperGraph, {0, 255, 255, 255}, {}, {}, 1.5f, {0.0f, 0.0f, 200.0f, 160.0f},
                                 {0.0f, 10.0f}, orientation);
            };
            const Difference found = differenceOf(stage, sheet, draw);
            // Columns that are left out lie a fraction of a pixel off.
            EXPECT_LE(found.worst, 24);
            EXPECT_LE(found.notable, 8);
        }
    }
}

TEST_P(OpenGlPicture, TheGalleryLooksTheSame) {
    TexturedInterface ui(gallery::kPageWidth, gallery::kPageHeight);
    ui.deviceBacking().setScale(GetParam());
    gallery::buildGallery(ui, false);
    ui.drainRelay();
    const std::unique_ptr<Bitmap> page = ui.picture();
    Stage wide(ui.deviceBacking());
    const Difference found(test::pixelsOf(*page),
                           wide.frame(page->pixelRect().right, page->pixelRect().bottom,
                                      [&](Canvas& canvas) { ui.rootControl().drawTree(canvas); }));
    // Curves leave columns out whose neighbours are nearly as steep.
    EXPECT_LE(found.worst, 20);
    EXPECT_LE(found.notable, page->pixelRect().right * page->pixelRect().bottom / 2000);
}

}  // namespace
}  // namespace vanta::gui
