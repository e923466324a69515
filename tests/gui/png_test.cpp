// PNG files against libpng, which writes them.

#include <gtest/gtest.h>
#include <png.h>

#include <array>
#include <cstring>
#include <random>
#include <sstream>

#include "foundation/resource.hpp"
#include "gui/graphics/bitmap.hpp"
#include "gui/graphics/bitmap_error.hpp"
#include "gui/graphics/bitmap_filer.hpp"

namespace vanta::test {
namespace {

using namespace gui;

struct PNG {
    int width = 13;
    int height = 9;
    int colorType = PNG_COLOR_TYPE_RGB_ALPHA;
    int depth = 8;
    int filters = PNG_ALL_FILTERS;
    int interlace = PNG_INTERLACE_NONE;
    std::size_t chunkSize = 8192;
    double gamma = 0.45455;  ///< 0 for none
    bool isOpaque = false;

    std::size_t bytesPerPixel() const { return colorType == PNG_COLOR_TYPE_RGB_ALPHA ? 4 : 3; }
    /// Smooth with some noise, so that every filter has its day.
    std::vector<png_byte> bytes() const {
        std::mt19937 random(5);
        std::vector<png_byte> result;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                for (std::size_t c = 0; c < bytesPerPixel(); ++c) {
                    const int value = 9 * x + 5 * y + static_cast<int>(40 * c + random() % 8);
                    result.push_back(c == 3 && isOpaque ? png_byte{255} : static_cast<png_byte>(value));
                }
            }
        }
        return result;
    }
    std::string file() const {
        std::string out;
        png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        png_set_write_fn(
            png, &out,
            [](png_structp p, png_bytep data, std::size_t count) {
                static_cast<std::string*>(png_get_io_ptr(p))->append(reinterpret_cast<char*>(data), count);
            },
            nullptr);
        png_set_compression_buffer_size(png, chunkSize);
        png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), depth,
                     colorType, interlace, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        if (gamma > 0) png_set_gAMA(png, info, gamma);
        if (colorType == PNG_COLOR_TYPE_PALETTE) {
            const png_color black{};
            png_set_PLTE(png, info, &black, 1);
        }
        png_set_filter(png, 0, filters);
        png_write_info(png, info);
        std::vector<png_byte> pixels = bytes();
        pixels.resize(pixels.size() * 8);  // more than any depth takes
        std::vector<png_bytep> rows;
        for (int y = 0; y < height; ++y) {
            rows.push_back(pixels.data() + static_cast<std::size_t>(y * width) * bytesPerPixel());
        }
        if (colorType == PNG_COLOR_TYPE_PALETTE) std::fill(pixels.begin(), pixels.end(), png_byte{0});
        png_write_image(png, rows.data());
        png_write_end(png, info);
        png_destroy_write_struct(&png, &info);
        return out;
    }
};

class PNGFiles : public testing::Test {
protected:
    void read(const std::string& file) {
        std::istringstream stream(file);
        readBitmap(bitmap_, stream);
    }
    std::string errorOf(const std::string& file) try {
        read(file);
        return "none";
    } catch (const EBitmap& error) {
        return error.what();
    }
    void expectRead(const PNG& png) {
        read(png.file());
        ASSERT_EQ(bitmap_.pixelRect(), (DeviceRect{0, 0, png.width, png.height}));
        EXPECT_EQ(bitmap_.hasAlpha, png.bytesPerPixel() == 4 && !png.isOpaque);
        const std::vector<png_byte> bytes = png.bytes();
        const png_byte* at = bytes.data();
        for (int y = 0; y < png.height; ++y) {
            for (int x = 0; x < png.width; ++x, at += png.bytesPerPixel()) {
                const Color color{at[0], at[1], at[2], png.bytesPerPixel() == 4 ? at[3] : png_byte{255}};
                ASSERT_EQ(bitmap_.row(y)[x], toPixel(color)) << x << ", " << y;
            }
        }
    }

    DeviceBacking backing_;
    Bitmap bitmap_{backing_};
};

TEST_F(PNGFiles, AreReadWithEachFilterAndWhereverTheirDataIsCut) {
    for (const int type : {PNG_COLOR_TYPE_RGB, PNG_COLOR_TYPE_RGB_ALPHA}) {
        for (const int filter : {PNG_FILTER_NONE, PNG_FILTER_SUB, PNG_FILTER_UP, PNG_FILTER_AVG,
                                 PNG_FILTER_PAETH, PNG_ALL_FILTERS}) {
            for (const std::size_t chunk : {6u, 7u, 64u, 8192u}) {
                SCOPED_TRACE(testing::Message() << type << " " << filter << " " << chunk);
                expectRead({.colorType = type, .filters = filter, .chunkSize = chunk});
            }
        }
    }
    expectRead({.width = 700, .height = 300, .isOpaque = true});
}

