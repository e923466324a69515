#include <gmock/gmock.h>

#include <functional>

#include "gui/animation/animator.hpp"
#include "gui/controls/control_bar.hpp"
#include "gui/controls/edit_field.hpp"
#include "gui/controls/image.hpp"
#include "gui/controls/image_select_button.hpp"
#include "gui/controls/knob.hpp"
#include "gui/controls/label.hpp"
#include "gui/controls/light.hpp"
#include "gui/controls/popup_button.hpp"
#include "gui/controls/select_button.hpp"
#include "gui/controls/shape.hpp"
#include "gui/controls/switch.hpp"
#include "gui/controls/text_editor.hpp"
#include "gui/controls/toggle_button.hpp"
#include "gui/controls/value_entry.hpp"
#include "tests/gui/pictures.hpp"
#include "tests/gui/test_interface.hpp"

namespace vanta::gui {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Log = std::vector<std::string>;

/// A platform whose menus do what the test says while they are open.
struct MenuInterface : TestInterface {
    struct TestMenu : PopupMenu {
        explicit TestMenu(MenuInterface& interface) : PopupMenu(interface), test(interface) {}
        MenuItem* choose(Point point) override {
            test.shownAt = point;
            return test.choice ? test.choice(*this) : nullptr;
        }
        MenuInterface& test;
    };
    ~MenuInterface() override { shutDown(); }
    std::unique_ptr<PopupMenu> createPopupMenu() override { return std::make_unique<TestMenu>(*this); }

    std::function<MenuItem*(PopupMenu&)> choice;
    Point shownAt;
};

class ControlsTest : public ::testing::Test, public ValueControlListener {
protected:
    template <typename Kind>
    Kind& make(const Rect& at) {
        auto& control = ui.make<Kind>();
        control.bounds = at;
        control.parent = ui.root;
        if constexpr (std::is_base_of_v<ValueControl, Kind>) control.listener = this;
        return control;
    }
    void press(Point at, int modifiers = 0) { ui.root->platformMouseDown(kLeftPress, at, modifiers); }
    void move(Point at) { ui.root->platformMouseMove(at, 0); }
    void release(Point at) { ui.root->platformMouseUp(kLeftPress, at, 0); }
    void click(Point at) {
        press(at);
        release(at);
    }
    bool key(Key which, int modifiers = 0) { return ui.root->platformKey({which, modifiers, 0}); }
    void type(const std::string& text) {
        for (const char c : text) ui.root->platformKey({Key::Character, 0, static_cast<char32_t>(c)});
    }
    void turnWheel(Point at, float clicks) {
        ui.root->platformWheel(at, 0, {{0.0f, clicks * 0.02f}, {0.0f, clicks * 25.0f}});
    }

    int requestChange(ValueControl&, int) override { return 0; }
    void valueChanging(ValueControl& control, GesturePhase phase) override {
        const char* const names[] = {"begin ", "change ", "end "};
        log.push_back(names[static_cast<int>(phase)] + std::to_string(control.value));
    }
    Log take() { return std::exchange(log, {}); }

