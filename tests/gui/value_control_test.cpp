#include <gmock/gmock.h>

#include "gui/controls/knob.hpp"
#include "gui/controls/modifier_map.hpp"
#include "gui/controls/popup_menu.hpp"
#include "gui/controls/value_link_group.hpp"
#include "tests/gui/test_interface.hpp"

namespace vanta::gui {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Log = std::vector<std::string>;

/// Writes down what a control tells: the phase, and the value.
struct Model : ValueControlListener {
    int requestChange(ValueControl&, int) override { return 0; }
    void valueChanging(ValueControl& control, GesturePhase phase) override {
        log.push_back(names[static_cast<int>(phase)] + std::to_string(control.value));
        if (phase == GesturePhase::Change && echo) control.value = *echo;
    }
    Log take() { return std::exchange(log, {}); }
    const std::string names[3] = {"begin ", "change ", "end "};
    Log log;
    std::optional<int> echo;
};

class ValueTest : public ::testing::Test {
protected:
    ValueTest() { control.listener = &model; }
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
    EXPECT_THAT(model.log, IsEmpty()) << "what the program does is no gesture";
}

TEST_F(ValueTest, MapsPositionsToTheNearestValueThroughItsCurves) {
    control.minimum = 10;
    control.maximum = 20;
    const struct {
        float position;
        int value;
    } cases[] = {{-1.0f, 10}, {0.04f, 10}, {0.06f, 11}, {0.5f, 15}, {0.96f, 20}, {7.0f, 20}};
    for (const auto& c : cases) {
        control.setNormalized(c.position);
        EXPECT_EQ(control.value, c.value) << c.position;
    }
    control.toNormal = [](float x) { return x * x; };
    control.fromNormal = [](float x) { return std::sqrt(x); };
    for (int value = 10; value <= 20; ++value) {
        control.value = value;
        control.setNormalized(control.normalized());
        EXPECT_EQ(control.value, value);
    }
    control.value = 15;
    EXPECT_FLOAT_EQ(control.normalized(), 0.25f);
}

TEST_F(ValueTest, RunsOnPastTheEndWithinAGesture) {
    control.maximum = 100;
    control.value = 90;
    control.beginEndChange(GesturePhase::Begin, 0);
    for (const int delta : {30, -15, -10}) control.beginEndChange(GesturePhase::Change, delta);
    control.beginEndChange(GesturePhase::End, 0);
    EXPECT_THAT(model.take(), ElementsAre("begin 90", "change 100", "change 95", "end 95"))
        << "a dead zone of 20";
    EXPECT_EQ(control.virtualValue(), 95);
}

TEST_F(ValueTest, GestureWinsOverALateAnswerOfTheModel) {
    int raised = 0;
    struct Counter {
        void hear(void*) { ++count; }
        int& count;
    } counter{raised};
    control.onValueChanged.setHandler(&counter, &Counter::hear);
    model.echo = 3;
    control.beginEndChange(GesturePhase::Begin, 0);
    control.beginEndChange(GesturePhase::Change, 50);
    EXPECT_EQ(control.value, 50);
    control.setNormalized(0.9f);
    EXPECT_EQ(control.value, 50);
    EXPECT_EQ(raised, 1);
    control.beginEndChange(GesturePhase::End, 0);
    control.value = 3;
    EXPECT_EQ(control.value, 3);
}

TEST_F(ValueTest, DeliversWhereOnlyOthersCanMove) {
    struct Others : Model {
        int requestChange(ValueControl&, int delta) override { return std::abs(delta); }
    } others;
    control.value = control.maximum.value();
    control.listener = &others;
    control.beginEndChange(GesturePhase::Begin, 0);
    EXPECT_EQ(control.applyChange(GesturePhase::Change, 0, 10, ValueControl::kDryRun), 10);
    control.beginEndChange(GesturePhase::Change, 10);
    EXPECT_THAT(others.take(), ElementsAre("begin 4096", "change 4096"));
}

class LinkTest : public ValueTest {
protected:
    LinkTest() {
        for (ValueControl* each : {&control, &other}) {
            each->maximum = 100;
            each->value = 50;
        }
        other.value = 80;
        other.listener = &otherModel;
        ValueLinkGroup::link(control, other);
    }
    void drag(std::initializer_list<int> deltas, int modifiers = modifier::kAlt) {
        control.setModifiers(modifiers);
        control.beginEndChange(GesturePhase::Begin, 0);
        for (const int delta : deltas) control.beginEndChange(GesturePhase::Change, delta);
        control.beginEndChange(GesturePhase::End, 0);
    }
    Model otherModel;
    ValueControl other{ui};
};

TEST_F(LinkTest, MovesTogetherAndKeepsTheDistance) {
    drag({10}, 0);
    EXPECT_EQ(other.value, 80);
    drag({5, 40, -3});
    EXPECT_EQ(control.value, 77);
    EXPECT_EQ(other.value, 97);
    EXPECT_THAT(otherModel.take(), ElementsAre("begin 80", "change 85", "change 100", "change 97", "end 97"));
    ValueLinkGroup::of(control)->inverted = true;
    drag({-90}, modifier::kMeta);
    EXPECT_EQ(control.value, 74) << "the other one's end holds it";
    EXPECT_EQ(other.value, 100);
}

TEST_F(LinkTest, FollowsTheModifierWithinAGesture) {
    control.beginEndChange(GesturePhase::Begin, 0);
    control.beginEndChange(GesturePhase::Change, 70);
    control.setModifiers(modifier::kAlt);
    control.beginEndChange(GesturePhase::Change, -10);
    EXPECT_EQ(control.value, 90) << "from the value, not from beyond the end";
    EXPECT_EQ(other.value, 70);
    control.setModifiers(0);
    control.beginEndChange(GesturePhase::Change, -10);
    control.beginEndChange(GesturePhase::End, 0);
    EXPECT_EQ(control.value, 80);
    EXPECT_THAT(otherModel.take(), ElementsAre("begin 80", "change 70", "end 70"));
}

TEST_F(LinkTest, LeavesTheGroupWithItsGesture) {
    drag({5});
    control.beginEndChange(GesturePhase::Begin, 0);
    control.beginEndChange(GesturePhase::Change, 5);
    control.beginEndChange(GesturePhase::End, 0);
    EXPECT_EQ(control.value, 60);
    EXPECT_EQ(other.value, 85) << "the modifier was the first gesture's";
}

TEST_F(LinkTest, TravelsByPositionWhereCurvesDiffer) {
    other.maximum = 1000;
    other.toNormal = [](float x) { return x * x; };
    other.fromNormal = [](float x) { return std::sqrt(x); };
    other.setNormalized(0.25f);
    drag({10, 10});
    EXPECT_EQ(control.value, 70);
    EXPECT_NEAR(other.normalized(), 0.45f, 0.001f);
    drag({-80});
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
    control.beginEndChange(GesturePhase::End, 0);
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
        {4096, 200, 20, modifier::kShift, 1, 409, "the fine one a tenth of it"},
        {4096, 50, 500, 0, 4, 4096, "0.1 pixels a millisecond is fast"},
        {4096, 50, 1000, 0, 4, 2252, "half as fast: a tenth and half of the rest"},
        {4096, 1, 100000, 0, 200, 409, "a slow drag is a fine one"},
        {4096, -200, 20, 0, 1, -4096, "downwards"},
        {10, 20, 1000, 0, 1, 1, "few steps take 20 pixels each, at any speed"},
        {10, 19, 1000, 0, 1, 0, "and no fewer"},
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
    const struct {
        Point to;
        int ms;
        bool doubleClickable, moves;
    } cases[] = {{{4, -4}, 400, true, false},
                 {{0, -4.5f}, 20, true, true},
                 {{4.5f, -4}, 20, true, true},
                 {{0, -4}, 401, true, true},
                 {{0, -4}, 20, false, true}};
    TestInterface ui;
    Control control(ui);
    for (const auto& c : cases) {
        ValueDragMapper mapper(ui);
        control.doubleClickable = c.doubleClickable;
        mapper.startDrag({0, 0});
        ui.advance(c.ms);
        EXPECT_EQ(mapper.drag(control, c.to, 0) != 0, c.moves) << c.to.x << ' ' << c.to.y << ' ' << c.ms;
    }
}

TEST(ValueDragMapper, CountsWheelClicks) {
    TestInterface ui;
    ValueDragMapper mapper(ui);
    const auto wheel = [&](float amount, float pixels, int modifiers = 0) {
        return mapper.wheel(Control::WheelPhase::Move, modifiers, amount, pixels);
    };
    mapper.steps = 10;
    mapper.wheel(Control::WheelPhase::Begin, 0, 0, 0);
    EXPECT_EQ(wheel(0.1f, 25), 1);
    EXPECT_EQ(wheel(0.1f, 20), 0) << "25 pixels are a click";
    EXPECT_EQ(wheel(0.1f, 5), 1);
    EXPECT_EQ(wheel(0.1f, 20), 0);
    EXPECT_EQ(wheel(-0.1f, -5), -1) << "the other way at once";
    EXPECT_EQ(wheel(-0.1f, -50), -2);
    mapper.steps = 4096;
    mapper.wheel(Control::WheelPhase::Begin, 0, 0, 0);
    EXPECT_EQ(wheel(0.1f, 25), 409);
    EXPECT_EQ(wheel(0.1f, 25), 410) << "with what was left";
    EXPECT_EQ(wheel(-0.1f, -25, modifier::kShift), -40);
    EXPECT_EQ(mapper.wheel(Control::WheelPhase::End, 0, 0, 0), 0);
}

/// A knob of 60 by 60 whose listener writes down.
class KnobTest : public ::testing::Test {
protected:
    KnobTest() {
        knob.bounds = Rect{0, 0, 60, 60};
        knob.parent = ui.root;
        knob.listener = &model;
        knob.value = 2048;
    }
    /// Where the ring is at an angle, in degrees from the top.
    static Point ring(float degrees) {
        const float radians = degrees / 180.0f * 3.14159265f;
        return {30 + 20 * std::sin(radians), 30 - 20 * std::cos(radians)};
    }
    void press(Point at, int modifiers = 0) { ui.root->platformMouseDown(kLeftPress, at, modifiers); }
    void move(Point at) {
        ui.advance(20);
        ui.root->platformMouseMove(at, 0);
    }
    void release(Point at) { ui.root->platformMouseUp(kLeftPress, at, 0); }

