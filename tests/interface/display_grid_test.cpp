#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <fmt/format.h>

#include "gui/tree/root_control.hpp"
#include "interface/loudness/main_scale.hpp"
#include "interface/meters/display_grid_control.hpp"
#include "interface/meters/display_grid_link.hpp"
#include "interface/meters/joining_line.hpp"
#include "tests/gui/test_interface.hpp"
#include "tests/interface/fake_source.hpp"

namespace vanta::interface {
namespace {

using gui::Rect;

constexpr MeterScale kAllScales[] = {MeterScale::Db16, MeterScale::Db32, MeterScale::Db48,    MeterScale::K12,
                                     MeterScale::K14,  MeterScale::K20,  MeterScale::Loudness};

/// A display of the interface's shape: full scale lies 57 units from its top, its scale ends 44 from its
/// bottom.
struct Scene {
    explicit Scene(float scaleOfDevice = 1.0f) {
        ui.setScale(scaleOfDevice);
        grid.format = "%+.0f dB";
        grid.minimumSpacing = 32.0f;
        grid.margins = Rect{0.0f, 56.0f, 0.0f, 39.0f};
        display.offset = 57.0f;
    }
    void set(float height, MeterScale scale, const LoudnessScale& loudness) {
        display.setBounds(Rect::ofSize(0.0f, 0.0f, 100.0f, height));
        const MainScale main = MainScale::of(scale, loudness, height - 101.0f);
        main.applyTo(display);
        main.applyTo(grid);
    }
    std::vector<float> levels() {
        std::vector<float> found;
        for (const Tick& tick : grid.ticks()) found.push_back(tick.level);
        return found;
    }
    gui::TestInterface ui{200.0f, 2000.0f};
    LevelDisplay display{ui};
    DisplayGrid grid{display};
};

/// What users would call a fault, or nothing.
std::string faultOf(Scene& scene) {
    const std::vector<Tick>& ticks = scene.grid.ticks();
    const Tick* before = nullptr;
    float lastLabelled = -1000.0f;
    bool hasZero = false, numbersZero = false;
    for (const Tick& tick : ticks) {
        if (before && !(tick.position > before->position)) return "two lines in one place";
        if (before && !(tick.level < before->level)) return "a level that does not fall";
        const Rect& inset = scene.grid.margins;
        if (tick.position < inset.top || tick.position >= scene.display.localBounds().bottom - inset.bottom) {
            return "a line outside of the margins";
        }
        if (tick.level != std::round(tick.level)) return "a level that its number does not tell";
        const float there = scene.grid.levelToPosition(tick.level);
        if (std::abs(there - tick.position) > 1.0f) return "a line beside its level";
        if (tick.labelled && tick.position - lastLabelled < 31.0f) return "two numbers that touch";
        if (tick.labelled) lastLabelled = tick.position;
        hasZero |= tick.level == 0.0f;
        numbersZero |= tick.level == 0.0f && tick.labelled;
        before = &tick;
    }
    const float height = scene.display.localBounds().height();
    if (ticks.size() > 60) return "more lines than anybody wants";
    if (height >= 160.0f && ticks.size() < 2) return "no scale";
    const float k = scene.grid.labelShift;
    if (k > 0.0f && height >= 240.0f && !numbersZero) return "no number at the reference";
    if (k > 0.0f && height >= 160.0f && !hasZero) return "no line at the reference";
    return {};
}

TEST(DisplayGrid, HasASensibleScaleAtEveryHeight) {
    for (const float scaleOfDevice : {1.0f, 1.5f, 2.0f}) {
        Scene scene(scaleOfDevice);
        for (int height = 60; height <= 2000; ++height) {
            for (const MeterScale scale : kAllScales) {
                for (const LoudnessScale& loudness :
                     {LoudnessScale{-14.0f, 9.0f, false}, LoudnessScale{-20.5f, 18.0f, true},
                      LoudnessScale{0.0f, 9.0f, false}, LoudnessScale{-60.0f, 18.0f, false}}) {
                    if (scale != MeterScale::Loudness && loudness.target != -14.0f) continue;
                    scene.set(static_cast<float>(height), scale, loudness);
                    ASSERT_EQ(faultOf(scene), "")
                        << "height " << height << ", scale " << static_cast<int>(scale) << ", target "
                        << loudness.target << ", at " << scaleOfDevice;
                }
            }
        }
    }
}

TEST(DisplayGrid, HasTheNumbersThatEngineersKnow) {
    Scene scene;
    const LoudnessScale loudness{-14.0f, 9.0f, false};
    using Levels = std::vector<float>;
    scene.set(480.0f, MeterScale::Db48, loudness);
    EXPECT_EQ(scene.levels(), (Levels{0, -3, -6, -9, -12, -15, -24, -48}));
    scene.set(480.0f, MeterScale::Db16, loudness);
    EXPECT_EQ(scene.levels(), (Levels{0, -1, -2, -3, -4, -5, -8, -16}));
    scene.set(480.0f, MeterScale::K14, loudness);
    EXPECT_EQ(scene.levels(), (Levels{14, 12, 8, 4, 0, -4, -8, -12, -16, -20, -24, -28, -32}));
    EXPECT_FLOAT_EQ(scene.grid.levelToPosition(0.0f), scene.display.levelToPosition(-14.0f));
    scene.set(480.0f, MeterScale::Loudness, loudness);
    EXPECT_EQ(scene.levels(), (Levels{-2, -5, -8, -11, -14, -17, -20, -23, -26, -29, -32}));
}

TEST(DisplayGrid, TakesCoarserStepsThanItsListHas) {
    Scene scene;
    scene.display.setBounds(Rect::ofSize(0.0f, 0.0f, 100.0f, 400.0f));
    scene.display.scale = 2.5f;  // 12 dB for 30 units, with the steps 3, 6, 10
    scene.grid.minimumSpacing = 30.0f;
    EXPECT_EQ(scene.levels(), (std::vector<float>{0, -20, -40, -60, -80, -100, -120}));
}

TEST(DisplayGrid, HasFractionsOnlyWhereItsFormatHas) {
    Scene scene;
    scene.set(2000.0f, MeterScale::Db16, {-14.0f, 9.0f, false});
    scene.grid.format = "%.1f";
    const std::vector<Tick> fine = scene.grid.ticks();
    EXPECT_TRUE(std::ranges::any_of(fine, [](const Tick& t) { return t.level != std::round(t.level); }));
    scene.grid.format = "%.0f";
    EXPECT_TRUE(std::ranges::all_of(scene.grid.ticks(),
                                    [](const Tick& t) { return t.level == std::round(t.level); }));
}

TEST(DisplayGrid, HasNoLinesWithoutAScale) {
    Scene scene;
    scene.display.setBounds(Rect::ofSize(0.0f, 0.0f, 100.0f, 400.0f));
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float scale : {0.0f, -3.0f, infinity, -infinity, std::nanf("")}) {
        scene.display.scale = scale;
        EXPECT_TRUE(scene.grid.ticks().empty()) << scale;
    }
}

TEST(DisplayGrid, CountsAScaleThatLiesFromFullScaleOn) {
    gui::TestInterface ui;
    LevelDisplay meter(ui);
    meter.orientation = Orientation::Horizontal;
    meter.setBounds(Rect::ofSize(0.0f, 0.0f, 551.0f, 31.0f));
    meter.offset = 549.0f;
    auto& control = ui.make<DisplayGridControl>();
    control.bounds = Rect::ofSize(0.0f, 0.0f, 589.0f, 16.0f);
    DisplayGrid& grid = control.grid();
    grid.orientation = Orientation::Horizontal;
    grid.setDisplay(&meter);
    grid.positionShift = 20.0f;
    grid.margins = Rect{19.0f, 0.0f, 20.0f, 13.0f};
    grid.format = "%+.0f";
    MainScale main = MainScale::of(MeterScale::K20, {-14.0f, 9.0f, false}, 549.0f);
    main.applyTo(meter);
    main.applyTo(grid);
    ASSERT_FALSE(grid.ticks().empty());
    EXPECT_EQ(grid.ticks().front().level, 20.0f);
    EXPECT_EQ(grid.ticks().front().position, 569.0f);
    EXPECT_EQ(grid.ticks().back().level, -26.0f);
    for (std::size_t i = 1; i < grid.ticks().size(); ++i) {
        EXPECT_LT(grid.ticks()[i].position, grid.ticks()[i - 1].position);
    }
}

struct Painted {
    explicit Painted(gui::TestInterface& ui, float width, float height) : sheet(ui.createBitmap()) {
        sheet->setLogicalSize(width, height);
    }
    bool isLit(int x, int y) const { return sheet->row(y)[x] != 0; }
    /// Anything at all within a rectangle.
    bool hasInk(const Rect& rect) const {
        for (int y = static_cast<int>(rect.top); y < static_cast<int>(rect.bottom); ++y) {
            for (int x = static_cast<int>(rect.left); x < static_cast<int>(rect.right); ++x) {
                if (isLit(x, y)) return true;
            }
        }
        return false;
    }
    std::unique_ptr<gui::Bitmap> sheet;
};

TEST(DisplayGrid, KeepsOutOfExclusionsButForItsTarget) {
    Scene scene;
    scene.set(480.0f, MeterScale::Loudness, {-14.0f, 9.0f, false});
    scene.grid.lineColor = gui::Color{255, 255, 255, 255};
    scene.grid.labelColor = gui::Color{255, 255, 255, 255};
    const int target = static_cast<int>(scene.grid.levelToPosition(-14.0f));
    const int other = static_cast<int>(scene.grid.levelToPosition(-20.0f) + 0.75f);
    scene.grid.exclusions = std::vector<Rect>{Rect::ofSize(40.0f, 0.0f, 60.0f, 480.0f)};
    scene.grid.exemptLevel = -14.0f;
    scene.grid.labelAlignment = gui::Alignment::Right;
    Painted picture(scene.ui, 100.0f, 480.0f);
    scene.grid.paint(picture.sheet->canvas());
    EXPECT_TRUE(picture.isLit(20, other));
    EXPECT_FALSE(
        picture.hasInk({40.0f, static_cast<float>(other) - 8.0f, 100.0f, static_cast<float>(other) + 8.0f}));
    EXPECT_TRUE(picture.isLit(60, target));
    EXPECT_TRUE(picture.hasInk(
        {60.0f, static_cast<float>(target) - 5.0f, 100.0f, static_cast<float>(target) - 1.0f}));
    ASSERT_EQ(scene.grid.numberAreas().size(), 1u);
}

TEST(DisplayGrid, FollowsItsDisplayAndOutlivesIt) {
    gui::TestInterface ui;
    auto* display = &ui.make<LevelDisplay>();
    display->bounds = Rect::ofSize(0.0f, 0.0f, 50.0f, 200.0f);
    auto& control = ui.make<DisplayGridControl>();
    control.bounds = Rect::ofSize(100.0f, 0.0f, 50.0f, 200.0f);
    control.parent = ui.root;
    control.grid().setDisplay(display);
    const float before = control.grid().ticks().back().level;
    ui.picture();
    ui.root->takeDirtyRect();
    display->scale = 2.0f;
    EXPECT_FALSE(ui.root->dirtyRect().isEmpty()) << "another scale shows";
    EXPECT_LT(control.grid().ticks().back().level, before);
    delete display;
    EXPECT_NO_FATAL_FAILURE(control.grid().ticks());
    EXPECT_EQ(control.grid().display(), nullptr);
}

TEST(JoiningLine, LeadsFromOneScaleToTheOther) {
    for (const float place : {0.0f, 0.5f, 1.0f}) {
        for (const bool isSoft : {false, true}) {
            const std::vector<float> way = joiningTable({100.0f, 40.0f, place, isSoft}, 60.0f);
            ASSERT_EQ(way.size(), 61u);
            EXPECT_FLOAT_EQ(way.front(), 100.0f);
            EXPECT_FLOAT_EQ(way.back(), 40.0f);
            for (std::size_t i = 1; i < way.size(); ++i)
                EXPECT_LE(way[i], way[i - 1] + 1e-3f) << place << " " << i;
            const float middle = ((0.35f * place + 0.15f) + (0.15f * place + 0.75f)) / 2.0f * 60.0f;
            EXPECT_NEAR(way[static_cast<std::size_t>(std::round(middle))], 70.0f, 1.5f) << place;
        }
    }
}

TEST(DisplayGridLink, RepaintsWhenItsLevelOrAScaleMovesAndOnlyThen) {
    gui::TestInterface ui;
    auto& animator = ui.make<gui::Animator>();
    animator.framesPerSecond = 50;
    animator.running = true;
    std::array<DisplayGridControl*, 2> grids{};
    for (auto*& control : grids) {
        control = &ui.make<DisplayGridControl>();
        control->grid().minimum = -40.0f;
        control->grid().maximum = 0.0f;
        control->bounds = Rect::ofSize(0.0f, 0.0f, 20.0f, 200.0f);
    }
    auto& link = ui.make<DisplayGridLink>(&animator);
    test::FakeSource source(-20.0f, -20.0f);
    link.source = &source;
    link.bounds = Rect::ofSize(40.0f, 0.0f, 60.0f, 200.0f);
    link.parent = ui.root;
    link.setGrids(&grids[0]->grid(), &grids[1]->grid());
    const auto isRepainted = [&] {
        ui.advance(20);
        const bool isDirty = !ui.root->takeDirtyRect().isEmpty();
        ui.picture();
        return isDirty;
    };
    EXPECT_TRUE(isRepainted());
    EXPECT_FALSE(isRepainted());
    source.values[0] = -21.0f;
    EXPECT_TRUE(isRepainted());
    grids[0]->grid().minimum = -50.0f;
    EXPECT_TRUE(isRepainted());
    EXPECT_FALSE(isRepainted());
    link.visible = false;
    const int reads = source.reads;
    ui.advance(100);
    EXPECT_EQ(source.reads, reads) << "a hidden one reads nothing";
}

}  // namespace
}  // namespace vanta::interface