    MenuInterface ui;
    Log log;
};

TEST_F(ControlsTest, ButtonFollowsItsPress) {
    auto& button = make<Button>({0, 0, 60, 20});
    int clicks = 0;
    struct Counter {
        void hear(void*) { ++count; }
        int& count;
    } counter{clicks};
    button.onClick.setHandler(&counter, &Counter::hear);
    button.value = 7;
    move({5, 5});
    EXPECT_EQ(button.state(), Button::State::Hover);
    press({5, 5});
    EXPECT_EQ(button.state(), Button::State::Pressed);
    move({5, 50});
    EXPECT_EQ(button.state(), Button::State::Normal);
    move({5, 5});
    EXPECT_EQ(button.state(), Button::State::Pressed);
    release({5, 5});
    EXPECT_EQ(button.state(), Button::State::Hover);
    EXPECT_EQ(clicks, 1);
    EXPECT_THAT(take(), ElementsAre("begin 7", "end 7"));
    press({5, 5});
    ui.root->platformCancelMode();
    EXPECT_EQ(clicks, 1) << "a lost press is no click";
    EXPECT_THAT(take(), ElementsAre("begin 7", "end 7"));
    button.buttonStyle = Button::ButtonStyle::StaysDown;
    press({5, 5});
    move({5, 50});
    EXPECT_EQ(button.state(), Button::State::Pressed);
    release({5, 50});
    EXPECT_EQ(clicks, 1);
    click({5, 5});
    press({5, 5}, modifier::kDoubleClick);
    release({5, 5});
    EXPECT_EQ(clicks, 3) << "fast clicks are clicks";
    button.takeFocus();
    EXPECT_TRUE(key(Key::Return));
    type(" ");
    EXPECT_EQ(clicks, 5);
    EXPECT_FALSE(key(Key::Up)) << "a button has no value to step";
}

TEST_F(ControlsTest, LooksFadeIntoEachOther) {
    auto& animator = ui.make<Animator>();
    animator.framesPerSecond = 100;
    animator.running = true;
    auto& style = ui.make<Button::Style>();
    for (Bitmap* picture : {style.normal.get(), style.active.get()}) picture->setLogicalSize(20, 20);
    style.active->fill(Color{255, 255, 255, 255});
    auto& button = ui.make<Button>(&animator, &style);
    button.restAlpha = 100;
    const auto look = [&] { return button.rollover().crossfade(*style.normal, *style.active); };
    EXPECT_EQ(&look().picture, style.normal.get());
    EXPECT_EQ(look().alpha, 100);
    button.highlighted = true;
    ui.advance(50);
    EXPECT_NEAR(look().picture.pixelAt({5, 5}).red, 128, 30);
    EXPECT_NEAR(look().alpha, 178, 20);
    ui.advance(100);
    EXPECT_EQ(&look().picture, style.active.get());
    EXPECT_EQ(look().alpha, 255);
    button.highlighted = false;
    ui.advance(150);
    EXPECT_NEAR(look().picture.pixelAt({5, 5}).red, 128, 30);
    style.normal = ui.createBitmap();
    EXPECT_EQ(&look().picture, style.active.get()) << "without a normal picture the other fades";
    EXPECT_EQ(look().alpha, button.rollover().mix());
    ui.advance(200);
    EXPECT_EQ(&look().picture, style.normal.get());
}

TEST_F(ControlsTest, ButtonHandsADragToItsProxy) {
    auto& button = make<Button>({0, 0, 60, 20});
    auto& handle = make<Control>({100, 100, 140, 120});
    handle.movable = true;
    button.dragProxy = &handle;
    press({5, 5});
    EXPECT_EQ(button.state(), Button::State::Normal);
    EXPECT_TRUE(handle.hasCapture());
    move({25, 15});
    EXPECT_EQ(handle.bounds.value(), Rect::ofSize(120, 110, 40, 20));
    release({25, 15});
    EXPECT_THAT(take(), ElementsAre("begin 0", "end 0"));
    delete &handle;
    EXPECT_EQ(button.dragProxy, nullptr);
    click({5, 5});
}

TEST_F(ControlsTest, ToggleIsOnAsItsValueIs) {
    auto& toggle = make<ToggleButton>({0, 0, 60, 20});
    click({5, 5});
    EXPECT_TRUE(toggle.on);
    EXPECT_THAT(take(), ElementsAre("begin 0", "change 1", "end 1"));
    toggle.value = 0;
    EXPECT_FALSE(toggle.on);
    toggle.onValue = 0;
    EXPECT_TRUE(toggle.on) << "on stands for 0";
    EXPECT_THAT(take(), IsEmpty()) << "what the program does is no gesture";
    press({5, 5});
    release({5, 50});
    EXPECT_TRUE(toggle.on) << "released elsewhere";
    take();
    toggle.takeFocus();
    type(" ");
    EXPECT_THAT(take(), ElementsAre("begin 0", "change 1", "end 1"));
    EXPECT_FALSE(toggle.on);
}

TEST_F(ControlsTest, LongPressIsMomentary) {
    auto& toggle = make<ToggleButton>({0, 0, 60, 20});
    toggle.momentary = true;
    const struct {
        int heldMs;
        bool latched;
    } cases[] = {{500, true}, {501, false}};
    for (const auto& c : cases) {
        toggle.on = false;
        press({5, 5});
        EXPECT_TRUE(toggle.on) << "at the press";
        ui.advance(c.heldMs);
        release({5, 5});
        EXPECT_EQ(toggle.on, c.latched) << c.heldMs;
    }
    toggle.on = true;
    press({5, 5});
    EXPECT_TRUE(toggle.on);
    release({5, 5});
    EXPECT_FALSE(toggle.on) << "one that is on goes off at the release";
}

TEST_F(ControlsTest, GroupKeepsOneButtonOn) {
    auto& group = make<ToggleButton>({});
    Button* buttons[3];
    for (int i = 0; i < 3; ++i) {
        const auto x = static_cast<float>(30 * i);
        buttons[i] = &make<Button>({x, 0, x + 30, 20});
        buttons[i]->listener = nullptr;
        group.addButton(*buttons[i]);
    }
    const auto states = [&] { return Log{buttons[0]->on ? "on" : "-", buttons[1]->on ? "on" : "-"}; };
    EXPECT_THAT(states(), ElementsAre("on", "-"));
    click({35, 5});
    EXPECT_THAT(states(), ElementsAre("-", "on"));
    EXPECT_THAT(take(), ElementsAre("begin 0", "change 1", "end 1"));
    click({35, 5});
    EXPECT_THAT(states(), ElementsAre("-", "on")) << "the chosen one stays";
    EXPECT_THAT(take(), IsEmpty());
    group.value = 2;
    EXPECT_TRUE(buttons[2]->on);
    delete buttons[2];
    click({5, 5});
    EXPECT_EQ(group.value, 0);
}

class SelectTest : public ControlsTest {
protected:
    SelectTest() : select(make<SelectButton>({10, 10, 90, 30})) {
        for (const char* text : {"A", "B", "C", "D"}) select.addItem(text, text + std::string("!"));
        ui.drainRelay();
    }
    SelectButton& select;
};

TEST_F(SelectTest, PicksFromItsMenuInOneGesture) {
    EXPECT_EQ(select.maximum, 3);
    ui.choice = [](PopupMenu& menu) { return menu.item(2); };
    click({15, 15});
    EXPECT_THAT(take(), ElementsAre("begin 0", "change 2", "end 2"));
    EXPECT_EQ(ui.shownAt, (Point{10, 30}));
    EXPECT_EQ(select.text().text.value(), "C!");
    EXPECT_TRUE(select.menu().item(2)->checked);
    EXPECT_FALSE(select.menu().item(0)->checked);
    ui.choice = nullptr;
    click({15, 15});
    EXPECT_THAT(take(), ElementsAre("begin 2", "end 2")) << "turned away from";
    select.indeterminate = true;
    EXPECT_EQ(select.text().text.value(), "(Multiple)");
    ui.choice = [](PopupMenu& menu) { return menu.item(2); };
    click({15, 15});
    EXPECT_THAT(take(), ElementsAre("begin 2", "change 2", "end 2")) << "several become this one";
}

TEST_F(SelectTest, ShowsTheNearestItemThatCanBeChosen) {
    select.value = 1;
    select.menu().item(1)->enabled = false;
    EXPECT_EQ(select.text().text.value(), "B!") << "not before the relay is drained";
    ui.drainRelay();
    EXPECT_EQ(select.text().text.value(), "C!");
    for (const int index : {2, 3}) select.menu().item(index)->enabled = false;
    ui.drainRelay();
    EXPECT_EQ(select.text().text.value(), "A!");
    select.emptyText = "none";
    select.maximum = 9;
    select.value = 7;
    EXPECT_EQ(select.text().text.value(), "none");
}

TEST_F(SelectTest, StepsOverWhatCannotBeChosen) {
    select.menu().item(1)->enabled = false;
    turnWheel({15, 15}, 1);
    EXPECT_EQ(select.value, 2);
    turnWheel({15, 15}, -1);
    EXPECT_EQ(select.value, 0);
    for (const int index : {2, 3}) select.menu().item(index)->enabled = false;
    turnWheel({15, 15}, 1);
    EXPECT_EQ(select.value, 0) << "all later ones are disabled";
    select.menu().item(3)->enabled = true;
    ui.advance(1000);
    take();
    select.takeFocus();
    EXPECT_TRUE(key(Key::Down));
    EXPECT_TRUE(key(Key::Down)) << "the end";
    EXPECT_THAT(take(), ElementsAre("begin 0", "change 3", "end 3"));
    ui.choice = [](PopupMenu& menu) { return menu.item(0); };
    EXPECT_TRUE(key(Key::Return));
    EXPECT_EQ(select.value, 0);
}

TEST_F(SelectTest, MirrorShowsTheSameMenu) {
    auto& compact = make<SelectButton>({100, 10, 140, 30});
    compact.maximum = 3;
    compact.mirror = &select;
    EXPECT_EQ(compact.text().text.value(), "A!");
    ui.choice = [](PopupMenu& menu) { return menu.item(3); };
    click({105, 15});
    EXPECT_EQ(compact.value, 3);
    EXPECT_EQ(select.value, 3);
    EXPECT_EQ(compact.text().text.value(), "D!");
    delete &select;
    click({105, 15});
    EXPECT_EQ(compact.mirror, nullptr);
}

/// The window dies under the open menu, and the button with it.
TEST(SelectButtonTest, SurvivesTheEndOfItsInterface) {
    auto ui = std::make_unique<MenuInterface>();
    auto& select = ui->make<SelectButton>();
    select.bounds = Rect{0, 0, 50, 20};
    select.parent = ui->root;
    select.addItem("A");
    ui->choice = [&](PopupMenu&) -> MenuItem* {
        ui.reset();
        return nullptr;
    };
    MenuInterface& window = *ui;
    window.root->platformMouseDown(kLeftPress, {5, 5}, 0);
    window.root->platformMouseUp(kLeftPress, {5, 5}, 0);
    EXPECT_EQ(ui, nullptr);
}

class SwitchTest : public ControlsTest {
protected:
    SwitchTest() : slider(make<Switch>({0, 0, 120, 24})) {
        slider.style().setImages("SwitchTrackNormal", "SwitchTrackActive", "SwitchThumbNormal",
                                 "SwitchThumbActive");
    }
    Switch& slider;
};

TEST_F(SwitchTest, ThumbFollowsTheValueAlongEitherAxis) {
    slider.maximum = 10;
    EXPECT_FLOAT_EQ(slider.trackLength(), 100.0f) << "half a thumb of 20 at each end";
    const struct {
        int value;
        float middle;
    } cases[] = {{0, 10}, {5, 60}, {10, 110}};
    for (const auto& c : cases) {
        slider.value = c.value;
        EXPECT_FLOAT_EQ(slider.thumbPosition(), c.middle);
        EXPECT_EQ(slider.valueAtPoint({c.middle, 12}), c.value);
    }
    EXPECT_EQ(slider.valueAtPoint({-50, 0}), 0);
    slider.bounds = Rect{0, 0, 24, 124};
    slider.trackStart = 20.0f;
    EXPECT_TRUE(slider.isVertical());
    EXPECT_FLOAT_EQ(slider.thumbPosition(), 20.0f) << "the highest value is on top";
    EXPECT_EQ(slider.valueAtPoint({0, 112}), 0);
}

TEST_F(SwitchTest, FewStepsJumpToAClickAndManyAreDragged) {
    slider.maximum = 10;
    slider.defaultValue = 3;
    press({100, 12});
    EXPECT_EQ(slider.value, 0);
    release({100, 12});
    EXPECT_EQ(slider.value, 9) << "at the release";
    press({40, 12});
    release({40, 200});
    EXPECT_EQ(slider.value, 9) << "released elsewhere";
    press({100, 12}, modifier::kCtrl);
    release({100, 12});
    EXPECT_EQ(slider.value, 9) << "the reset is for what cannot be hit otherwise";

    slider.maximum = 4096;
    slider.defaultValue = 100;
    slider.value = 2048;
    take();
    press({100, 12});
    ui.advance(500);
    move({110, 12});
    EXPECT_GT(slider.value, 2048) << "from anywhere, relative to the press";
    release({110, 12});
    take();
    press({100, 12}, modifier::kCtrl);
    release({100, 12});
    EXPECT_THAT(take().back(), "end 100");
    turnWheel({50, 12}, 1);
    EXPECT_GT(slider.value, 100);
    EXPECT_FALSE(slider.isDraggingThumb());
}

TEST_F(ControlsTest, ValuesAreTypedOverTheirControl) {
    auto& knob = make<Knob>({100, 100, 158, 158});
    knob.style().setImages("KnobLarge");
    auto& entry = ui.make<ValueEntry>();
    entry.attach(knob);
    knob.takeFocus();
    key(Key::Return);
    auto* field = dynamic_cast<EditField*>(ui.root->focusedControl());
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->line().selected(), "0");
    EXPECT_EQ(field->windowBounds(), Rect::ofSize(93, 119, 72, 20));
    type("1234");
    key(Key::Backspace);
    key(Key::Return);
    EXPECT_THAT(take(), ElementsAre("begin 0", "change 123", "end 123"));
    EXPECT_EQ(ui.root->focusedControl(), &knob) << "the keyboard goes back";
    press({129, 130}, modifier::kDoubleClick);
    release({129, 130});
    type("77");
    key(Key::Escape);
    EXPECT_EQ(knob.value, 123);
    knob.takeFocus();
    key(Key::Return);
    type("88");
    click({5, 5});
    ui.drainRelay();
    EXPECT_EQ(knob.value, 88) << "a click beside takes it over";
    key(Key::Return);
    delete &knob;
    EXPECT_EQ(ui.root->focusedControl(), nullptr) << "the box goes with its control";
}

