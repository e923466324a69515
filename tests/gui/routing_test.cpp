#include <gmock/gmock.h>

#include "tests/gui/test_interface.hpp"

namespace vanta::gui {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Log = std::vector<std::string>;

/// Hears the hints.
struct HintLog : InterfaceListener {
    void interfaceEvent(int, int) override {}
    void hintChanged(const std::string& text) override { texts.push_back(text); }
    Log texts;
};

/// A panel with two children side by side; a is at (10, 10), b at (60, 10), both 40 wide and high. What the
/// platform sends returns what it made happen.
class Routing : public ::testing::Test {
protected:
    Log take() { return std::exchange(log, {}); }
    template <typename... A>
    Log send(void (RootControl::*event)(A...), std::type_identity_t<A>... arguments) {
        log.clear();
        (ui.root->*event)(arguments...);
        return take();
    }
    Log press(Point at, int modifiers = 0) {
        return send(&RootControl::platformMouseDown, kLeftPress, at, modifiers);
    }
    Log release(Point at) { return send(&RootControl::platformMouseUp, kLeftPress, at, 0); }
    Log move(Point at) { return send(&RootControl::platformMouseMove, at, 0); }
    Log turnWheel(Point at, float pixels = 25.0f) {
        log.clear();
        ui.root->platformWheel(at, 0, {{0, 0.1f}, {0, pixels}});
        return take();
    }
    bool key(Key pressed, int modifiers = 0) { return ui.root->platformKey({pressed, modifiers, 0}); }

