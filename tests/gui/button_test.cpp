#include "gui/controls/button.hpp"
#include "gui/animation/animator.hpp"
#include "gui/controls/toggle_button.hpp"
#include "tests/gui/controls_fixture.hpp"

namespace vanta::gui {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Log = std::vector<std::string>;

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

}  // namespace
}  // namespace vanta::gui