TEST_F(ControlsTest, FieldEditsWholeCharacters) {
    auto& field = make<EditField>({0, 0, 100, 20});
    field.takeFocus();
    field.line().setText("a\xC3\xA4\xE2\x82\xACz");
    key(Key::Left);
    key(Key::Backspace);
    EXPECT_EQ(field.line().text(), "a\xC3\xA4z");
    key(Key::Left, modifier::kShift);
    EXPECT_EQ(field.line().selected(), "\xC3\xA4");
    ui.root->platformKey({Key::Character, modifier::kCtrl, U'x'});
    EXPECT_EQ(field.line().text(), "az");
    key(Key::End);
    ui.root->platformKey({Key::Character, modifier::kCtrl, U'v'});
    ui.root->platformKey({Key::Character, 0, U'\x20AC'});
    EXPECT_EQ(field.line().text(), "az\xC3\xA4\xE2\x82\xAC");
    field.line().insert("x\n\ty");
    EXPECT_EQ(field.line().text(), "az\xC3\xA4\xE2\x82\xACxy") << "one line";
    key(Key::Home);
    key(Key::Delete);
    press({99, 10});
    move({0, 10});
    release({0, 10});
    EXPECT_EQ(field.line().selected(), field.line().text());
    EXPECT_FALSE(ui.root->platformKey({Key::Character, modifier::kCtrl, U's'})) << "the host's";
}

