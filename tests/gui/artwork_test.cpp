#include "gui/artwork/artwork_resources.hpp"

#include <cairo.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>

namespace vanta::gui {
namespace {

struct Line {
    std::string name;
    int width = 0;  // logical units
    int height = 0;
};

std::vector<Line> listedPictures() {
    std::ifstream table(VANTA_PICTURE_TABLE);
    std::vector<Line> lines;
    for (std::string text; std::getline(table, text);) {
        if (text.empty() || text.front() == '#') continue;
        Line line;
        std::string times;
        std::istringstream(text) >> line.name >> line.width >> times >> line.height;
        lines.push_back(line);
    }
    return lines;
}

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

Surface decode(std::span<const std::byte> bytes) {
    const auto read = [](void* closure, unsigned char* target, unsigned int count) {
        auto& rest = *static_cast<std::span<const std::byte>*>(closure);
        if (rest.size() < count) return CAIRO_STATUS_READ_ERROR;
        std::memcpy(target, rest.data(), count);
        rest = rest.subspan(count);
        return CAIRO_STATUS_SUCCESS;
    };
    return {cairo_image_surface_create_from_png_stream(read, &bytes), &cairo_surface_destroy};
}

/// The chunks of a PNG file in order, with the bytes of gAMA.
std::string chunks(std::span<const std::byte> bytes) {
    const auto integer = [&](std::size_t at) {
        std::size_t value = 0;
        for (std::size_t i = 0; i < 4; ++i) value = value << 8 | std::to_integer<std::size_t>(bytes[at + i]);
        return value;
    };
    std::string found;
    for (std::size_t at = 8; at + 12 <= bytes.size(); at += integer(at) + 12) {
        const std::string type(reinterpret_cast<const char*>(bytes.data()) + at + 4, 4);
        found += found.ends_with(type + " ") ? "" : type + " ";
        if (type == "gAMA") found += std::to_string(integer(at + 8)) + " ";
    }
    return found;
}

TEST(Artwork, EveryListedPictureLoadsAtTwiceItsLogicalSize) {
    addResources(artworkResources());
    const std::vector<Line> listed = listedPictures();
    ASSERT_GT(listed.size(), 100U) << VANTA_PICTURE_TABLE;
    EXPECT_EQ(listed.size(), artworkResources().size());
    for (const Line& line : listed) {
        SCOPED_TRACE(line.name);
        const auto bytes = findResource(line.name + "_2x");
        ASSERT_TRUE(bytes);
        EXPECT_EQ(chunks(*bytes), "IHDR gAMA 45455 IDAT IEND ");
        const Surface picture = decode(*bytes);
        ASSERT_EQ(cairo_surface_status(picture.get()), CAIRO_STATUS_SUCCESS);
        const int width = cairo_image_surface_get_width(picture.get());
        const int height = cairo_image_surface_get_height(picture.get());
        EXPECT_EQ(width, 2 * line.width);
        EXPECT_EQ(height, 2 * line.height);
        // Only then do three pixels at scale 1.5 stand for four.
        EXPECT_EQ(width % 4, 0) << width;
        EXPECT_EQ(height % 4, 0) << height;
    }
}

struct Stretched {
    const char* name;
    bool alongX = true;
    bool alongY = false;
    int leastEnd = 0;  // logical units
};

/// The size in pixels of an end that is not repeated.
int endOf(int length, int cross, int leastEnd) {
    return std::max({std::min(length / 3, cross), 2 * leastEnd, 0});
}

TEST(Artwork, WhatIsRepeatedBetweenTheEndsOfAStretchedPictureIsUniform) {
    addResources(artworkResources());
    for (const Stretched& c : {Stretched{"LogoBar", true, false, 100},
                               Stretched{"BottomBar", true, false, 50},
                               Stretched{"ButtonBarNormal"},
                               Stretched{"ButtonBarDown"},
                               Stretched{"ButtonDarkActive"},
                               Stretched{"ButtonHideActive"},
                               Stretched{"ButtonMeterNormal"},
                               Stretched{"ButtonDialogDefaultNormal"},
                               Stretched{"SwitchTrackNormal"},
                               Stretched{"MenuItemActive"},
                               Stretched{"MenuSeparator"},
                               Stretched{"TextEditorFrame"},
                               Stretched{"MidiLearnLabelBackground"},
                               Stretched{"MidiLearnLabel"},
                               Stretched{"FocusRing", true, true},
                               Stretched{"MenuBackground", true, true},
                               Stretched{"HelpHintBackground", true, true},
                               Stretched{"PopupBackground", true, true},
                               Stretched{"ParameterValueDisplayBackground", true, true},
                               Stretched{"DialogGeneric", true, true},
                               Stretched{"LoudnessRange", false, true},
                               Stretched{"LoudnessRangeShadow", false, true},
                               Stretched{"GainSliderBackgroundNormal", false, true},
                               Stretched{"IncomingLine", false, true, 16}}) {
        SCOPED_TRACE(c.name);
        const auto bytes = findResource(std::string(c.name) + "_2x");
        ASSERT_TRUE(bytes);
        const Surface picture = decode(*bytes);
        const int width = cairo_image_surface_get_width(picture.get());
        const int height = cairo_image_surface_get_height(picture.get());
        const int stride = cairo_image_surface_get_stride(picture.get());
        const unsigned char* data = cairo_image_surface_get_data(picture.get());
        const int left = c.alongX ? endOf(width, height, c.leastEnd) : width;
        const int top = c.alongY ? endOf(height, width, c.leastEnd) : height;
        int uneven = 0;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const unsigned char* pixel = data + y * stride + 4 * x;
                if (x > left && x < width - left) uneven += std::memcmp(pixel, pixel - 4, 4) != 0;
                if (y > top && y < height - top) uneven += std::memcmp(pixel, pixel - stride, 4) != 0;
            }
        }
        EXPECT_EQ(uneven, 0) << "pixels differ from their neighbours";
    }
}

}  // namespace
}  // namespace vanta::gui
