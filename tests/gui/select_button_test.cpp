#include "gui/controls/select_button.hpp"
#include "gui/controls/image_select_button.hpp"
#include "gui/controls/popup_button.hpp"
#include "tests/gui/controls_fixture.hpp"

namespace vanta::gui {
namespace {

using ::testing::ElementsAre;

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

}  // namespace
}  // namespace vanta::gui