TEST_F(ControlsTest, PanelOpensByClickOrRestingPointer) {
    auto& button = make<PopupButton>({0, 0, 60, 40});
    auto& panel = make<Control>({0, 40, 100, 100});
    button.panel = &panel;
    button.popupHeight = 20;
    EXPECT_FALSE(panel.visible);
    click({5, 5});
    EXPECT_FALSE(panel.visible) << "the upper part is not hit";
    click({5, 25});
    EXPECT_TRUE(panel.visible);
    click({5, 25});
    EXPECT_FALSE(panel.visible);
    move({200, 200});

    button.popupBehavior = PopupButton::PopupBehavior::Hover;
    move({5, 25});
    ui.advance(149);
    EXPECT_FALSE(panel.visible);
    move({200, 200});
    ui.advance(300);
    EXPECT_FALSE(panel.visible) << "the pointer did not rest";
    move({5, 25});
    ui.advance(150);
    EXPECT_TRUE(panel.visible);
    move({50, 80});
    ui.advance(1000);
    EXPECT_TRUE(panel.visible) << "over the panel";
    move({200, 200});
    ui.advance(150);
    EXPECT_FALSE(panel.visible);
    ui.menuGuard().opened();
    ui.menuGuard().closed();
    move({5, 25});
    ui.advance(1000);
    EXPECT_FALSE(panel.visible) << "a menu has just closed here";
    delete &panel;
    click({5, 25});
}

