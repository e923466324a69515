#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

#include "gui/graphics/rescale.hpp"
#include "gui/graphics/texture_updates.hpp"
#include "tests/gui/counter.hpp"
#include "tests/gui/sheet.hpp"

namespace vanta::test {
namespace {

using namespace gui;

/// Premultiplied pixels of any opacity.
void scribble(Bitmap& bitmap, int width, int height, unsigned seed) {
    bitmap.setPixelSize(width, height);
    bitmap.fill();
    std::mt19937 random(seed);
    const auto byte = [&] { return static_cast<std::uint8_t>(random()); };
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) bitmap.row(y)[x] = toPixel({byte(), byte(), byte(), byte()});
    }
}

TEST(Bitmap, KeepsALogicalSizeThatIsNoWholeNumberOfPixels) {
    DeviceBacking backing;
    Bitmap bitmap(backing);
    bitmap.setLogicalSize(7, 3);
    bitmap.fill({1, 2, 3, 255});
    backing.setScale(1.5f);
    EXPECT_EQ(bitmap.pixelRect(), (DeviceRect{0, 0, 11, 5}));
    EXPECT_EQ(bitmap.logicalRect(), (Rect{0, 0, 7, 3}));
    bitmap.setPixelSize(13, 5);
    EXPECT_EQ(bitmap.logicalRect(), (Rect{0, 0, 13 / 1.5f, 3}));
    bitmap.setPixelSize(0, 5);
    EXPECT_TRUE(bitmap.isEmpty());
    bitmap.fill();
}

TEST(Bitmap, TellsOfEachChangeOnce) {
    Counter listener;
    DeviceBacking backing;
    Bitmap bitmap(backing), other(backing);
    bitmap.onChange.addHandler(&listener, &Counter::hear);
    scribble(other, 4, 4, 1);
    bitmap.copyFrom(other);
    EXPECT_EQ(listener.count, 1);
    bitmap.fill();
    EXPECT_EQ(listener.count, 2);
}

TEST(Bitmap, MixesTwoImages) {
    DeviceBacking backing;
    Bitmap from(backing), to(backing), mixed(backing);
    scribble(from, 9, 5, 1);
    scribble(to, 9, 5, 2);
    mixed.crossfade(from, to, 0);
    EXPECT_EQ(pixelsOf(mixed), pixelsOf(from));
    mixed.crossfade(from, to, 255);
    EXPECT_EQ(pixelsOf(mixed), pixelsOf(to));
    mixed.crossfade(from, from, 99);
    EXPECT_EQ(pixelsOf(mixed), pixelsOf(from));
    const Rect part{2, 1, 6, 99};
    mixed.crossfade(from, to, 255, &part);
    EXPECT_EQ(mixed.logicalRect(), (Rect{0, 0, 4, 4}));
    EXPECT_EQ(mixed.row(3)[3], to.row(4)[5]);
    // Where the other image has nothing it is transparent.
    scribble(to, 3, 3, 2);
    mixed.crossfade(from, to, 255);
    EXPECT_EQ(mixed.row(2)[2], to.row(2)[2]);
    EXPECT_EQ(mixed.row(2)[3], kTransparentPixel);
}

TEST(Bitmap, TurnsAndMirrorsImages) {
    DeviceBacking backing;
    Bitmap image(backing), a(backing), b(backing);
    scribble(image, 7, 4, 3);
    a.transposeFrom(image);
    EXPECT_EQ(a.pixelRect(), (DeviceRect{0, 0, 4, 7}));
    EXPECT_EQ(a.row(0)[3], image.row(0)[0]);  // upper left comes to lie upper right: clockwise
    b.transposeFrom(a);
    a.flipFrom(image, Bitmap::LeftToRight | Bitmap::TopToBottom);
    EXPECT_EQ(pixelsOf(b), pixelsOf(a));
    a.flipFrom(image, Bitmap::LeftToRight);
    EXPECT_EQ(a.row(1)[0], image.row(1)[6]);

    // A turn by a quarter around the middle is the same, without any loss.
    scribble(image, 7, 7, 4);
    b.setPixelSize(7, 7);
    b.rotateFrom(image, std::acos(0.0f), {3, 3}, {3, 3});
    a.transposeFrom(image);
    EXPECT_EQ(pixelsOf(b), pixelsOf(a));
    // Half a pixel beyond the edge there is half of it left.
    image.fill({255, 255, 255, 255});
    b.rotateFrom(image, 0.0f, {3, 3}, {3.5f, 3});
    EXPECT_NEAR(toColor(b.row(3)[0]).alpha, 128, 1);
    EXPECT_EQ(toColor(b.row(3)[1]).alpha, 255);
    b.rotateFrom(image, 0.5f, {3, 3}, {100, 100});
    EXPECT_EQ(pixelsOf(b), std::vector<Pixel>(49, kTransparentPixel));
}

TEST(Bitmap, TintsColoursNotPremultipliedOnes) {
    DeviceBacking backing;
    Bitmap image(backing), tinted(backing);
    image.setPixelSize(1, 1);
    image.fill({200, 100, 50, 128});
    tinted.tintFrom(image, {128, 255, 0, 128});
    EXPECT_EQ(tinted.row(0)[0], toPixel({100, 100, 0, 64}));
}

