#include <gmock/gmock.h>

#include "gui/controls/knob.hpp"
#include "gui/controls/modifier_map.hpp"
#include "gui/controls/popup_menu.hpp"
#include "gui/controls/value_link_group.hpp"
#include "tests/gui/counter.hpp"
#include "tests/gui/test_interface.hpp"

namespace vanta::gui {
namespace {

using test::Counter;
using ::testing::ElementsAre;

/// Writes down what a control tells: the phase, and the value.
struct Model : ValueControlListener {
    int requestChange(ValueControl&, int delta) override { return othersMove ? std::abs(delta) : 0; }
    void valueChanging(ValueControl& control, GesturePhase phase) override {
        constexpr const char* kNames[] = {"begin ", "change ", "end "};
        log += (log.empty() ? "" : ", ") + (kNames[static_cast<int>(phase)] + std::to_string(control.value));
        if (phase == GesturePhase::Change && echo) control.value = *echo;
    }
    std::string take() { return std::exchange(log, {}); }
    std::string log;
    std::optional<int> echo;
    bool othersMove = false;
};

class ValueTest : public ::testing::Test {
protected:
    ValueTest() { control.listener = &model; }
    void drag(std::initializer_list<int> deltas) {
        control.beginEndChange(GesturePhase::Begin, 0);
        for (const int delta : deltas) control.beginEndChange(GesturePhase::Change, delta);
        control.beginEndChange(GesturePhase::End, 0);
    }
    TestInterface ui;
    Model model;
    ValueControl control{ui};
};

TEST_F(ValueTest, StaysInItsRangeAndKeepsTheLimitsApart) {
    control.value = 5000;
    EXPECT_EQ(control.value, 4096);
    control.maximum = -10;
    EXPECT_EQ(control.minimum, -11);
    EXPECT_EQ(control.value, -10);
    control.minimum = 7;
    EXPECT_EQ(control.maximum, 8);
    EXPECT_EQ(control.value, 7);
    EXPECT_EQ(model.log, "") << "what the program does is no gesture";
}

TEST_F(ValueTest, MapsPositionsToTheNearestValueThroughItsCurves) {
    control.minimum = 10;
    control.maximum = 20;
    for (const auto& [position, value] : {std::pair{-1.0f, 10}, {0.04f, 10}, {0.06f, 11}, {7.0f, 20}}) {
        EXPECT_EQ(control.valueAt(position), value) << position;
    }
    control.toNormal = [](float x) { return x * x; };
    control.fromNormal = [](float x) { return std::sqrt(x); };
    for (int value = 10; value <= 20; ++value) {
        EXPECT_EQ(control.valueAt(control.normalizedAt(value)), value);
    }
    control.setNormalized(0.25f);
    EXPECT_EQ(control.value, 15);
}

TEST_F(ValueTest, RunsOnPastTheEndWithinAGesture) {
    control.maximum = 100;
    control.value = 90;
    drag({30, -15, -10});
    EXPECT_EQ(model.take(), "begin 90, change 100, change 95, end 95") << "a dead zone of 20";
    EXPECT_EQ(control.virtualValue(), 95);
}

TEST_F(ValueTest, GestureWinsOverALateAnswerOfTheModel) {
    Counter raised;
    control.onValueChanged.setHandler(&raised, &Counter::hear);
    model.echo = 3;
    control.beginEndChange(GesturePhase::Begin, 0);
    control.beginEndChange(GesturePhase::Change, 50);
    control.setNormalized(0.9f);
    EXPECT_EQ(control.value, 50);
    EXPECT_EQ(raised.count, 1);
    control.beginEndChange(GesturePhase::End, 0);
    control.value = 3;
    EXPECT_EQ(control.value, 3);
}

TEST_F(ValueTest, DeliversWhereOnlyOthersCanMove) {
    control.value = control.maximum.value();
    model.othersMove = true;
    control.beginEndChange(GesturePhase::Begin, 0);
    EXPECT_EQ(control.applyChange(GesturePhase::Change, 0, 10, ValueControl::kDryRun), 10);
    control.beginEndChange(GesturePhase::Change, 10);
    EXPECT_EQ(model.take(), "begin 4096, change 4096");
}

class LinkTest : public ValueTest {
protected:
    LinkTest() {
        for (ValueControl* each : {&control, &other}) each->maximum = 100;
        control.value = 50;
        other.value = 80;
        other.listener = &otherModel;
        ValueLinkGroup::link(control, other);
    }
    void dragLinked(std::initializer_list<int> deltas, int modifiers = modifier::kAlt) {
        control.setModifiers(modifiers);
        drag(deltas);
    }
    Model otherModel;
    ValueControl other{ui};
};

TEST_F(LinkTest, MovesTogetherAndKeepsTheDistance) {
    drag({10});
    EXPECT_EQ(other.value, 80);
    dragLinked({5, 40, -3});
    EXPECT_EQ(control.value, 77);
    EXPECT_EQ(otherModel.take(), "begin 80, change 85, change 100, change 97, end 97");
    drag({5});
    EXPECT_EQ(other.value, 97) << "the modifier was the first gesture's";
    ValueLinkGroup::of(control)->inverted = true;
    dragLinked({-90}, modifier::kMeta);
    EXPECT_EQ(control.value, 79) << "the other one's end holds it";
    EXPECT_EQ(other.value, 100);
}

TEST_F(LinkTest, FollowsTheModifierWithinAGesture) {
    control.beginEndChange(GesturePhase::Begin, 0);
    control.beginEndChange(GesturePhase::Change, 70);
    control.setModifiers(modifier::kAlt);
    control.beginEndChange(GesturePhase::Change, -10);
    EXPECT_EQ(control.value, 90) << "from the value, not from beyond the end";
    control.setModifiers(0);
    control.beginEndChange(GesturePhase::Change, -10);
    control.beginEndChange(GesturePhase::End, 0);
    EXPECT_EQ(control.value, 80);
    EXPECT_EQ(otherModel.take(), "begin 80, change 70, end 70");
}

TEST_F(LinkTest, TravelsByPositionWhereCurvesDiffer) {
    other.maximum = 1000;
    other.toNormal = [](float x) { return x * x; };
    other.fromNormal = [](float x) { return std::sqrt(x); };
    other.setNormalized(0.25f);
    dragLinked({10, 10});
    EXPECT_EQ(control.value, 70);
    EXPECT_NEAR(other.normalized(), 0.45f, 0.001f);
    dragLinked({-80});
    EXPECT_NEAR(other.normalized(), 0.0f, 0.001f);
    EXPECT_EQ(control.value, 25) << "both end together";
}

TEST_F(LinkTest, DissolvesWithItsLastPair) {
    auto third = std::make_unique<ValueControl>(ui);
    ValueLinkGroup::link(control, *third);
    EXPECT_EQ(ValueLinkGroup::of(other)->members().size(), 3u);
    ValueLinkGroup::leave(other);
    EXPECT_EQ(ValueLinkGroup::of(other), nullptr);
    control.setModifiers(modifier::kAlt);
    control.beginEndChange(GesturePhase::Begin, 0);
    third.reset();
    EXPECT_EQ(ValueLinkGroup::of(control), nullptr);
    control.beginEndChange(GesturePhase::Change, 10);
    EXPECT_EQ(control.value, 60);
}

TEST(ValueDragMapper, TurnsTravelIntoSteps) {
    const struct {
        int steps;
        float pixels;
        int ms, modifiers, moves, delta;
        const char* what;
    } cases[] = {
        {4096, 200, 20, 0, 1, 4096, "a fast drag spans the range"},
        {4096, -200, 20, modifier::kShift, 1, -409, "the fine one a tenth of it"},
        {4096, 50, 500, 0, 4, 4096, "0.1 pixels a millisecond is fast"},
        {4096, 50, 1000, 0, 4, 2252, "half as fast: a tenth and half of the rest"},
        {4096, 1, 100000, 0, 200, 409, "a slow drag is a fine one"},
        {10, 39, 1000, 0, 1, 1, "few steps take 20 pixels each, at any speed"},
        {10, 5, 20, 0, 4, 1, "fractions add up"},
        {0, 20, 20, 0, 1, 0, "no steps"},
    };
    TestInterface ui;
    Control control(ui);
    control.doubleClickable = false;
    for (const auto& c : cases) {
        ValueDragMapper mapper(ui);
        mapper.steps = c.steps;
        mapper.startDrag({0, 0});
        int delta = 0;
        for (int i = 1; i <= c.moves; ++i) {
            ui.advance(c.ms);
            delta += mapper.drag(control, {3, -c.pixels * static_cast<float>(i)}, c.modifiers);
        }
        EXPECT_NEAR(delta, c.delta, c.moves > 1 && c.steps > 100 ? 1 : 0) << c.what;
    }
}

TEST(ValueDragMapper, WaitsWhileAPressMayBecomeADoubleClick) {
    TestInterface ui;
    Control control(ui);
    for (const auto& [to, ms, doubleClickable, moves] : {std::tuple{Point{4, -4}, 400, true, false},
                                                         {Point{0, -4.5f}, 20, true, true},
                                                         {Point{4.5f, -4}, 20, true, true},
                                                         {Point{0, -4}, 401, true, true},
                                                         {Point{0, -4}, 20, false, true}}) {
        ValueDragMapper mapper(ui);
        control.doubleClickable = doubleClickable;
        mapper.startDrag({0, 0});
        ui.advance(ms);
        EXPECT_EQ(mapper.drag(control, to, 0) != 0, moves) << to.x << ' ' << to.y << ' ' << ms;
    }
}

TEST(ValueDragMapper, CountsWheelClicks) {
    TestInterface ui;
    ValueDragMapper mapper(ui);
    mapper.steps = 10;
    mapper.wheel(Control::WheelPhase::Begin, 0, 0, 0);
    // 25 pixels are a click, and the other way counts at once.
    for (const auto& [pixels, steps] : {std::pair{25, 1}, {20, 0}, {5, 1}, {20, 0}, {-5, -1}, {-50, -2}}) {
        const float amount = pixels > 0 ? 0.1f : -0.1f;
        EXPECT_EQ(mapper.wheel(Control::WheelPhase::Move, 0, amount, static_cast<float>(pixels)), steps);
    }
    mapper.steps = 4096;
    mapper.wheel(Control::WheelPhase::Begin, 0, 0, 0);
    EXPECT_EQ(mapper.wheel(Control::WheelPhase::Move, 0, 0.1f, 25), 409);
    EXPECT_EQ(mapper.wheel(Control::WheelPhase::Move, 0, 0.1f, 25), 410) << "with what was left";
    EXPECT_EQ(mapper.wheel(Control::WheelPhase::Move, modifier::kShift, -0.1f, -25), -40);
    EXPECT_EQ(mapper.wheel(Control::WheelPhase::End, 0, 0, 0), 0);
}

/// A knob of 60 by 60 whose listener writes down. Events of the pointer return what it wrote since.
class KnobTest : public ::testing::Test {
protected:
    KnobTest() {
        knob.bounds = Rect{0, 0, 60, 60};
        knob.parent = ui.root;
        knob.listener = &model;
        knob.value = 2048;
        knob.onTyping.setHandler(&typing, &Counter::hear);
        // Opaque all over.
        for (Bitmap* picture : {knob.style().backNormal.get(), knob.style().overlayNormal.get()}) {
            picture->setLogicalSize(60, 60);
        }
    }
    /// Where the ring is at an angle, in degrees from the top.
    static Point ring(float degrees) {
        const float radians = degrees / 180.0f * 3.14159265f;
        return {30 + 20 * std::sin(radians), 30 - 20 * std::cos(radians)};
    }
    void press(Point at, int modifiers = 0) { ui.root->platformMouseDown(kLeftPress, at, modifiers); }
    int move(Point at) {
        ui.advance(20);
        ui.root->platformMouseMove(at, 0);
        return knob.value;
    }
    std::string release(Point at) {
        ui.root->platformMouseUp(kLeftPress, at, 0);
        return model.take();
    }
    std::string click(Point at, int modifiers = 0) {
        press(at, modifiers);
        return release(at);
    }
    bool key(Key pressed, int modifiers = 0) { return ui.root->platformKey({pressed, modifiers, 0}); }