TEST_F(ControlsTest, GridOfPicturesIsPickedFrom) {
    auto& select = make<ImageSelectButton>({380, 270, 400, 290});
    select.setPictures("DisplayIconsOff", "DisplayIconsOn", 5);
    select.columns = 3;
    EXPECT_EQ(select.maximum, 4);
    click({385, 275});
    ASSERT_NE(select.menu(), nullptr);
    take();
    const Rect last = select.menu()->cellBounds(4);
    EXPECT_EQ(last.width(), 24.0f);
    EXPECT_TRUE(ui.root->localBounds().contains({last.right, last.bottom})) << "within the window";
    click({last.left + 5, last.top + 5});
    EXPECT_THAT(take(), ElementsAre("begin 0", "change 4", "end 4"));
    ui.drainRelay();
    EXPECT_EQ(select.menu(), nullptr);
    EXPECT_EQ(ui.root->focusedControl(), &select);
    key(Key::Return);
    for (const Key step : {Key::Up, Key::Left, Key::Left, Key::Return}) key(step);
    EXPECT_EQ(select.value, 0);
    ui.drainRelay();
    key(Key::Return);
    key(Key::Down);
    key(Key::Escape);
    EXPECT_EQ(select.value, 0);
    click({5, 5});
    ui.drainRelay();
    EXPECT_EQ(select.menu(), nullptr);
}