    TestInterface ui;
    Log log;
    LoggedControl panel{ui, "panel", log, {0, 0, 200, 100}, ui.root};
    LoggedControl a{ui, "a", log, {10, 10, 50, 50}, &panel};
    LoggedControl b{ui, "b", log, {60, 10, 100, 50}, &panel};
};

TEST_F(Routing, HitsByOpacityBoundsAndState) {
    for (const auto& [alpha, picture, hit] :
         {std::tuple{240, 255, false}, {241, 255, true}, {255, 240, false}, {255, 241, true}}) {
        a.alpha = alpha;
        a.pictureAlpha = picture;
        EXPECT_EQ(panel.childAt({20, 20}) == &a, hit) << alpha << ' ' << picture;
    }
    EXPECT_EQ(panel.childAt({10, 10}), &a);
    EXPECT_EQ(panel.childAt({50, 20}), nullptr) << "the right edge is outside";
    b.setLeft(30);
    EXPECT_EQ(panel.childAt({40, 20}), &b) << "the last child is on top";
    a.enabled = false;
    EXPECT_EQ(panel.childAt({20, 20}), nullptr);
}

TEST_F(Routing, PassesHoverFromChildToChild) {
    EXPECT_THAT(move({20, 20}), ElementsAre("panel enter", "a enter", "a move"));
    EXPECT_THAT(move({70, 20}), ElementsAre("a leave", "b enter", "b move"));
    EXPECT_THAT(move({150, 20}), ElementsAre("b leave", "panel move"));
    EXPECT_THAT(send(&RootControl::platformMouseLeave), ElementsAre("panel leave"));
}

TEST_F(Routing, KeepsThePointerForWhoeverWasPressed) {
    press({20, 20});
    EXPECT_THAT(move({70, 20}), ElementsAre("a move"));
    EXPECT_THAT(release({-500, 900}), ElementsAre("a move", "a up0")) << "no click outside";
    EXPECT_THAT(press({20, 20}), ElementsAre("a move", "a down0"));
    EXPECT_THAT(release({21, 21}), ElementsAre("a move", "a up0", "a click"));
}

TEST_F(Routing, TellsDoubleClicksWhereTheyCount) {
    EXPECT_THAT(press({20, 20}, modifier::kDoubleClick), Contains("a doubleClick"));
    EXPECT_THAT(release({20, 20}), ElementsAre("a move", "a up0"));
    a.doubleClickable = false;
    EXPECT_THAT(press({20, 20}, modifier::kDoubleClick), ElementsAre("a move", "a down0"));
    EXPECT_EQ(release({20, 20}).back(), "a click");
}

TEST_F(Routing, MakesASecondaryPressARightOne) {
    EXPECT_THAT(press({20, 20}, modifier::kSecondaryClick),
                ElementsAre("panel enter", "a enter", "a move", "a down1"));
    EXPECT_THAT(release({20, 20}), ElementsAre("a move", "a up1", "a rightClick"));
    EXPECT_THAT(press({20, 20}, modifier::kSecondaryClick | modifier::kShift),
                ElementsAre("a move", "a down0"));
    EXPECT_THAT(send(&RootControl::platformCancelMode), ElementsAre("a up0"));
    EXPECT_THAT(send(&RootControl::platformCancelMode), IsEmpty());
}

TEST_F(Routing, AsksTheHookBeforeAPress) {
    struct Refuser : UserInterface::MouseHook {
        bool mousePressed(int, Point, int) override { return false; }
    } refuser;
    ui.mouseHook = &refuser;
    EXPECT_THAT(press({20, 20}), IsEmpty());
    EXPECT_EQ(ui.root->mouseCapture(), nullptr);
}

TEST_F(Routing, MakesABurstOfClicksOneWheelGesture) {
    a.takesWheel = true;
    EXPECT_THAT(turnWheel({20, 20}), ElementsAre("panel enter", "a enter", "a move", "a wheel0", "a wheel1"));
    ui.advance(499);
    EXPECT_THAT(turnWheel({20, 20}), ElementsAre("a wheel1"));
    ui.advance(499);
    EXPECT_THAT(log, IsEmpty());
    ui.advance(5000);
    EXPECT_THAT(log, ElementsAre("a wheel2"));
    EXPECT_THAT(turnWheel({20, 20}, 0.0f), IsEmpty()) << "a turn of nothing is none";
}

TEST_F(Routing, HoldsThePointerForTheWheelWhileItTrembles) {
    a.takesWheel = b.takesWheel = true;
    EXPECT_TRUE(a.routeWheel(Control::WheelPhase::Begin, {5, 5}, 0, {}));
    EXPECT_EQ(ui.root->mouseCapture(), nullptr) << "the pointer is not over it";
    turnWheel({49, 20});
    EXPECT_THAT(move({53, 24}), ElementsAre("a move")) << "4 units";
    EXPECT_THAT(turnWheel({53, 24}), ElementsAre("a wheel1"));
    EXPECT_THAT(move({65, 20}), ElementsAre("a wheel2", "a move", "a leave", "b enter", "b move"));
    turnWheel({65, 20});
    EXPECT_THAT(press({66, 20}), ElementsAre("b move", "b wheel2", "b down0"));
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
    EXPECT_EQ(std::exchange(axes.offered, {}), "ax ay py ");
    axes.taken = "ay ";
    EXPECT_TRUE(axes.routeWheel(Control::WheelPhase::Move, {}, 0, move));
    EXPECT_EQ(axes.offered, "ax ay ");
    EXPECT_FALSE(axes.routeWheel(Control::WheelPhase::Begin, {}, 0, move));
}

TEST_F(Routing, SurvivesTheEndOfWhoeverHasThePointer) {
    auto& fleeting = ui.make<LoggedControl>("fleeting", log, Rect{120, 10, 160, 50}, &panel);
    fleeting.takesWheel = true;
    turnWheel({130, 20});
    ASSERT_EQ(ui.root->mouseCapture(), &fleeting);
    delete &fleeting;
    EXPECT_EQ(ui.root->mouseCapture(), nullptr);
    ui.advance(1000);
    EXPECT_THAT(press({20, 20}), ElementsAre("a enter", "a move", "a down0"));
}

TEST_F(Routing, DragsAMovableControlWithinItsParent) {
    a.movable = true;
    press({15, 15});
    move({25, 35});
    EXPECT_EQ(a.bounds.value(), (Rect{20, 30, 60, 70}));
    release({1000, -1000});
    move({50, 50});
    EXPECT_EQ(a.bounds.value(), (Rect{195, -5, 235, 35})) << "the grabbed point stays inside";
}

TEST_F(Routing, ShowsHintsAfterARestAndThenAtOnce) {
    HintLog hints;
    ui.addListener(hints);
    a.hint = std::string("of a");
    b.hint = std::string("of b");
    b.takesWheel = true;
    move({20, 20});
    ui.advance(1499);
    EXPECT_THAT(hints.texts, IsEmpty());
    ui.advance(1);
    EXPECT_THAT(hints.texts, ElementsAre("of a"));
    move({70, 20});
    EXPECT_THAT(hints.texts, ElementsAre("of a", "of b"));
    turnWheel({70, 20});
    EXPECT_THAT(hints.texts, ElementsAre("of a", "of b", "")) << "the first click takes it away";
    ui.advance(5000);
    hints.texts.clear();
    move({20, 20});
    ui.advance(1500);
    move({150, 20});
    EXPECT_THAT(hints.texts, ElementsAre("of a", ""));
    move({20, 20});
    ui.advance(1400);
    press({20, 20});
    ui.advance(5000);
    EXPECT_THAT(hints.texts, ElementsAre("of a", "", "")) << "and so does a press";
}

TEST_F(Routing, GuardsAgainstThePressThatClosesAMenu) {
    // A press that comes meanwhile still sees the guard, the next one does not.
    struct Opener : Control {
        using Control::Control;
        void mouseDown(int, Point, int) override { guarded.push_back(ui().menuJustClosed()); }
        std::vector<bool> guarded;
    } opener(ui);
    opener.bounds = Rect{120, 10, 160, 50};
    opener.parent = &panel;
    for (const int milliseconds : {199, 200}) {
        ui.menuGuard().opened();
        ui.menuGuard().closed();
        ui.advance(milliseconds);
        EXPECT_EQ(ui.menuJustClosed(), milliseconds < 200);
        for (int presses = 0; presses < 2; ++presses) press({130, 20});
    }
    EXPECT_THAT(opener.guarded, ElementsAre(true, false, false, false));
}

TEST_F(Routing, MovesTheFocusByTabAndOffersKeysUpwards) {
    EXPECT_FALSE(key(Key::Tab)) << "nobody to stop at: the host's key";
    a.focusable = b.focusable = true;
    EXPECT_TRUE(key(Key::Tab));
    EXPECT_TRUE(key(Key::Tab));
    EXPECT_THAT(take(), ElementsAre("a focus", "a key", "panel key", "a unfocus", "b focus"));
    EXPECT_EQ(ui.root->focusRingBounds(), (Rect{57.0f, 7.0f, 103.0f, 53.0f}));
    for (const int modifiers : {0, modifier::kShift}) {
        EXPECT_TRUE(key(Key::Tab, modifiers));
        EXPECT_EQ(ui.root->focusedControl(), modifiers ? &b : &a) << "and round";
    }
    panel.takenKey = Key::Up;
    take();
    EXPECT_TRUE(key(Key::Up));
    EXPECT_FALSE(key(Key::Down));
    EXPECT_THAT(take(), ElementsAre("b key", "panel key", "b key", "panel key"));
    EXPECT_TRUE(key(Key::Escape));
    EXPECT_FALSE(key(Key::Escape)) << "the host closes its window";
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
    EXPECT_FALSE(key(Key::Up)) << "nobody has keys who cannot be seen";
}

TEST_F(Routing, KeepsTabWithinADialog) {
    struct Dialog : LoggedControl {
        using LoggedControl::LoggedControl;
        bool holdsFocus() const override { return true; }
    } dialog(ui, "dialog", log, ui.root->localBounds(), ui.root);
    LoggedControl inside(ui, "inside", log, {0, 0, 10, 10}, &dialog);
    a.focusable = inside.focusable = true;
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(ui.root->moveFocus(false));
        EXPECT_EQ(ui.root->focusedControl(), &inside);
    }
}

TEST(RootControl, SurvivesItsInterfaceWithinAMessage) {
    struct Closer : Control {
        Closer(UserInterface& interface, std::unique_ptr<TestInterface>& closed)
            : Control(interface), owner(closed) {
            bounds = Rect{0, 0, 50, 50};
            parent = owner->root;
        }
        void mouseMove(Point, int) override { owner.reset(); }
        std::unique_ptr<TestInterface>& owner;
    };
    auto ui = std::make_unique<TestInterface>();
    ui->make<Closer>(ui);
    const RootControl::MessageScope message(*ui->root);
    ui->root->platformMouseDown(kLeftPress, {5, 5}, 0);
    EXPECT_EQ(ui, nullptr);
    EXPECT_FALSE(message.rootIsAlive());
}

}  // namespace
}  // namespace vanta::gui