    TestInterface ui;
    Model model;
    Counter typing;
    Knob knob{ui};
};

TEST_F(KnobTest, TurnsFromSevenToFive) {
    knob.value = 0;
    EXPECT_NEAR(knob.angle() * 360, 210, 1e-3);
    knob.value = 4096;
    EXPECT_NEAR(knob.angle() * 360, 150, 1e-3);
    const KnobGeometry ten{0, 10, 300.0f, 0.0f};
    for (int value = 0; value <= 10; ++value) EXPECT_EQ(ten.valueAt(ten.angleOf(value)), value);
    EXPECT_EQ(ten.valueAt(179.0f / 360.0f), 10);
    EXPECT_EQ(ten.valueAt(181.0f / 360.0f), 0);
}

TEST_F(KnobTest, HoversOverGripRingAndKnob) {
    using Hover = Knob::Hover;
    for (const auto& [at, hover] : {std::pair{ring(0), Hover::OverRing},
                                    {ring(29), Hover::OverRing},
                                    {ring(-31), Hover::OverKnob},
                                    {{30, 1}, Hover::OverKnob},
                                    {{200, 200}, Hover::Outside}}) {
        move(at);
        EXPECT_EQ(knob.hoverState(), hover) << at.x << ' ' << at.y;
        EXPECT_EQ(knob.rollover().isActive(), hover != Hover::Outside);
    }
    knob.style().setImages({}, {}, {}, {}, {}, {});
    EXPECT_EQ(knob.alphaAt(ring(0)), 255);
    EXPECT_EQ(knob.alphaAt(ring(164)), 255);
    EXPECT_EQ(knob.alphaAt(ring(180)), 0) << "the gap";
    EXPECT_EQ(knob.alphaAt({30, 30}), 0);
}

TEST_F(KnobTest, DragsUpAndDownInOneGesture) {
    press({30, 31});
    EXPECT_EQ(move({30, 29}), 2048) << "it may be a double click";
    move({30, 9});
    EXPECT_EQ(move({30, -71}), 4096);
    move({30, 9});
    EXPECT_EQ(move({30, 29}), 2048) << "the way back is as long";
    EXPECT_THAT(release({30, 29}), ::testing::MatchesRegex("begin 2048(, change [0-9]+)+, end 2048"));
    EXPECT_EQ(knob.dragMode(), Knob::Drag::None);
}

TEST_F(KnobTest, TurnsByItsGripButNotAcrossTheGap) {
    press(ring(10));
    EXPECT_EQ(knob.value, 2048) << "taking it beside its middle does not turn it";
    EXPECT_NEAR(move(ring(100)), 2048 + 4096 * 90 / 300, 1);
    const int before = move(ring(155));
    EXPECT_NEAR(before, 2048 + 4096 * 145 / 300, 1);
    EXPECT_EQ(move(ring(215)), before);
    knob.jumpGuard = false;
    EXPECT_LT(move(ring(225)), 100);
}

TEST_F(KnobTest, ResetsJumpsAndTypesWithinWholeGestures) {
    knob.defaultValue = 100;
    EXPECT_EQ(click({30, 31}, modifier::kCtrl), "begin 2048, change 100, end 100");
    knob.style().setImages({}, {}, {}, {}, {}, {});
    EXPECT_EQ(click(ring(90)), "begin 100, change 3277, end 3277");
    click(ring(90), modifier::kCtrl);
    EXPECT_EQ(knob.value, 100) << "a reset is not undone by its release";
    press(ring(90));
    ui.root->platformCancelMode();
    EXPECT_EQ(model.take(), "begin 100, end 100") << "a lost press does not jump";
    EXPECT_EQ(click(ring(90), modifier::kDoubleClick), "");
    EXPECT_EQ(typing.count, 1);
    EXPECT_FALSE(knob.commitText("12 dB"));
    EXPECT_TRUE(knob.commitText("99999"));
    EXPECT_EQ(model.take(), "begin 100, change 4096, end 4096");
}

TEST_F(KnobTest, StepsByWheelInOneGesture) {
    knob.maximum = 10;
    knob.value = 5;
    const auto wheel = [&](float pixels) {
        ui.root->platformWheel({30, 31}, 0, {{0, pixels / 250}, {0, pixels}});
    };
    for (const float pixels : {25.0f, 25.0f, -25.0f}) wheel(pixels);
    ui.advance(500);
    EXPECT_EQ(model.take(), "begin 5, change 6, change 7, change 6, end 6");
    knob.startOffset = 180;
    wheel(25);
    EXPECT_EQ(knob.value, 5) << "a row that begins right of the top";
}

TEST_F(KnobTest, StepsByKeys) {
    ui.root->moveFocus(false);
    EXPECT_TRUE(key(Key::Up));
    EXPECT_EQ(model.take(), "begin 2048, change 2089, end 2089") << "a hundredth";
    for (const auto& [pressed, value] : {std::pair{Key::PageDown, 1679},
                                         {Key::PageUp, 2089},
                                         {Key::Home, 0},
                                         {Key::Left, 0},
                                         {Key::End, 4096}}) {
        EXPECT_TRUE(key(pressed));
        EXPECT_EQ(knob.value, value);
    }
    EXPECT_TRUE(key(Key::Down, modifier::kShift));
    EXPECT_EQ(knob.value, 4092);
    knob.maximum = 3;
    EXPECT_TRUE(key(Key::Left));
    EXPECT_EQ(knob.value, 2);
    EXPECT_TRUE(key(Key::Return));
    EXPECT_EQ(typing.count, 1);
    EXPECT_FALSE(key(Key::Character)) << "the host's shortcut";
    EXPECT_FALSE(key(Key::Left, modifier::kCtrl));
    EXPECT_TRUE(key(Key::Escape));
    EXPECT_FALSE(key(Key::Left));
}

/// A menu in which `chosen` is picked as soon as it is shown.
struct ChosenMenu : PopupMenu {
    explicit ChosenMenu(UserInterface& interface) : PopupMenu(interface) {
        onPicked.setHandler(this, &ChosenMenu::picked);
        onChange.setHandler(&changes, &Counter::hear);
    }
    MenuItem* choose(Point) override {
        EXPECT_TRUE(ui().menuGuard().isOpen());
        return chosen;
    }
    void picked(void* sender) { pickedId = static_cast<MenuItem*>(sender)->id; }
    MenuItem* chosen = nullptr;
    int pickedId = -1;
    Counter changes;
};

TEST(Menu, NumbersPicksAndStepsOverWhatCannotBeChosen) {
    TestInterface ui;
    ChosenMenu menu(ui);
    menu.addItem("Off\tCtrl+O", 10);
    menu.addSeparator();
    auto more = std::make_unique<MenuItem>("More", 20);
    more->addItem("Inner", 21);
    EXPECT_EQ(menu.addItem(std::move(more)), 2);
    for (const int id : {30, 40, 50}) menu.addItem("Further", id);
    menu.item(3)->enabled = false;
    menu.item(4)->visible = false;
    std::vector<int> ids;
    for (const MenuItem* item : menu.flattened()) ids.push_back(item->id);
    EXPECT_THAT(ids, ElementsAre(10, 0, 20, 21, 30, 50));
    EXPECT_EQ(menu.item(0)->caption(), "Off");
    EXPECT_EQ(menu.item(0)->accelerator(), "Ctrl+O");
    EXPECT_EQ(menu.nextSelectable(6, 1), -1);
    for (const auto& [from, down, up] : {std::tuple{-1, 0, 5}, {0, 2, 5}, {2, 5, 0}, {5, 0, 2}}) {
        EXPECT_EQ(menu.nextHighlight(from, 1), down) << from;
        EXPECT_EQ(menu.nextHighlight(from, -1), up) << from;
    }
    EXPECT_EQ(Menu().nextHighlight(-1, 1), -1);
    menu.item(0)->checked = true;
    menu.checkOnly(5);
    EXPECT_FALSE(menu.item(0)->checked);
    EXPECT_TRUE(menu.item(5)->checked);

    menu.chosen = menu.itemWithId(21);
    menu.show({});
    EXPECT_EQ(std::exchange(menu.pickedId, -1), 21);
    EXPECT_TRUE(ui.menuJustClosed());
    menu.chosen = nullptr;
    menu.show({});
    EXPECT_EQ(menu.pickedId, -1);
    menu.changes.count = 0;
    {
        const UpdateBlock block(menu);
        menu.itemWithId(21)->text = std::string("Other");
        menu.item(0)->checked = true;
    }
    EXPECT_EQ(menu.changes.count, 1) << "one for all, submenus included";
    EXPECT_EQ(menu.itemWithId(99), nullptr);
}

}  // namespace
}  // namespace vanta::gui