TEST_F(ControlsTest, BarKeepsItsChildrenInARow) {
    auto& bar = make<ControlBar>({0, 0, 200, 30});
    bar.spacing = 4.0f;
    bar.margin = 10.0f;
    Control* children[3];
    for (Control*& child : children) {
        child = &ui.make<Control>();
        child->bounds = Rect::ofSize(0, 0, 20, 10);
        child->parent = &bar;
    }
    const auto lefts = [&] {
        return std::vector{children[0]->bounds.value().left, children[1]->bounds.value().left,
                           children[2]->bounds.value().left};
    };
    EXPECT_THAT(lefts(), ElementsAre(10, 34, 58));
    EXPECT_EQ(children[1]->bounds.value().top, 10) << "in the middle";
    children[0]->setWidth(40);
    EXPECT_THAT(lefts(), ElementsAre(10, 54, 78));
    children[1]->visible = false;
    EXPECT_EQ(children[2]->bounds.value().left, 54);
    bar.reverse = true;
    EXPECT_EQ(children[0]->bounds.value().right, 190);
    bar.setWidth(300);
    EXPECT_EQ(children[0]->bounds.value().right, 290);
    bar.layout = ControlBar::Layout::Column;
    EXPECT_EQ(children[0]->bounds.value(), Rect::ofSize(130, 10, 40, 10));
}