TEST(Bitmap, LiftsLightTextAndLeavesBlackTextAsItIs) {
    DeviceBacking backing;
    Bitmap text(backing);
    const auto coverOf = [&](Color color) {
        text.setPixelSize(3, 1);
        std::ranges::copy(std::array{0x00FFFFFFu, 0x00808080u, 0x00000000u}, text.row(0));
        text.setTextMask(color);
        EXPECT_EQ(text.row(0)[0], kTransparentPixel);
        EXPECT_EQ(text.row(0)[2], toPixel(color));
        return opacityOf(text.row(0)[1]);
    };
    EXPECT_EQ(coverOf({0, 0, 0, 255}), 127);
    EXPECT_EQ(coverOf({255, 255, 255, 255}), std::lround(255 * std::pow(127 / 255.0, 0.45)));
    EXPECT_EQ(coverOf({0, 0, 0, 128}), 64);
}

TEST(Rescaling, KeepsLinesOfOnePixelAtThreeQuarters) {
    // White lines of two pixels on black, as artwork at double density draws one of one unit. Wherever they
    // stand in a group of four columns, they become no wider than two pixels.
    for (std::size_t at = 8; at < 16; at += 2) {
        std::vector<Pixel> picture(24 * 8, 0u);
        for (std::size_t row = 0; row < 8; ++row)
            picture[row * 24 + at] = picture[row * 24 + at + 1] = 0xFFFFFFu;
        const PixelBlock block = rescaled(picture, 24, 8, 0.75f);
        ASSERT_EQ(block.width, 18);
        ASSERT_EQ(block.height, 6);
        EXPECT_LE(std::count_if(block.pixels.begin(), block.pixels.end(), std::identity{}), 2 * 6) << at;
        EXPECT_GE(std::ranges::count(block.pixels, 0x00FFFFFFu), 6) << at;
    }
    // And what is even stays so, with sizes that do not divide as well.
    for (const int size : {1, 2, 3, 5, 6, 7, 9}) {
        const std::vector<Pixel> plain(static_cast<std::size_t>(size * size), 0x40102030u);
        const PixelBlock block = rescaled(plain, size, size, 0.75f);
        EXPECT_EQ(block.width, static_cast<int>(static_cast<float>(size) * 0.75f + 0.75f));
        for (const Pixel pixel : block.pixels) EXPECT_EQ(pixel, 0x40102030u);
    }
}

TEST(Rescaling, HalvesByTheMeanAndElseTakesTheNearestPixel) {
    const std::array<Pixel, 4> square{0x00000000u, 0x000000FFu, 0x00FF0000u, 0xFF000000u};
    EXPECT_EQ(rescaled(square, 2, 2, 0.5f).pixels, std::vector<Pixel>{0x40400040u});
    const std::array<Pixel, 2> pair{1u, 2u};
    EXPECT_EQ(rescaled(pair, 2, 1, 2.0f).pixels, (std::vector<Pixel>{1, 1, 2, 2, 1, 1, 2, 2}));
    EXPECT_EQ(rescaled(pair, 2, 1, 1.5f).pixels, (std::vector<Pixel>{1, 1, 2, 1, 1, 2}));
}

TEST(TextureUpdates, HoldAtMostThreeRectangles) {
    TextureUpdates updates;
    updates.mark({0, 0, 1, 1});
    EXPECT_EQ(updates.state(), TextureUpdates::State::Whole);
    updates.uploaded();
    EXPECT_EQ(updates.state(), TextureUpdates::State::Current);
    updates.mark({0, 0, 10, 10});
    updates.mark({5, 5, 12, 12});  // together smaller than the two apart
    EXPECT_EQ(updates.parts(), (std::vector<DeviceRect>{{0, 0, 12, 12}}));
    for (const int x : {100, 200, 190}) updates.mark({x, 0, x + 10, 10});
    EXPECT_EQ(updates.state(), TextureUpdates::State::Parts);
    EXPECT_EQ(updates.parts(),
              (std::vector<DeviceRect>{{0, 0, 12, 12}, {100, 0, 110, 10}, {190, 0, 210, 10}}));
    updates.markWhole();
    EXPECT_TRUE(updates.parts().empty());
}

TEST(DeviceBacking, LetsListenersGoWhileItTellsThem) {
    struct Listener final : DeviceBacking::BackingScaleListener {
        explicit Listener(DeviceBacking& owner) : backing(owner) { backing.addListener(*this); }
        ~Listener() override { backing.removeListener(*this); }
        void backingScaleChanged() override {
            ++told;
            victim.reset();
        }
        DeviceBacking& backing;
        int told = 0;
        std::unique_ptr<Listener> victim;
    };
    DeviceBacking backing;
    Listener first(backing);
    first.victim = std::make_unique<Listener>(backing);
    backing.setScale(2.0f);
    backing.setScale(2.0f);
    EXPECT_EQ(first.told, 1);
}

}  // namespace
}  // namespace vanta::test
