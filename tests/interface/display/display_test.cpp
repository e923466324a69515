#include <gmock/gmock.h>

#include <malloc.h>

#include <algorithm>
#include <random>

#include <fmt/format.h>

#include "gui/graphics/curve_shapes.hpp"
#include "tests/gui/pictures.hpp"
#include "tests/gui/sheet.hpp"
#include "tests/interface/display/display_rig.hpp"

namespace vanta::interface {
namespace {

using gui::Rect;
using Sample = DisplayRig::Sample;

/// A peak of one sample each second.
Sample ticks(std::int64_t i) {
    return i % 48000 == 24000 ? Sample{0.5f, 0.5f, 0.5f} : Sample{};
}

/// Beats that are turned down, some more than others.
Sample beats(std::int64_t i) {
    const double t = static_cast<double>(i) / 48000.0;
    const double beat = std::fmod(t, 0.5);
    const double level = std::exp(-beat * 6.0) * 1.6 + 0.12 + 0.1 * std::sin(t * 1.3);
    const double gain =
        std::min(1.0, 0.9 / (std::exp(-beat * 9.0) * 1.6 * (0.6 + 0.4 * std::sin(t * 0.9)) + 0.02));
    const double x = level * std::sin(t * 2764.6);
    return {static_cast<float>(x), static_cast<float>(x * gain * 0.9), static_cast<float>(gain)};
}

struct Pace {
    const char* name;
    std::vector<int> frames;    ///< ms
    std::vector<int> heldBack;  ///< blocks of audio that come late
};

std::vector<Pace> paces() {
    std::mt19937 random(7);
    std::vector<int> frames, late;
    for (int i = 0; i < 997; ++i) {
        frames.push_back(8 + static_cast<int>(random() % 18));
        late.push_back(static_cast<int>(random() % 5));
    }
    return {{"60 frames a second", {17, 17, 16}, {0}},
            {"60, audio in batches of 43 ms", {17, 17, 16}, {7, 6, 4, 1, 0, 3, 5}},
            {"30", {33, 33, 34}, {0}},
            {"20", {50}, {0, 2, 1}},
            {"15", {67, 67, 66}, {0}},
            {"uneven frames and audio", frames, late}};
}

/// What comes out of a curve, column by column.
class ColumnWatch {
public:
    ColumnWatch(DisplayRig& rig, int curve) : rig_(rig), curve_(rig.display->curveAt(curve)) {}

    /// After each frame: the columns that it has brought, with their time.
    void look() {
        const auto table = curve_.table();
        const auto n = static_cast<std::size_t>(rig_.display->clock().columns());
        for (float position : table.last(std::min(n, table.size()))) {
            const bool isPeak = position > rig_.display->levelToPosition(-4.0f) && position < 400.0f;
            if (isPeak && !wasPeak_) {
                peaks.push_back(columns);
                times.push_back(DisplayRig::now);
            }
            wasPeak_ = isPeak;
            ++columns;
        }
    }