TEST_F(ControlsTest, LampFlashesForAMoment) {
    auto& light = make<Light>({0, 0, 14, 14});
    light.flash();
    ui.advance(60);
    light.flash();
    ui.advance(60);
    EXPECT_EQ(light.brightness(), 255) << "begun anew";
    ui.advance(40);
    EXPECT_EQ(light.brightness(), 0);
}

TEST_F(ControlsTest, BackdropGrowsWithItsRightPart) {
    EXPECT_THROW(ui.loadBackdrop("NoSuchPicture"), std::exception);
    ui.loadBackdrop("LightOn");  // 14 wide
    const auto picture = ui.picture();
    const auto column = [&](int x) {
        std::vector<Pixel> pixels;
        for (int y = 0; y < 14; ++y) pixels.push_back(picture->row(y)[x]);
        return pixels;
    };
    EXPECT_EQ(column(0), column(14));
    EXPECT_EQ(column(13), column(27));
    EXPECT_EQ(column(399), column(13)) << "the last part ends as the picture does";
    EXPECT_NE(column(6), column(0));
}

/// All controls in their states, painted first at scale 1, then as the window moves to a display of another.
class ControlPictures : public ::testing::TestWithParam<float> {
protected:
    ControlPictures() { ui.loadBackdrop("Background"); }
    template <typename Kind, typename... Arguments>
    Kind& place(float x, float y, float width, float height, Arguments&&... arguments) {
        auto& control = ui.make<Kind>(std::forward<Arguments>(arguments)...);
        control.bounds = Rect::ofSize(x, y, width, height);
        control.parent = ui.root;
        return control;
    }
    void expectLooks(const std::string& name) {
        ui.drainRelay();
        ui.picture();
        ui.setScale(GetParam());
        const auto picture = ui.picture();
        test::expectPicture(*picture, test::atScale(name, GetParam()), 1);
    }
    TestInterface ui{240.0f, 120.0f};
};

TEST_P(ControlPictures, Knobs) {
    auto& style = ui.make<Knob::Style>();
    style.setImages("KnobLarge");
    auto& atRest = place<Knob>(0, 0, 58, 58, nullptr, &style);
    atRest.value = 1024;
    auto& turned = place<Knob>(60, 0, 58, 58, nullptr, &style);
    turned.value = 4096;
    place<Knob>(120, 0, 58, 58, nullptr, &style).highlighted = true;
    auto& gripped = place<Knob>(180, 0, 58, 58, nullptr, &style);
    gripped.setNormalized(0.5f);
    ui.root->platformMouseDown(kLeftPress, {209, 12}, 0);
    EXPECT_EQ(gripped.dragMode(), Knob::Drag::Rotary);
    auto& small = ui.make<Knob::Style>();
    small.setImages("KnobSmall");
    place<Knob>(0, 60, 58, 58, nullptr, &small);
    place<Knob>(60, 60, 58, 58, nullptr, &small).alpha = 90;
    place<Knob>(120, 60, 58, 58, nullptr, &small).takeFocus();
    expectLooks("knobs");
}

