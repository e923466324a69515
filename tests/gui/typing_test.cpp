#include "gui/controls/edit_field.hpp"
#include "gui/controls/knob.hpp"
#include "gui/controls/value_entry.hpp"
#include "tests/gui/controls_fixture.hpp"

namespace vanta::gui {
namespace {

using ::testing::ElementsAre;

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

TEST_F(ControlsTest, CaretBlinksUntilNobodyHasTypedForLong) {
    auto& field = make<EditField>({10, 10, 90, 30});
    field.takeFocus();
    const auto seen = [&] {
        const auto picture = ui.picture();
        return std::vector<Pixel>(picture->row(20), picture->row(21));
    };
    const auto shown = seen();
    ui.advance(530);
    const auto hidden = seen();
    EXPECT_NE(hidden, shown);
    ui.advance(530);
    EXPECT_EQ(seen(), shown);
    ui.advance(500);
    key(Key::Left);
    ui.advance(500);
    EXPECT_EQ(seen(), shown) << "shown anew by a key";
    ui.advance(60000);
    EXPECT_EQ(seen(), shown);
    ui.root->takeDirtyRect();
    ui.advance(60000);
    EXPECT_TRUE(ui.root->dirtyRect().isEmpty()) << "an interface at rest paints nothing";
}

}  // namespace
}  // namespace vanta::gui
