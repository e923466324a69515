#include <gtest/gtest.h>

#include <thread>

#include "gui/text/x11_text.hpp"
#include "tests/gui/counter.hpp"
#include "tests/gui/pictures.hpp"
#include "tests/gui/sheet.hpp"

namespace vanta::test {
namespace {

using namespace gui;

class Texts : public testing::TestWithParam<float> {
protected:
    Texts() {
        backing_.setScale(GetParam());
        text_.text = "Transparent fjord, -12.5 dB";
    }
    static void setStyle(Text& text, unsigned style) {
        text.bold = style & 1u;
        text.italic = style & 2u;
        text.underline = style & 4u;
    }
    DeviceBacking backing_;
    X11Text text_{backing_};
};

INSTANTIATE_TEST_SUITE_P(Scales, Texts, testing::Values(1.0f, 1.5f, 2.0f));

TEST_P(Texts, AreMeasuredAsTheyAreRendered) {
    for (const unsigned style : {0u, 1u, 2u, 4u, 7u}) {
        setStyle(text_, style);
        for (const float size : {6.0f, 8.0f, 13.5f, 40.0f}) {
            text_.fontSize = size;
            const float width = text_.width(), height = text_.height();
            const Bitmap& bitmap = text_.bitmap();
            EXPECT_EQ(bitmap.logicalRect(), (Rect{0, 0, width, height}));
            EXPECT_TRUE(bitmap.hasAlpha);
            const DeviceRect ink = inkOf(bitmap);
            // Next to nothing beside the ink, but for what the last letter keeps from the next one.
            EXPECT_GE(ink.width(), bitmap.pixelRect().width() - toDevice(size * 0.3f, GetParam()) - 2);
            const float em = size * 96 / 72 * GetParam();
            EXPECT_NEAR(static_cast<float>(ink.height()), em, 0.35f * em + 1);
        }
    }
}

TEST_P(Texts, HaveAFaceAndDigitsOfOneWidth) {
    text_.fontName = "no such face";
    EXPECT_GT(text_.width(), 0.0f);
    text_.fontName = "Inter Medium";
    text_.text = "-11.1 dB";
    const float narrow = text_.width();
    text_.text = "-48.0 dB";
    EXPECT_EQ(text_.width(), narrow) << "a value must not dance while it changes";
}

TEST_P(Texts, FitTheirWidthEachInItsWay) {
    const float whole = text_.width(), line = text_.height();
    text_.lineStyle = Text::LineStyle::WordWrap;
    EXPECT_EQ(text_.width(), whole) << "no limit, no line style";
    for (const float limit : {20.0f, 61.0f, 100.0f}) {
        text_.maxWidth = limit;
        text_.lineStyle = Text::LineStyle::SingleLine;
        EXPECT_EQ(text_.height(), line);
        EXPECT_NEAR(text_.width(), limit, 1.0f);
        text_.lineStyle = Text::LineStyle::Ellipsis;
        EXPECT_EQ(text_.height(), line);
        EXPECT_NEAR(text_.width(), limit - 6, 8);
        text_.lineStyle = Text::LineStyle::WordWrap;
        EXPECT_GT(text_.height(), 1.5f * line);
        EXPECT_LE(text_.width(), limit + 1);
    }
    text_.maxWidth = whole + 2;
    EXPECT_EQ(text_.height(), line);
    text_.lineStyle = Text::LineStyle::Ellipsis;
    EXPECT_EQ(text_.width(), whole) << "an ellipsis only where it is needed";
    text_.text = "one\ntwo";
    EXPECT_NEAR(text_.height(), 2 * line, 1.0f);
}

TEST_P(Texts, LookAsTheyWereApproved) {
    using Line = Text::LineStyle;
    static constexpr Color kLight{232, 234, 238, 255};
    const struct {
        const char* words;
        unsigned style = 0;  // bold, italic, underline
        float size = 0;      // 0 for the usual one
        Color color = kLight;
        Line line = Line::SingleLine;
    } samples[] = {{"Vanta 2 True Peak Limiting"},
                   {"-0.35 dBTP  Ag 48 kHz", 1},
                   {"Small italic notes", 2, 7.0f},
                   {"Underlined, warm", 4, 0, {255, 180, 60, 255}},
                   {"-14.2", 0, 18.0f},
                   {"An ellipsis cuts what is too long for its place", 0, 0, kLight, Line::Ellipsis},
                   {"Words that do not fit wrap to the next line", 0, 0, kLight, Line::WordWrap}};
    Bitmap sheet(backing_);
    sheet.setLogicalSize(200, 140);
    sheet.fill();
    float y = 3;
    for (const auto& sample : samples) {
        X11Text text(backing_);
        text.text = sample.words;
        setStyle(text, sample.style);
        if (sample.size > 0) text.fontSize = sample.size;
        if (sample.line != Line::SingleLine) text.maxWidth = 120.0f;
        text.color = sample.color;
        text.lineStyle = sample.line;
        sheet.canvas().drawText(text, {4, y});
        y += text.height() + 1;
    }
    // Releases of the font and of its renderer differ a little.
    expectPicture(sheet, atScale("text", GetParam()), 48);
}

TEST(Text, IsRenderedAnewWhenItOrTheScaleChanges) {
    Counter listener;
    DeviceBacking backing;
    X11Text text(backing), other(backing);
    text.onChange.addHandler(&listener, &Counter::hear);
    text.text = "Loudness";
    const float width = text.width();
    const int pixels = text.bitmap().pixelRect().width();
    EXPECT_EQ(listener.count, 1);
    backing.setScale(2.0f);
    EXPECT_EQ(listener.count, 2);
    EXPECT_NEAR(text.width(), width, 3.0f);
    EXPECT_NEAR(text.bitmap().pixelRect().width(), 2 * pixels, 6);
    other.bold = true;
    other.text = "Other";
    other.color = Color{255, 0, 0, 255};
    text.copyStyleFrom(other);
    EXPECT_EQ(listener.count, 3);
    EXPECT_EQ(text.width(), other.width());
    EXPECT_EQ(text.color.value(), other.color.value());
    text.text = std::string();
    EXPECT_EQ(text.width(), 0.0f);
    EXPECT_TRUE(text.bitmap().isEmpty());
    EXPECT_GT(text.height(), 0.0f);
}

TEST(Text, TakesAnyBytesAndAnySize) {
    DeviceBacking backing;
    X11Text text(backing);
    for (const char* bytes : {"\xFF\xFE broken \xC3", "<b>&amp; no markup</b>",
                              "\xD8\xA7\xD9\x84 \xE4\xB8\xAD \xF0\x9F\x8E\x9A"}) {
        text.text = bytes;
        EXPECT_GT(text.width(), 0.0f);
        EXPECT_FALSE(inkOf(text.bitmap()).isEmpty());
    }
    text.fontSize = -3.0f;
    EXPECT_GT(text.bitmap().pixelRect().width(), 0);
    text.fontSize = 300.0f;
    text.text = std::string(5000, 'W');
    EXPECT_LE(text.bitmap().pixelRect().width(), 32767);
}

TEST(Text, OfSeveralThreadsDoesNotMeet) {
    const auto render = [] {
        DeviceBacking backing;
        X11Text text(backing);
        for (int i = 0; i < 20; ++i) {
            text.text = std::to_string(i);
            EXPECT_FALSE(text.bitmap().isEmpty());
        }
    };
    std::thread first(render), second(render);
    first.join();
    second.join();
}

}  // namespace
}  // namespace vanta::test