TEST_F(PNGFiles, AreBroughtToTheDisplaysGamma) {
    const PNG linear{.colorType = PNG_COLOR_TYPE_RGB, .gamma = 1.0};
    read(linear.file());
    const double first = linear.bytes()[30 * 3];
    EXPECT_NEAR(toColor(bitmap_.row(2)[4]).red, 255 * std::pow(first / 255, 0.4545), 1.0);
    const PNG unstated{.colorType = PNG_COLOR_TYPE_RGB, .gamma = 0};
    read(unstated.file());
    EXPECT_EQ(toColor(bitmap_.row(2)[4]).red, std::trunc(255 * std::pow(first / 255, 1.0101)));
}

TEST_F(PNGFiles, OfOtherKindsAreRefusedByName) {
    for (const PNG& png : {PNG{.colorType = PNG_COLOR_TYPE_PALETTE}, PNG{.depth = 16},
                           PNG{.interlace = PNG_INTERLACE_ADAM7}}) {
        EXPECT_EQ(errorOf(png.file()), "Unsupported PNG format");
    }
    for (const char* other : {"GIF89a", ""}) EXPECT_EQ(errorOf(other), "Unknown file format");
}

TEST_F(PNGFiles, ThatAreDamagedAreRefused) {
    const std::string sound = PNG{}.file();
    const auto with = [&](std::size_t at, const std::string& bytes) {
        std::string damaged = sound;
        return damaged.replace(at, bytes.size(), bytes);
    };
    EXPECT_EQ(errorOf(with(12, "JHDR")), "Invalid PNG image");
    EXPECT_EQ(errorOf(with(16, std::string(4, '\0'))), "Unsupported PNG format");
    EXPECT_EQ(errorOf(with(16, "\x7F\xFF\xFF\xFF")), "Unsupported PNG format");
    // More pixels than so small a file can hold: refused before any memory is taken for them.
    EXPECT_EQ(errorOf(with(16, std::string("\0\0\x7F\xFF\0\0\x7F\xFF", 8))), "Invalid PNG image");
    const std::size_t data = sound.find("IDAT");
    EXPECT_EQ(errorOf(with(data, "IDOT")), "Invalid PNG image");
    EXPECT_EQ(errorOf(with(data + 4, "\xFF\xFF")), "Invalid PNG image");
    EXPECT_EQ(errorOf(with(data - 4, "\xFF\xFF\xFF\xFF")), "Invalid PNG image");
    for (std::size_t size = 8; size < sound.size() - 16; ++size) {
        EXPECT_EQ(errorOf(sound.substr(0, size)), "Invalid PNG image") << size;
    }
    EXPECT_EQ(errorOf(with(29, "....")), "none");  // a checksum
}

TEST(NamedImages, ComeInTheDensityOfTheDevice) {
    const auto square = [](int size) {
        return PNG{.width = size, .height = size, .colorType = PNG_COLOR_TYPE_RGB};
    };
    static const std::array files{square(8).file(), square(16).file(), square(20).file(), square(6).file()};
    static const auto bytes = [](std::size_t index) { return std::as_bytes(std::span(files[index])); };
    static const std::array table{Resource{"TESTIMAGE", bytes(0)}, Resource{"TESTIMAGE_2X", bytes(1)},
                                  Resource{"TESTFINE_2X", bytes(2)}, Resource{"TESTCOARSE", bytes(3)}};
    addResources(table);

    DeviceBacking backing;
    Bitmap both(backing), fine(backing), coarse(backing);
    both.load("TestImage.png");
    fine.load("TestFine.png");
    coarse.load("TestCoarse.png");
    for (const float scale : {1.0f, 1.5f, 2.0f}) {
        backing.setScale(scale);
        for (const auto& [image, size] : {std::pair{&both, 8.0f}, {&fine, 10.0f}, {&coarse, 6.0f}}) {
            EXPECT_EQ(static_cast<float>(image->pixelRect().width()), size * scale);
            EXPECT_EQ(image->logicalRect(), (Rect{0, 0, size, size}));
        }
    }
    const auto pixels = square(16).bytes();
    EXPECT_EQ(both.row(0)[1], toPixel({pixels[3], pixels[4], pixels[5], 255})) << "the finer of the two";
    EXPECT_EQ(coarse.row(0)[0], coarse.row(1)[1]);

    EXPECT_EQ(both.imageName(), "TestImage.png");
    both.canvas().fillRect(both.logicalRect(), {255, 0, 0, 255});
    EXPECT_EQ(both.imageName(), "TestImage.png");
    both.fill();
    EXPECT_TRUE(both.imageName().empty());
    EXPECT_THROW(both.load("TestMissing.png"), EBitmap);
}

}  // namespace
}  // namespace vanta::test
