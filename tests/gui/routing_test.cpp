#include <gmock/gmock.h>

#include "tests/gui/test_interface.hpp"

namespace vanta::gui {
namespace {

using ::testing::ElementsAre;
using Log = std::vector<std::string>;

/// A panel with two children side by side; a is at (10, 10), b at (60, 10), both 40 wide and high.
class Routing : public ::testing::Test {
protected:
    Log take() { return std::exchange(log, {}); }
    void press(Point at, int modifiers = 0) { ui.root->platformMouseDown(kLeftPress, at, modifiers); }
    void release(Point at) { ui.root->platformMouseUp(kLeftPress, at, 0); }
    void move(Point at) { ui.root->platformMouseMove(at, 0); }
    void turnWheel(Point at, float pixels = 25.0f) {
        ui.root->platformWheel(at, 0, {{0, 0.1f}, {0, pixels}});
    }

    TestInterface ui;
    Log log;
    LoggedControl panel{ui, "panel", log, {0, 0, 200, 100}, ui.root};
    LoggedControl a{ui, "a", log, {10, 10, 50, 50}, &panel};
    LoggedControl b{ui, "b", log, {60, 10, 100, 50}, &panel};
};

TEST_F(Routing, HitsByOpacityBoundsAndState) {
    const struct {
        int alpha, picture;
        bool hit;
    } cases[] = {{240, 255, false}, {241, 255, true}, {255, 240, false}, {255, 241, true}};
    for (const auto& c : cases) {
        a.alpha = c.alpha;
        a.pictureAlpha = c.picture;
        EXPECT_EQ(panel.childAt({20, 20}) == &a, c.hit) << c.alpha << ' ' << c.picture;
    }
    EXPECT_EQ(panel.childAt({10, 10}), &a);
    EXPECT_EQ(panel.childAt({50, 20}), nullptr) << "the right edge is outside";
    a.enabled = false;
    EXPECT_EQ(panel.childAt({20, 20}), nullptr);
    b.setLeft(30);
    a.enabled = true;
    EXPECT_EQ(panel.childAt({40, 20}), &b) << "the last child is on top";
}

TEST_F(Routing, PassesHoverFromChildToChild) {
    move({20, 20});
    EXPECT_THAT(take(), ElementsAre("panel enter", "a enter", "a move"));
    move({70, 20});
    EXPECT_THAT(take(), ElementsAre("a leave", "b enter", "b move"));
    move({150, 20});
    EXPECT_THAT(take(), ElementsAre("b leave", "panel move"));
    ui.root->platformMouseLeave();
    EXPECT_THAT(take(), ElementsAre("panel leave"));
}

TEST_F(Routing, KeepsThePointerForWhoeverWasPressed) {
    press({20, 20});
    take();
    move({70, 20});
    move({-500, 900});
    EXPECT_THAT(take(), ElementsAre("a move", "a move"));
    release({-500, 900});
    EXPECT_THAT(take(), ElementsAre("a move", "a up0")) << "no click outside";
    press({20, 20});
    release({21, 21});
    EXPECT_THAT(take(), ElementsAre("a move", "a down0", "a move", "a up0", "a click"));
}

TEST_F(Routing, TellsDoubleClicksWhereTheyCount) {
    const auto doublePress = [&] {
        press({20, 20});
        release({20, 20});
        press({20, 20}, modifier::kDoubleClick);
        release({20, 20});
        Log clicks = take();
        std::erase_if(clicks,
                      [](const std::string& event) { return event.find("lick") == std::string::npos; });
        return clicks;
    };
    EXPECT_THAT(doublePress(), ElementsAre("a click", "a doubleClick"));
    a.doubleClickable = false;
    EXPECT_THAT(doublePress(), ElementsAre("a click", "a click"));
}

TEST_F(Routing, MakesASecondaryPressARightOne) {
    press({20, 20}, modifier::kSecondaryClick);
    release({20, 20});
    EXPECT_THAT(take(), ElementsAre("panel enter", "a enter", "a move", "a down1", "a move", "a up1",
                                    "a rightClick"));
    press({20, 20}, modifier::kSecondaryClick | modifier::kShift);
    EXPECT_THAT(take(), ElementsAre("a move", "a down0"));
    ui.root->platformCancelMode();
    EXPECT_THAT(take(), ElementsAre("a up0"));
    ui.root->platformCancelMode();
    EXPECT_THAT(take(), ElementsAre());
}

TEST_F(Routing, AsksTheHookBeforeAPress) {
    struct Refuser : UserInterface::MouseHook {
        bool mousePressed(int, Point, int) override { return false; }
    } refuser;
    ui.mouseHook = &refuser;
    press({20, 20});
    EXPECT_THAT(take(), ElementsAre());
    EXPECT_EQ(ui.root->mouseCapture(), nullptr);
}

TEST_F(Routing, MakesABurstOfClicksOneWheelGesture) {
    a.takesWheel = true;
    turnWheel({20, 20});
    ui.advance(499);
    turnWheel({20, 20});
    ui.advance(499);
    EXPECT_THAT(take(), ElementsAre("panel enter", "a enter", "a move", "a wheel0", "a wheel1", "a wheel1"));
    ui.advance(1);
    EXPECT_THAT(take(), ElementsAre("a wheel2"));
    ui.advance(5000);
    turnWheel({20, 20}, 0.0f);
    EXPECT_THAT(take(), ElementsAre()) << "one end, and a turn of nothing is none";
}

TEST_F(Routing, HoldsThePointerForTheWheelWhileItTrembles) {
    a.takesWheel = true;
    EXPECT_TRUE(a.routeWheel(Control::WheelPhase::Begin, {5, 5}, 0, {}));
    EXPECT_EQ(ui.root->mouseCapture(), nullptr) << "the pointer is not over it";
    take();
    a.takesWheel = b.takesWheel = true;
    turnWheel({49, 20});
    take();
    move({53, 24});
    turnWheel({53, 24});
    EXPECT_THAT(take(), ElementsAre("a move", "a wheel1")) << "4 units";
    move({65, 20});
    EXPECT_THAT(take(), ElementsAre("a wheel2", "a move", "a leave", "b enter", "b move"));
    turnWheel({65, 20});
    press({66, 20});
    EXPECT_THAT(take(), ElementsAre("b move", "b wheel0", "b wheel1", "b move", "b wheel2", "b down0"));
}

TEST_F(Routing, OffersTheWheelAxisByAxis) {
    struct Axes : Control {
        using Control::Control;
        bool wheelAmount(Point, int, float, WheelAxis axis) override { return note('a', axis); }
        bool wheelPixels(Point, int, float, WheelAxis axis) override { return note('p', axis); }
        bool note(char what, WheelAxis axis) {
            offered += {what, axis == WheelAxis::Vertical ? 'y' : 'x', ' '};
            return offered.ends_with(taken);
        }
        std::string offered, taken = "none";
    } axes(ui);
    const Control::WheelMove move{{0.1f, -0.1f}, {0.0f, -25.0f}};
    EXPECT_FALSE(axes.routeWheel(Control::WheelPhase::Move, {}, 0, move));
    EXPECT_EQ(axes.offered, "ax ay py ");
    axes.offered.clear();
    axes.taken = "ay ";
    EXPECT_TRUE(axes.routeWheel(Control::WheelPhase::Move, {}, 0, move));
    EXPECT_EQ(axes.offered, "ax ay ");
    EXPECT_FALSE(axes.routeWheel(Control::WheelPhase::Begin, {}, 0, move));
}

TEST_F(Routing, SurvivesTheEndOfWhoeverHasThePointer) {
    a.takesWheel = true;
    auto& fleeting = ui.make<LoggedControl>("fleeting", log, Rect{120, 10, 160, 50}, &panel);
    fleeting.takesWheel = true;
    turnWheel({130, 20});
    ASSERT_EQ(ui.root->mouseCapture(), &fleeting);
    delete &fleeting;
    EXPECT_EQ(ui.root->mouseCapture(), nullptr);
    ui.advance(1000);
    press({20, 20});
    release({20, 20});
    EXPECT_EQ(log.back(), "a click");
}

TEST_F(Routing, DragsAMovableControlWithinItsParent) {
    a.movable = true;
    press({15, 15});
    move({25, 35});
    EXPECT_EQ(a.bounds.value(), (Rect{20, 30, 60, 70}));
    move({1000, -1000});
    EXPECT_EQ(a.bounds.value(), (Rect{195, -5, 235, 35})) << "the grabbed point stays inside";
    release({1000, -1000});
    move({50, 50});
    EXPECT_EQ(a.bounds.value().left, 195);
}

/// Hears the hints.
struct HintLog : InterfaceListener {
    void interfaceEvent(int, int) override {}
    void hintChanged(const std::string& text) override { texts.push_back(text); }
    std::vector<std::string> texts;
};

TEST_F(Routing, ShowsHintsAfterARestAndThenAtOnce) {
    HintLog hints;
    ui.addListener(hints);
    a.hint = std::string("of a");
    b.hint = std::string("of b");
    move({20, 20});
    ui.advance(1499);
    EXPECT_THAT(hints.texts, ElementsAre());
    ui.advance(1);
    EXPECT_THAT(hints.texts, ElementsAre("of a"));
    move({70, 20});
    EXPECT_THAT(hints.texts, ElementsAre("of a", "of b"));
    move({150, 20});
    EXPECT_THAT(hints.texts, ElementsAre("of a", "of b", ""));
    move({20, 20});
    ui.advance(1400);
    press({20, 20});
    ui.advance(5000);
    EXPECT_THAT(hints.texts, ElementsAre("of a", "of b", "", "")) << "a press takes the hint away";
}

TEST_F(Routing, TakesTheHintAwayAtTheFirstWheelClick) {
    HintLog hints;
    ui.addListener(hints);
    a.hint = std::string("of a");
    a.takesWheel = true;
    move({20, 20});
    ui.advance(1500);
    turnWheel({20, 20});
    EXPECT_THAT(hints.texts, ElementsAre("of a", ""));
}

TEST_F(Routing, GuardsAgainstThePressThatClosesAMenu) {
    MenuGuard& guard = ui.menuGuard();
    guard.opened();
    guard.closed();
    ui.advance(199);
    EXPECT_TRUE(ui.menuJustClosed());
    ui.advance(1);
    EXPECT_FALSE(ui.menuJustClosed());
    // A press that comes meanwhile still sees the guard, the next one does not.
    struct Opener : Control {
        using Control::Control;
        void mouseDown(int, Point, int) override { guarded.push_back(ui().menuJustClosed()); }
        std::vector<bool> guarded;
    } opener(ui);
    opener.bounds = Rect{120, 10, 160, 50};
    opener.parent = &panel;
    guard.opened();
    guard.closed();
    press({130, 20});
    press({130, 20});
    EXPECT_THAT(opener.guarded, ElementsAre(true, false));
}

TEST_F(Routing, MovesTheFocusByTabAndOffersKeysUpwards) {
    const KeyPress tab{Key::Tab, 0, 0}, back{Key::Tab, modifier::kShift, 0}, escape{Key::Escape, 0, 0};
    EXPECT_FALSE(ui.root->platformKey(tab)) << "nobody to stop at: the host's key";
    a.focusable = b.focusable = true;
    EXPECT_TRUE(ui.root->platformKey(tab));
    EXPECT_TRUE(ui.root->platformKey(tab));
    EXPECT_THAT(take(), ElementsAre("a focus", "a key", "panel key", "a unfocus", "b focus"));
    EXPECT_EQ(ui.root->focusRingBounds(), (Rect{55.5f, 5.5f, 104.5f, 54.5f}));
    EXPECT_TRUE(ui.root->platformKey(tab));
    EXPECT_EQ(ui.root->focusedControl(), &a) << "and round";
    EXPECT_TRUE(ui.root->platformKey(back));
    EXPECT_EQ(ui.root->focusedControl(), &b);
    take();
    panel.takenKey = Key::Up;
    EXPECT_TRUE(ui.root->platformKey({Key::Up, 0, 0}));
    EXPECT_FALSE(ui.root->platformKey({Key::Down, 0, 0}));
    EXPECT_THAT(take(), ElementsAre("b key", "panel key", "b key", "panel key"));
    EXPECT_TRUE(ui.root->platformKey(escape));
    EXPECT_FALSE(ui.root->platformKey(escape)) << "the host closes its window";
    ui.root->moveFocus(false);
    press({150, 20});
    EXPECT_EQ(ui.root->focusedControl(), nullptr) << "a press ends it";
    ui.root->moveFocus(false);
    a.parent = nullptr;
    EXPECT_EQ(ui.root->focusedControl(), nullptr) << "and so does leaving the tree";
    EXPECT_EQ(log.back(), "a unfocus");
    ui.root->moveFocus(false);
    panel.visible = false;
    EXPECT_TRUE(ui.root->focusRingBounds().isEmpty());
    EXPECT_FALSE(ui.root->platformKey({Key::Up, 0, 0})) << "nobody has keys who cannot be seen";
}

TEST_F(Routing, KeepsTabWithinADialog) {
    struct Dialog : Control {
        using Control::Control;
        bool holdsFocus() const override { return true; }
    } dialog(ui);
    dialog.bounds = ui.root->localBounds();
    dialog.parent = ui.root;
    LoggedControl inside(ui, "inside", log, {0, 0, 10, 10}, &dialog);
    a.focusable = inside.focusable = true;
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(ui.root->moveFocus(false));
        EXPECT_EQ(ui.root->focusedControl(), &inside);
    }
}

TEST(RootControl, SurvivesItsInterfaceWithinAMessage) {
    auto ui = std::make_unique<TestInterface>();
    struct Closer : Control {
        Closer(UserInterface& interface, std::unique_ptr<TestInterface>& closed)
            : Control(interface), owner(closed) {}
        void mouseMove(Point, int) override { owner.reset(); }
        std::unique_ptr<TestInterface>& owner;
    };
    auto& closer = ui->make<Closer>(ui);
    closer.bounds = Rect{0, 0, 50, 50};
    closer.parent = ui->root;
    const RootControl::MessageScope message(*ui->root);
    ui->root->platformMouseDown(kLeftPress, {5, 5}, 0);
    EXPECT_EQ(ui, nullptr);
    EXPECT_FALSE(message.rootIsAlive());
}

}  // namespace
}  // namespace vanta::gui
