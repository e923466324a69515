#include "gui/artwork/artwork_resources.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "gui/graphics/bitmap.hpp"

namespace vanta::gui {
namespace {

TEST(Artwork, EveryListedPictureLoadsAtTwiceItsLogicalSize) {
    addResources(artworkResources());
    std::ifstream table(VANTA_PICTURE_TABLE);
    std::size_t count = 0;
    for (std::string line; std::getline(table, line);) {
        if (line.empty() || line.front() == '#') continue;
        SCOPED_TRACE(line);
        ++count;
        std::string name, times;
        int width = 0, height = 0;  // logical units
        std::istringstream(line) >> name >> width >> times >> height;
        const auto bytes = findResource(name + "_2x");
        ASSERT_TRUE(bytes);
        // The gamma of 0.45455 stands right behind the header.
        EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(bytes->data()) + 37, 8),
                  std::string_view("gAMA\0\0\xB1\x8F", 8));
        DeviceBacking backing;
        backing.setScale(2.0f);
        Bitmap picture(backing);
        picture.load(name);
        EXPECT_EQ(picture.pixelRect(), (DeviceRect{0, 0, 2 * width, 2 * height}));
        // Only then do three pixels at scale 1.5 stand for four.
        EXPECT_EQ(width % 2 + height % 2, 0);
    }
    EXPECT_GT(count, 100U) << VANTA_PICTURE_TABLE;
    EXPECT_EQ(count, artworkResources().size());
}

/// The size in pixels of an end that is not repeated, which is `least` where an end bears a drawing.
int endOf(int length, int cross, int least) {
    return std::max(std::min(length / 3, cross), least);
}

void expectUniformMiddle(const std::string& name, bool alongX, bool alongY, int leastEnd = 0) {
    SCOPED_TRACE(name);
    DeviceBacking backing;
    backing.setScale(2.0f);
    Bitmap picture(backing);
    picture.load(name);
    const auto [width, height] = std::pair{picture.pixelRect().width(), picture.pixelRect().height()};
    const int left = alongX ? endOf(width, height, leastEnd) : width;
    const int top = alongY ? endOf(height, width, leastEnd) : height;
    int uneven = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Pixel pixel = picture.row(y)[x];
            if (x > left && x < width - left) uneven += pixel != picture.row(y)[x - 1];
            if (y > top && y < height - top) uneven += pixel != picture.row(y - 1)[x];
        }
    }
    EXPECT_EQ(uneven, 0) << "pixels differ from their neighbours";
}

TEST(Artwork, WhatIsRepeatedBetweenTheEndsOfAStretchedPictureIsUniform) {
    addResources(artworkResources());
    for (const char* wide :
         {"ButtonBarNormal", "ButtonBarDown", "ButtonDarkActive", "ButtonHideActive", "ButtonMeterNormal",
          "ButtonDialogDefaultNormal", "SwitchTrackNormal", "MenuItemActive", "MenuSeparator",
          "TextEditorFrame", "MidiLearnLabelBackground", "MidiLearnLabel"}) {
        expectUniformMiddle(wide, true, false);
    }
    for (const char* both : {"FocusRing", "MenuBackground", "HelpHintBackground", "PopupBackground",
                             "ParameterValueDisplayBackground", "DialogGeneric"}) {
        expectUniformMiddle(both, true, true);
    }
    for (const char* tall : {"LoudnessRange", "LoudnessRangeShadow", "GainSliderBackgroundNormal"}) {
        expectUniformMiddle(tall, false, true);
    }
    expectUniformMiddle("LogoBar", true, false, 200);
    expectUniformMiddle("BottomBar", true, false, 100);
    expectUniformMiddle("IncomingLine", false, true, 32);
}

}  // namespace
}  // namespace vanta::gui
