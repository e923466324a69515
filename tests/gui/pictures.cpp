#include "tests/gui/pictures.hpp"

#include <cairo.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <vector>

#include <fmt/format.h>

namespace vanta::test {
namespace {

constexpr gui::Color kGround{0x24, 0x26, 0x2B, 255};

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

std::vector<gui::Pixel> overGround(const gui::Bitmap& bitmap) {
    std::vector<gui::Pixel> pixels;
    for (int y = 0; y < bitmap.pixelRect().bottom; ++y) {
        for (int x = 0; x < bitmap.pixelRect().right; ++x) {
            const gui::Pixel p = bitmap.row(y)[x];
            const auto byte = [&](int shift, int ground) {
                return static_cast<int>(p >> shift & 255u) +
                       gui::multiplyBytes(ground, static_cast<int>(p >> 24));
            };
            pixels.push_back(
                gui::pixelOf(byte(16, kGround.red), byte(8, kGround.green), byte(0, kGround.blue), 255));
        }
    }
    return pixels;
}

Surface surfaceOf(std::vector<gui::Pixel>& pixels, int width, int height) {
    return {cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels.data()),
                                                CAIRO_FORMAT_RGB24, width, height, width * 4),
            cairo_surface_destroy};
}

}  // namespace

std::string atScale(const std::string& name, float scale) {
    return fmt::format("{}-{}", name, static_cast<int>(scale * 100.0f));
}

void expectPicture(const gui::Bitmap& bitmap, const std::string& name, int tolerance) {
    const int width = bitmap.pixelRect().width(), height = bitmap.pixelRect().height();
    std::vector<gui::Pixel> pixels = overGround(bitmap);
    const std::string path = fmt::format("{}/{}.png", VANTA_PICTURES, name);
    if (std::getenv("VANTA_REWRITE_PICTURES")) {
        ASSERT_EQ(cairo_surface_write_to_png(surfaceOf(pixels, width, height).get(), path.c_str()),
                  CAIRO_STATUS_SUCCESS);
        return;
    }
    const Surface stored(cairo_image_surface_create_from_png(path.c_str()), cairo_surface_destroy);
    ASSERT_EQ(cairo_surface_status(stored.get()), CAIRO_STATUS_SUCCESS) << path;
    ASSERT_EQ(cairo_image_surface_get_width(stored.get()), width) << name;
    ASSERT_EQ(cairo_image_surface_get_height(stored.get()), height) << name;
    int worst = 0;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        // Pictures of 24 bits have rows of whole words, without a gap.
        const gui::Pixel expected =
            reinterpret_cast<gui::Pixel*>(cairo_image_surface_get_data(stored.get()))[i];
        for (int shift = 0; shift < 24; shift += 8) {
            const auto byte = [&](gui::Pixel pixel) { return static_cast<int>(pixel >> shift & 255u); };
            worst = std::max(worst, std::abs(byte(expected) - byte(pixels[i])));
        }
    }
    if (worst <= tolerance) return;
    const std::string found = testing::TempDir() + name + ".png";
    cairo_surface_write_to_png(surfaceOf(pixels, width, height).get(), found.c_str());
    ADD_FAILURE() << name << " differs by " << worst << "; see " << found;
}

}  // namespace vanta::test