    TestInterface ui;
    Model model;
    Knob knob{ui};
    struct Typing {
        void hear(void*) { ++count; }
        int count = 0;
    } typing;
};

TEST_F(KnobTest, TurnsFromSevenToFive) {
    EXPECT_NEAR(knob.geometry().base() * 360, 210, 1e-3);
    knob.value = 0;
    EXPECT_NEAR(knob.angle() * 360, 210, 1e-3);
    knob.value = 4096;
    EXPECT_NEAR(knob.angle() * 360, 150, 1e-3);
    const KnobGeometry ten{0, 10, 300.0f, 0.0f};
    for (int value = 0; value <= 10; ++value) EXPECT_EQ(ten.valueAt(ten.angleOf(value)), value);
    EXPECT_EQ(ten.valueAt(179.0f / 360.0f), 10);
    EXPECT_EQ(ten.valueAt(181.0f / 360.0f), 0);
    EXPECT_FLOAT_EQ(KnobGeometry::angleOfPoint({1, 0}), 0.25f);
    EXPECT_FLOAT_EQ(KnobGeometry::angleOfPoint({-1, 0}), 0.75f);
}

TEST_F(KnobTest, HoversOverGripRingAndKnob) {
    const struct {
        Point at;
        Knob::Hover hover;
    } cases[] = {{ring(0), Knob::Hover::OverRing},   {ring(29), Knob::Hover::OverRing},
                 {ring(-29), Knob::Hover::OverRing}, {ring(31), Knob::Hover::OverKnob},
                 {{30, 29}, Knob::Hover::OverKnob},  {{30, 1}, Knob::Hover::OverKnob},
                 {{200, 200}, Knob::Hover::Outside}};
    for (const auto& c : cases) {
        move(c.at);
        EXPECT_EQ(knob.hoverState(), c.hover) << c.at.x << ' ' << c.at.y;
        EXPECT_EQ(knob.rollover().isActive(), c.hover != Knob::Hover::Outside);
    }
    knob.style().hasOverlay = false;
    EXPECT_EQ(knob.alphaAt(ring(0)), 255);
    EXPECT_EQ(knob.alphaAt(ring(164)), 255);
    EXPECT_EQ(knob.alphaAt(ring(180)), 0) << "the gap";
    EXPECT_EQ(knob.alphaAt({30, 30}), 0);
}

TEST_F(KnobTest, DragsUpAndDownInOneGesture) {
    press({30, 31});
    EXPECT_EQ(knob.dragMode(), Knob::Drag::Linear);
    move({30, 29});
    EXPECT_EQ(knob.value, 2048) << "it may be a double click";
    move({30, 9});
    move({30, -71});
    EXPECT_EQ(knob.value, 4096);
    move({30, 9});
    move({30, 29});
    EXPECT_EQ(knob.value, 2048) << "the way back is as long";
    release({30, 29});
    const Log log = model.take();
    EXPECT_EQ(log.front(), "begin 2048");
    EXPECT_EQ(std::count(log.begin(), log.end(), "end 2048"), 1);
    EXPECT_EQ(knob.dragMode(), Knob::Drag::None);
}

TEST_F(KnobTest, TurnsByItsGripButNotAcrossTheGap) {
    press(ring(10));
    EXPECT_EQ(knob.dragMode(), Knob::Drag::Rotary);
    EXPECT_EQ(knob.value, 2048) << "taking it beside its middle does not turn it";
    move(ring(100));
    EXPECT_NEAR(knob.value, 2048 + 4096 * 90 / 300, 1);
    move(ring(155));
    EXPECT_NEAR(knob.value, 2048 + 4096 * 145 / 300, 1);
    const int before = knob.value;
    move(ring(215));
    EXPECT_EQ(knob.value, before);
    knob.jumpGuard = false;
    move(ring(225));
    EXPECT_LT(knob.value, 100);
    release(ring(225));
}

TEST_F(KnobTest, ResetsJumpsAndTypesWithinWholeGestures) {
    knob.defaultValue = 100;
    press({30, 31}, modifier::kCtrl);
    release({30, 31});
    EXPECT_THAT(model.take(), ElementsAre("begin 2048", "change 100", "end 100"));
    knob.style().hasOverlay = false;
    press(ring(90));
    release(ring(90));
    EXPECT_THAT(model.take(), ElementsAre("begin 100", "change 3277", "end 3277"));
    press(ring(90), modifier::kCtrl);
    release(ring(90));
    EXPECT_EQ(knob.value, 100) << "a reset is not undone by its release";
    model.take();
    press(ring(90));
    ui.root->platformCancelMode();
    EXPECT_THAT(model.take(), ElementsAre("begin 100", "end 100")) << "a lost press does not jump";

    knob.onTyping.setHandler(&typing, &Typing::hear);
    press(ring(90), modifier::kDoubleClick);
    release(ring(90));
    EXPECT_EQ(typing.count, 1);
    EXPECT_THAT(model.take(), IsEmpty());
    EXPECT_FALSE(knob.commitText("12 dB"));
    EXPECT_TRUE(knob.commitText("99999"));
    EXPECT_THAT(model.take(), ElementsAre("begin 100", "change 4096", "end 4096"));
}

TEST_F(KnobTest, StepsByWheelInOneGesture) {
    knob.maximum = 10;
    knob.value = 5;
    const auto click = [&](float pixels) {
        ui.root->platformWheel({30, 31}, 0, {{0, pixels / 250}, {0, pixels}});
    };
    click(25);
    click(25);
    click(-25);
    ui.advance(500);
    EXPECT_THAT(model.take(), ElementsAre("begin 5", "change 6", "change 7", "change 6", "end 6"));
    knob.startOffset = 180;
    click(25);
    EXPECT_EQ(knob.value, 5) << "a row that begins right of the top";
}

TEST_F(KnobTest, StepsByKeys) {
    ui.root->moveFocus(false);
    const auto key = [&](Key pressed, int modifiers = 0) {
        return ui.root->platformKey({pressed, modifiers, 0});
    };
    EXPECT_TRUE(key(Key::Up));
    EXPECT_THAT(model.take(), ElementsAre("begin 2048", "change 2089", "end 2089")) << "a hundredth";
    const struct {
        Key key;
        int modifiers, value;
    } cases[] = {{Key::Down, modifier::kShift, 2085},
                 {Key::PageDown, 0, 1675},
                 {Key::PageUp, 0, 2085},
                 {Key::Home, 0, 0},
                 {Key::Left, 0, 0},
                 {Key::End, 0, 4096}};
    for (const auto& c : cases) {
        EXPECT_TRUE(key(c.key, c.modifiers));
        EXPECT_EQ(knob.value, c.value);
    }
    knob.maximum = 3;
    EXPECT_TRUE(key(Key::Left));
    EXPECT_EQ(knob.value, 2);
    knob.onTyping.setHandler(&typing, &Typing::hear);
    EXPECT_TRUE(key(Key::Return));
    EXPECT_EQ(typing.count, 1);
    EXPECT_FALSE(key(Key::Character)) << "the host's shortcut";
    EXPECT_FALSE(key(Key::Left, modifier::kCtrl));
    EXPECT_TRUE(key(Key::Escape));
    EXPECT_FALSE(key(Key::Left));
}

TEST(Menu, NumbersPicksAndStepsOverWhatCannotBeChosen) {
    struct Shown : PopupMenu {
        using PopupMenu::PopupMenu;
        MenuItem* choose(Point) override {
            EXPECT_TRUE(ui().menuGuard().isOpen());
            return chosen;
        }
        MenuItem* chosen = nullptr;
    };
    TestInterface ui;
    Shown menu(ui);
    menu.addItem("Off\tCtrl+O", 10);
    menu.addSeparator();
    auto more = std::make_unique<MenuItem>("More", 20);
    const int inner = more->addItem("Inner", 21);
    MenuItem* submenu = more.get();
    EXPECT_EQ(menu.addItem(std::move(more)), 2);
    menu.addItem("Grey", 30);
    menu.addItem("Hidden", 40);
    menu.addItem("Last", 50);
    menu.item(3)->enabled = false;
    menu.item(4)->visible = false;
    std::vector<int> ids;
    for (const MenuItem* item : menu.flattened()) ids.push_back(item->id);
    EXPECT_THAT(ids, ElementsAre(10, 0, 20, 21, 30, 50));
    EXPECT_EQ(menu.item(0)->caption(), "Off");
    EXPECT_EQ(menu.item(0)->accelerator(), "Ctrl+O");
    EXPECT_EQ(menu.nextSelectable(1, 1), 5);
    EXPECT_EQ(menu.nextSelectable(4, -1), 0);
    EXPECT_EQ(menu.nextSelectable(6, 1), -1);
    const struct {
        int from, step, to;
    } highlights[] = {{-1, 1, 0}, {0, 1, 2}, {2, 1, 5}, {5, 1, 0}, {-1, -1, 5}, {0, -1, 5}, {5, -1, 2}};
    for (const auto& h : highlights) EXPECT_EQ(menu.nextHighlight(h.from, h.step), h.to) << h.from;
    EXPECT_EQ(Menu().nextHighlight(-1, 1), -1);
    menu.checkOnly(5);
    EXPECT_FALSE(menu.item(0)->checked);
    EXPECT_TRUE(menu.item(5)->checked);

    struct Heard {
        void picked(void* sender) { id = static_cast<MenuItem*>(sender)->id; }
        void changed(void*) { ++changes; }
        int id = -1, changes = 0;
    } heard;
    menu.onPicked.setHandler(&heard, &Heard::picked);
    menu.onChange.setHandler(&heard, &Heard::changed);
    menu.chosen = submenu->item(inner);
    menu.show({});
    EXPECT_EQ(heard.id, 21);
    EXPECT_TRUE(ui.menuJustClosed());
    menu.chosen = nullptr;
    menu.show({});
    EXPECT_EQ(heard.id, 21);
    {
        const UpdateBlock block(menu);
        submenu->item(inner)->text = std::string("Other");
        menu.item(0)->checked = true;
    }
    EXPECT_EQ(heard.changes, 1) << "one for all, submenus included";
    EXPECT_EQ(menu.itemWithId(21), submenu->item(inner));
    EXPECT_EQ(menu.itemWithId(99), nullptr);
}

}  // namespace
}  // namespace vanta::gui