TEST_P(ControlPictures, Buttons) {
    auto& bar = ui.make<Button::Style>();
    bar.textColor = Color{200, 200, 200, 255};
    bar.textAlignment = Alignment::Center;
    bar.loadKind("Bar", {}, "ButtonBarOn");
    place<Button>(0, 0, 70, 20, nullptr, &bar).setCaption("Normal");
    auto& active = place<Button>(80, 0, 70, 20, nullptr, &bar);
    active.setCaption("Active");
    active.highlighted = true;
    auto& down = place<Button>(160, 0, 70, 20, nullptr, &bar);
    down.setCaption("Down");
    auto& on = place<ToggleButton>(0, 30, 70, 20, nullptr, &bar);
    on.setCaption("On");
    on.value = 1;
    auto& row = place<Button>(80, 30, 150, 20, nullptr, &bar);
    row.lineCount = 3;
    row.lineSpacing = 12.0f;
    row.text(1).text = "two";
    row.text(2).text = "three";
    row.setCaption("one");
    auto& dark = ui.make<Button::Style>();
    dark.copyFrom(bar);
    dark.loadKind("Dark");
    dark.textColor = Color{230, 233, 240, 255};
    dark.textAlignment = Alignment::Left;
    dark.textOffset = 8.0f;
    dark.overlayAlignment = Alignment::Right;
    dark.overlayMargin = 5.0f;
    auto& select = place<SelectButton>(0, 60, 110, 20, nullptr, &dark);
    select.addItem("Transparent");
    select.setIcon("IconSelect");
    auto& lamp = ui.make<Button::Style>();
    lamp.loadImages({}, {}, {}, "ButtonToggleOff", "ButtonToggleRed");
    for (const bool isOn : {false, true}) {
        auto& toggle = place<ToggleButton>(isOn ? 150.0f : 120.0f, 62, 20, 16, nullptr, &lamp);
        toggle.setIcon("IconBypass");
        toggle.value = isOn;
    }
    auto& field = place<EditField>(0, 90, 110, 20);
    field.style().fontSize = 8.25f;
    field.line().setText("Some words to edit");
    field.takeFocus();
    for (int i = 0; i < 4; ++i) ui.root->platformKey({Key::Left, modifier::kShift, 0});
    ui.root->platformMouseDown(kLeftPress, {170, 10}, 0);
    field.takeFocus();
    expectLooks("buttons");
}

TEST_P(ControlPictures, SlidersAndLabels) {
    auto& style = ui.make<Switch::Style>();
    style.setImages("SwitchTrackNormal", "SwitchTrackActive", "SwitchThumbNormal", "SwitchThumbActive");
    place<Switch>(0, 0, 100, 24, nullptr, &style).setNormalized(0.3f);
    auto& active = place<Switch>(0, 28, 100, 24, nullptr, &style);
    active.setNormalized(1.0f);
    active.highlighted = true;
    auto& gain = ui.make<Switch::Style>();
    gain.setImages("GainSliderBackgroundNormal", "GainSliderBackgroundActive", "GainSliderButtonNormal",
                   "GainSliderButtonActive");
    place<Switch>(110, 0, 48, 116, nullptr, &gain).setNormalized(0.6f);
    auto& label = place<Label>(0, 56, 100, 20, "Shadowed");
    label.alignment = Alignment::Center;
    label.shadowColor = Color{0, 0, 0, 255};
    auto& lines = place<MultiLabel>(0, 78, 100, 40, 2);
    lines.setText(0, "Two lines,");
    lines.setText(1, "dimmed");
    lines.enabledLook = false;
    auto& tag = place<ImageLabel>(165, 4, 60, 16, "PeakLabelBackground");
    tag.text().text = "-0.3";
    auto& wide = place<Image>(165, 50, 70, 20);
    wide.stretchMode = Image::StretchMode::Stretched;
    wide.load("ButtonBarNormal");
    auto& lamp = ui.make<Light::Style>();
    lamp.setImages("LightOff", "LightOn");
    place<Light>(190, 30, 14, 14, nullptr, &lamp).on = true;
    place<Light>(210, 30, 14, 14, nullptr, &lamp);
    auto& shape = place<Shape>(165, 80, 30, 30);
    shape.gradient = Gradient(Color{0x83, 0x98, 0xEE, 255}, Color{0x2A, 0x34, 0x5C, 0});
    shape.borderColor = Color{0x41, 0x49, 0x58, 255};
    shape.borderWidth = 1.0f;
    auto& frame = place<Shape>(205, 80, 30, 30);
    frame.kind = Shape::Kind::Frame;
    frame.borderColor = Color{0x41, 0x49, 0x58, 255};
    frame.borderWidth = 2.0f;
    expectLooks("sliders");
}

INSTANTIATE_TEST_SUITE_P(Scales, ControlPictures, ::testing::Values(1.0f, 1.5f, 2.0f), [](const auto& scale) {
    return "At" + std::to_string(static_cast<int>(scale.param * 100));
});

}  // namespace
}  // namespace vanta::gui