    int columns = 0;
    std::vector<int> peaks;           ///< the column of each
    std::vector<std::int64_t> times;  ///< ms

private:
    DisplayRig& rig_;
    DisplayCurve& curve_;
    bool wasPeak_ = false;
};

TEST(LevelTimeDisplay, FollowsTheAudioAtTheSpeedAndLosesNoPeak) {
    for (const Pace& pace : paces()) {
        SCOPED_TRACE(pace.name);
        DisplayRig rig;
        rig.signal = ticks;
        rig.setMode(DisplayMode::Fast);
        rig.display->speed = 120.0f;
        rig.run(5000, pace.frames, pace.heldBack);
        ColumnWatch watch(rig, LimiterDisplay::Reduction);
        int columnsOfBatch = 0;
        std::size_t i = 0;
        const std::int64_t begin = DisplayRig::now;
        while (DisplayRig::now < begin + 60000) {
            rig.frame(pace.frames[i % pace.frames.size()], pace.heldBack[i % pace.heldBack.size()]);
            watch.look();
            ++i;
            const DisplayCurve& curve = rig.display->curveAt(LimiterDisplay::Reduction);
            columnsOfBatch = std::max(columnsOfBatch, curve.jitter());
            ASSERT_LE(curve.queued(), 3 * static_cast<int>(rig.display->clock().step()) + curve.jitter() + 8);
        }
        ASSERT_EQ(watch.peaks.size(), 60u);
        EXPECT_NEAR(watch.columns, 7200, 72 * (pace.frames.size() > 3 ? 3 : 1));
        for (std::size_t k = 1; k < watch.peaks.size(); ++k) {
            EXPECT_NEAR(watch.peaks[k] - watch.peaks[k - 1], 120, 12) << k;
        }
        // From the sound to the column: what may wait in the queue, a frame, and what is held back.
        const double step = rig.display->clock().step();
        const double most = (2 * step + columnsOfBatch + 2 * step) * 1000.0 / 120.0 + 2 * 5.4 + 43.0;
        for (const std::int64_t time : watch.times) {
            const auto sinceTick = static_cast<double>((time - 500) % 1000);
            EXPECT_LT(sinceTick, most);
        }
    }
}

/// Whether a label's curve, red, reaches that far down somewhere between two positions from the left.
bool showsReduction(const gui::Bitmap& picture, float scale, float level, const LimiterDisplay& display,
                    int from, int to) {
    const int y = gui::toDevice(display.levelToPosition(level), scale);
    for (int x = std::max(from, 0); x < std::min(to, picture.pixelRect().right); ++x) {
        const gui::Color color = gui::toColor(picture.row(y)[x]);
        if (color.red > color.blue + 25) return true;
    }
    return false;
}

/// The peaks of the table that reach a level.
int peaksIn(const DisplayRig& rig, float level) {
    int count = 0;
    const auto table = rig.display->curveAt(LimiterDisplay::Reduction).table();
    const float least = rig.display->levelToPosition(level);
    for (std::size_t i = 1; i < table.size(); ++i) {
        if (table[i] >= least && table[i - 1] < least) ++count;
    }
    return count;
}

TEST(LevelTimeDisplay, ShowsAPeakOfOneSampleInEveryMode) {
    for (const float scale : {1.0f, 1.5f, 2.0f}) {
        for (const auto mode :
             {DisplayMode::SlowDown, DisplayMode::Fast, DisplayMode::Slow, DisplayMode::Infinite}) {
            SCOPED_TRACE(fmt::format("mode {}, scale {}", static_cast<int>(mode), scale));
            DisplayRig rig(400, 300, scale);
            rig.signal = ticks;
            rig.setMode(mode);
            rig.run(2900);
            const auto picture = rig.ui.picture();
            // The newest is 2.4 seconds old in sound and 0.4 in time; a pixel is the mean of two columns.
            EXPECT_TRUE(showsReduction(*picture, scale, -2.0f, *rig.display, 0, picture->pixelRect().right));
        }
    }
}

TEST(LevelTimeDisplay, KeepsAPeakThroughTenCompressions) {
    DisplayRig rig(100, 300, 1.0f, 8000.0);
    // Three peaks at the start, one of them weak, and nothing more.
    rig.signal = [](std::int64_t i) {
        const bool isPeak = i == 1600 || i == 3200;
        return Sample{0.0f, 0.0f, isPeak ? 0.5f : i == 5600 ? 0.8f : 1.0f};
    };
    rig.setMode(DisplayMode::Infinite);
    float speed = rig.display->infiniteSpeed();
    for (int halvings = 0; halvings < 10;) {
        rig.run(50);
        if (rig.display->infiniteSpeed() == speed) continue;
        ++halvings;
        speed *= 0.5f;
        ASSERT_EQ(rig.display->infiniteSpeed(), speed);
        ASSERT_GE(peaksIn(rig, -6.0f), 1) << halvings;
        ASSERT_TRUE(showsReduction(*rig.ui.picture(), 1.0f, -2.0f, *rig.display, 0, 60)) << halvings;
        ASSERT_LE(rig.display->curveAt(LimiterDisplay::Reduction).table().size(), 250u);
    }
}

int worstDifference(const gui::Bitmap& a, const gui::Bitmap& b) {
    int worst = 0;
    for (int y = 0; y < a.pixelRect().bottom; ++y) {
        for (int x = 0; x < a.pixelRect().right; ++x) {
            const gui::Color first = gui::toColor(a.row(y)[x]);
            const gui::Color second = gui::toColor(b.row(y)[x]);
            worst = std::max({worst, std::abs(first.red - second.red), std::abs(first.green - second.green),
                              std::abs(first.blue - second.blue)});
        }
    }
    return worst;
}

double meanDifference(const gui::Bitmap& a, const gui::Bitmap& b) {
    double sum = 0.0;
    for (int y = 0; y < a.pixelRect().bottom; ++y) {
        for (int x = 0; x < a.pixelRect().right; ++x) {
            sum += std::abs(gui::toColor(a.row(y)[x]).green - gui::toColor(b.row(y)[x]).green);
        }
    }
    return sum / a.pixelRect().right / a.pixelRect().bottom;
}

TEST(LevelTimeDisplay, KeepsTheSamePictureInInfiniteAsItWouldPaint) {
    for (const float scale : {1.0f, 1.5f, 2.0f}) {
        DisplayRig rig(300, 300, scale);
        rig.signal = beats;
        rig.loudness = -12.0f;
        rig.setMode(DisplayMode::Infinite);
        int halvings = 0;
        for (int i = 0; i < 60; ++i) {
            rig.run(100);
            const auto kept = rig.ui.picture();
            rig.ui.accelerated = true;
            const auto painted = rig.ui.picture();
            rig.ui.accelerated = false;
            // While it halves, what was kept is resampled.
            if (rig.display->isHalving()) {
                ++halvings;
                ASSERT_LE(meanDifference(*kept, *painted), 2.0) << i << ", scale " << scale;
            } else {
                ASSERT_LE(worstDifference(*kept, *painted), 3) << i << ", scale " << scale;
            }
        }
        EXPECT_GE(halvings, 8) << "frames in two halvings, scale " << scale;
    }
}

/// Straight from the table of all columns, as if they had been painted at once.
TEST(LevelTimeDisplay, PaintsStripsWithoutASeam) {
    for (const float scale : {1.0f, 1.5f, 2.0f}) {
        for (const float speed : {180.0f, 120.0f, 60.0f}) {
            DisplayRig rig(300, 300, scale);
            rig.signal = beats;
            rig.display->labelCurve = -1;
            rig.display->grid().showLines = false;
            rig.display->grid().showLabels = false;
            for (const int hidden : {1, 2, 3}) {
                DisplayCurve& curve = rig.display->curveAt(hidden);
                for (auto* color : {&curve.lineColor, &curve.aboveColor, &curve.belowColor})
                    *color = gui::Color{};
            }
            rig.display->speed = speed;
            std::vector<float> all;
            for (int i = 0; i < 400; ++i) {
                rig.frame(i % 3 == 0 ? 16 : 17);
                const auto table = rig.display->curveAt(0).table();
                const auto n = static_cast<std::size_t>(rig.display->clock().columns());
                all.insert(all.end(), table.end() - static_cast<std::ptrdiff_t>(n), table.end());
            }
            const auto picture = rig.ui.picture();
            test::Sheet whole(300, 300, scale, gui::toColor(picture->row(0)[0]));
            const gui::Graph graph(std::span<const float>(all), static_cast<int>(all.size()) - 300 - 2);
            DisplayCurve& curve = rig.display->curveAt(0);
            gui::CurveSet set;
            set.entries[0].curve = &graph;
            set.entries[0].line = curve.lineColor;
            set.entries[0].below = curve.belowColor;
            set.entries[0].lineWidth = curve.lineWidth;
            set.bottom = curve.bottomColor;
            whole.canvas().drawCurves(set, {0, 0, 300, 300}, {0, 0}, gui::Canvas::CurveOrientation::OverX);
            EXPECT_LE(worstDifference(*picture, whole.bitmap), 2) << "scale " << scale << ", speed " << speed;
        }
    }
}

/// Slow Down, Fast at uneven frames, Slow, Infinite at 15 frames a second, Off half-way.
TEST(LevelTimeDisplay, LooksAsReviewed) {
    const struct {
        DisplayMode mode;
        std::size_t pace;
    } states[] = {{DisplayMode::SlowDown, 0},
                  {DisplayMode::Fast, 5},
                  {DisplayMode::Slow, 0},
                  {DisplayMode::Infinite, 4},
                  {DisplayMode::Off, 0}};
    constexpr float kWidth = 180.0f;
    constexpr float kHeight = 350.0f;
    for (const float scale : {1.0f, 1.5f, 2.0f}) {
        test::Sheet sheet(5 * kWidth, kHeight, scale);
        float left = 0.0f;
        for (const auto& state : states) {
            DisplayRig rig(kWidth, kHeight, scale);
            rig.ui.loadBackdrop("Background");
            rig.signal = beats;
            rig.loudness = -14.0f;
            const Pace pace = paces()[state.pace];
            if (state.mode != DisplayMode::Off) rig.setMode(state.mode);
            rig.run(3500, pace.frames, pace.heldBack);
            if (state.mode == DisplayMode::Off) {
                rig.display->showPicture(false);
                rig.run(150);
            }
            const auto picture = rig.ui.picture();
            sheet.canvas().drawBitmap(*picture, {left, 0.0f});
            left += kWidth;
        }
        test::expectPicture(sheet.bitmap, test::atScale("display", scale), 1);
    }
}

TEST(LevelTimeDisplay, RepaintsNothingWhileFlatAndReadsNothingWhileHidden) {
    DisplayRig rig;
    rig.setMode(DisplayMode::SlowDown);
    rig.signal = ticks;
    EXPECT_GT(rig.run(3000), 140);
    rig.signal = [](std::int64_t) { return Sample{}; };
    rig.run(30000);
    EXPECT_EQ(rig.run(5000), 0) << "silence";
    rig.signal = [](std::int64_t) { return Sample{0.25f, 0.25f, 0.7f}; };
    EXPECT_GT(rig.run(3000), 150) << "something happens";
    rig.run(30000);
    EXPECT_EQ(rig.run(5000), 0) << "a steady tone";

    rig.signal = ticks;
    EXPECT_GT(rig.run(3000), 150);
    rig.display->showPicture(false);
    rig.run(280);
    EXPECT_GT(rig.display->displayAlpha, 0);
    rig.run(40);
    EXPECT_EQ(rig.display->displayAlpha, 0);
    rig.run(10000);
    EXPECT_EQ(rig.run(5000), 0) << "switched off";
    EXPECT_EQ(rig.levels.audio(0).frameCount(), 0) << "what came meanwhile is dropped";
    rig.display->showPicture(true);
    EXPECT_GT(rig.run(900), 40);
    EXPECT_LT(rig.display->displayAlpha, 255);
    rig.run(120);
    EXPECT_EQ(rig.display->displayAlpha, 255);
}

TEST(LevelTimeDisplay, StartsAnewWithAnotherSizeAndSleepsWithoutColours) {
    DisplayRig rig;
    rig.signal = beats;
    rig.run(4000);
    ASSERT_NE(rig.display->labels().published(0), nullptr);
    rig.display->setWidth(700.0f);
    rig.frame(17);
    EXPECT_EQ(rig.display->labels().published(0), nullptr);
    EXPECT_FALSE(rig.display->curveAt(0).isPrimed());
    rig.run(2000);
    for (int index = 0; index < 4; ++index) {
        DisplayCurve& curve = rig.display->curveAt(index);
        for (auto* color : {&curve.lineColor, &curve.aboveColor, &curve.belowColor}) *color = gui::Color{};
    }
    rig.run(5000);
    EXPECT_EQ(rig.run(2000), 0);
    rig.display->curveAt(0).lineColor = gui::Color{255, 255, 255, 255};
    EXPECT_GT(rig.run(2000), 100);
}

TEST(LevelTimeDisplay, LabelsHaveRoomAndTellThePeak) {
    std::mt19937 random(3);
    for (const auto mode :
         {DisplayMode::SlowDown, DisplayMode::Fast, DisplayMode::Slow, DisplayMode::Infinite}) {
        for (const Pace& pace : paces()) {
            SCOPED_TRACE(fmt::format("mode {}, {}", static_cast<int>(mode), pace.name));
            DisplayRig rig(600, 300, 1.0f, 8000.0);
            std::vector<float> gains(4000);
            for (float& gain : gains)
                gain = 1.0f - 0.6f * std::pow(static_cast<float>(random() % 1000) / 1000.0f, 4.0f);
            rig.signal = [&gains](std::int64_t i) {
                return Sample{0.5f, 0.5f, gains[static_cast<std::size_t>(i / 400) % gains.size()]};
            };
            rig.setMode(mode);
            int seen = 0;
            for (std::size_t i = 0; i < 2000; ++i) {
                rig.frame(pace.frames[i % pace.frames.size()], pace.heldBack[i % pace.heldBack.size()] / 6);
                std::vector<Rect> places;
                for (int place = 0; const PeakLabel* label = rig.display->labels().published(place);
                     ++place) {
                    if (label->visible) places.push_back(rig.display->labelBounds(*label));
                }
                for (std::size_t a = 0; a < places.size(); ++a) {
                    for (std::size_t b = 0; b < a; ++b) {
                        ASSERT_FALSE(!places[a].intersected(places[b]).isEmpty()) << "frame " << i;
                    }
                }
                seen = std::max(seen, static_cast<int>(places.size()));
            }
            EXPECT_GE(seen, mode == DisplayMode::Infinite ? 2 : 3);
        }
    }
}

TEST(LevelTimeDisplay, DoesNotGrow) {
    DisplayRig rig(800, 300, 1.0f, 8000.0);
    rig.signal = beats;
    rig.run(60000);
    const auto before = mallinfo2().uordblks;
    rig.run(10 * 60000);
    const auto after = mallinfo2().uordblks;
    EXPECT_LT(after, before + 100000);
}

}  // namespace
}  // namespace vanta::interface
