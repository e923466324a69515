#include "gui/tree/region.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

#include "tests/gui/test_interface.hpp"

namespace vanta::gui {
namespace {

using ::testing::ElementsAre;

TEST(Region, MergesToTheGreaterOfWideAndTall) {
    const struct {
        Rect a, b, merged;
    } cases[] = {
        {{0, 0, 10, 10}, {}, {0, 0, 10, 10}},
        {{}, {0, 0, 10, 10}, {0, 0, 10, 10}},
        {{0, 0, 10, 10}, {11, 0, 20, 10}, {}},              // apart: coverage is lost
        {{0, 0, 10, 10}, {10, 0, 20, 10}, {0, 0, 20, 10}},  // side by side
        {{0, 0, 10, 10}, {0, 10, 10, 20}, {0, 0, 10, 20}},  // stacked
        {{0, 10, 10, 20}, {0, 0, 10, 10}, {}},              // stacked in the wrong order
        {{0, 0, 10, 10}, {5, 2, 20, 8}, {0, 2, 20, 8}},     // wide
        {{0, 0, 10, 10}, {2, 5, 8, 20}, {2, 0, 8, 20}},     // tall
        {{0, 0, 10, 10}, {5, 5, 15, 15}, {0, 5, 15, 10}},   // a tie is wide
    };
    for (const auto& c : cases) EXPECT_EQ(mergeRects(c.a, c.b), c.merged);
}

TEST(Region, SubtractsOnlyWhatLeavesARectangle) {
    const Rect r{10, 10, 30, 30};
    const struct {
        Rect cut, rest;
    } cases[] = {{{0, 0, 20, 40}, {20, 10, 30, 30}},
                 {{20, 0, 40, 40}, {10, 10, 20, 30}},
                 {{0, 0, 40, 20}, {10, 20, 30, 30}},
                 {{0, 20, 40, 40}, {10, 10, 30, 20}},
                 {{15, 0, 20, 40}, r},
                 {{0, 0, 20, 20}, r},
                 {{12, 12, 28, 28}, r},
                 {{40, 10, 50, 30}, r}};
    for (const auto& c : cases) EXPECT_EQ(subtractRect(r, c.cut), c.rest);
    EXPECT_TRUE(subtractRect(r, {0, 0, 40, 40}).isEmpty());
}

TEST(Region, NeverClaimsMoreThanTheUnion) {
    std::mt19937 random(7);
    const auto at = [&] { return static_cast<float>(random() % 13); };
    for (int round = 0; round < 3000; ++round) {
        std::vector<Rect> rects(4);
        for (Rect& rect : rects) rect = Rect::ofSize(at(), at(), at(), at());
        const Rect merged = mergeAll(rects);
        for (float y = merged.top + 0.5f; y < merged.bottom; ++y) {
            for (float x = merged.left + 0.5f; x < merged.right; ++x) {
                const auto holds = [&](const Rect& rect) { return rect.contains({x, y}); };
                ASSERT_TRUE(std::ranges::any_of(rects, holds)) << "round " << round;
            }
        }
    }
}

/// Writes down what is painted, in window coordinates.
struct Recorder final : Canvas::Owner {
    struct Fill {
        Rect rect;
        Color color;
        bool operator==(const Fill&) const = default;
    };
    float scale() const override { return 1.0f; }
    void drawBitmap(const Bitmap&, const Rect&, Point, int) override {}
    void drawBitmapMasked(const Bitmap&, const Rect&, Point, const Bitmap&, Point, int) override {}
    void drawLine(Point, Point, Color, float, const Rect&) override {}
    void drawCurves(const CurveSet&, const Rect&, const Rect&, Point, Canvas::CurveOrientation,
                    int) override {}
    void fillRect(const Rect& rect, Color color) override { fills.push_back({rect, color}); }
    Color pixelAt(Point) const override { return {}; }
    void drawPoint(Point, Color) override {}
    std::vector<Fill> fills;
};

struct Filled : Control {
    Filled(UserInterface& interface, Color filledWith, Rect at, Control& in)
        : Control(interface), color(filledWith) {
        bounds = at;
        parent = &in;
    }
    void paint(Canvas& canvas) override { canvas.fillRect(localBounds(), color); }
    bool takesFocus() const override { return true; }
    Color color;
};

std::vector<Recorder::Fill> painted(TestInterface& ui, Rect clip) {
    Recorder recorder;
    Canvas canvas(recorder);
    canvas.clip = clip;
    ui.root->drawTree(canvas);
    return recorder.fills;
}

constexpr Color kGround = Color::of(0xFFC0C0C0);
constexpr Color kRed = Color::of(0xFF0000FF);
constexpr Color kBlue = Color::of(0xFFFF0000);

TEST(Painting, ClipsMultipliesOpacityAndOmitsWhatIsCovered) {
    using Fill = Recorder::Fill;
    TestInterface ui(100, 100);
    Filled panel(ui, kRed, {10, 10, 60, 60}, *ui.root);
    Filled leaf(ui, kBlue, {-5, 20, 100, 30}, panel);
    leaf.alpha = 128;
    const Rect whole{10, 30, 20, 40};
    panel.alpha = 128;
    EXPECT_THAT(painted(ui, whole), ElementsAre(Fill{whole, kGround}, Fill{whole, kRed.withAlpha(128)},
                                                Fill{whole, kBlue.withAlpha(128 * 128 / 255)}));
    panel.alpha = 255;
    EXPECT_THAT(painted(ui, {0, 0, 100, 40}),
                ElementsAre(Fill{{0, 0, 100, 40}, kGround}, Fill{{10, 10, 60, 40}, kRed},
                            Fill{{10, 30, 60, 40}, kBlue.withAlpha(128)}));
    panel.opaque = true;
    EXPECT_THAT(painted(ui, {10, 0, 40, 30}),
                ElementsAre(Fill{{10, 0, 40, 10}, kGround}, Fill{{10, 10, 40, 30}, kRed}));
    panel.visible = false;
    EXPECT_THAT(painted(ui, {0, 0, 50, 50}), ElementsAre(Fill{{0, 0, 50, 50}, kGround}));
}

TEST(OpaqueRegion, ClimbsTheTree) {
    TestInterface ui(100, 100);
    Filled panel(ui, kRed, {10, 10, 60, 60}, *ui.root);
    Filled a(ui, kBlue, {0, 0, 20, 50}, panel), b(ui, kBlue, {20, 0, 40, 70}, panel);
    for (Filled* filled : {&a, &b}) filled->opaque = true;
    EXPECT_EQ(panel.opaqueRect(), (Rect{0, 0, 40, 50})) << "clipped to the panel";
    EXPECT_EQ(ui.root->childrenOpaque(), (Rect{10, 10, 50, 60}));
    b.setLeft(25);
    EXPECT_TRUE(panel.childrenOpaque().isEmpty()) << "apart";
    EXPECT_TRUE(ui.root->childrenOpaque().isEmpty());
    a.visible = false;
    EXPECT_EQ(ui.root->childrenOpaque(), (Rect{35, 10, 55, 60}));
    panel.alpha = 254;
    EXPECT_TRUE(ui.root->childrenOpaque().isEmpty());
}

TEST(DirtyRegion, GathersOneBoxAndLosesNothing) {
    TestInterface ui(200, 200);
    Filled panel(ui, kRed, {100, 100, 200, 200}, *ui.root);
    Filled leaf(ui, kBlue, {10, 10, 20, 20}, panel);
    const auto dirtyAfter = [&](auto change) {
        ui.root->takeDirtyRect();
        change();
        return ui.root->takeDirtyRect();
    };
    EXPECT_EQ(dirtyAfter([&] { leaf.markDirty({5, 5, 50, 50}); }), (Rect{115, 115, 120, 120}));
    EXPECT_EQ(dirtyAfter([&] { leaf.setPosition({30, 10}); }), (Rect{110, 110, 140, 120}));
    EXPECT_EQ(dirtyAfter([&] { leaf.takeFocus(); }), (Rect{127, 107, 143, 123})) << "its ring";
    EXPECT_EQ(dirtyAfter([&] { leaf.setLeft(50); }), (Rect{127, 107, 163, 123}));
    leaf.setLeft(30);
    EXPECT_EQ(dirtyAfter([&] { ui.root->setFocus(nullptr); }), (Rect{127, 107, 143, 123}));
    EXPECT_EQ(dirtyAfter([&] { leaf.alpha = 0; }), (Rect{130, 110, 140, 120}));
    const auto moveUnseen = [&] {
        leaf.markDirty();
        leaf.setPosition({0, 0});
        leaf.visible = false;
    };
    EXPECT_TRUE(dirtyAfter(moveUnseen).isEmpty());
    leaf.alpha = 255;
    EXPECT_EQ(dirtyAfter([&] { leaf.visible = true; }), (Rect{100, 100, 110, 110}));
    const auto moveAllAtOnce = [&] {
        const UpdateBlock block(panel);
        leaf.setPosition({80, 80});
        panel.setPosition({90, 90});
        leaf.visible = false;
        EXPECT_TRUE(ui.root->takeDirtyRect().isEmpty());
    };
    EXPECT_EQ(dirtyAfter(moveAllAtOnce), (Rect{90, 90, 200, 200}));
    EXPECT_EQ(dirtyAfter([&] { panel.setSize(50, 50); }), (Rect{90, 90, 190, 190}));
    leaf.setPosition({0, 0});
    leaf.visible = true;
    EXPECT_EQ(dirtyAfter([&] { leaf.toFront(); }), (Rect{90, 90, 100, 100}));
    EXPECT_EQ(dirtyAfter([&] { leaf.parent = nullptr; }), (Rect{90, 90, 100, 100}));
}

}  // namespace
}  // namespace vanta::gui
