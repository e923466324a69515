#include "tests/gui/x11_fixture.hpp"

#include "foundation/resource.hpp"
#include "gui/artwork/artwork_resources.hpp"
#include "gui/controls/edit_field.hpp"
#include "gui/controls/knob.hpp"
#include "gui/controls/select_button.hpp"
#include "gui/controls/value_entry.hpp"

namespace vanta::gui {
namespace {

/// What a user does to controls in a window, at scale 2: all numbers of the pointer are twice those of the
/// page.
class X11ControlsTest : public X11Test {
protected:
    X11ControlsTest() {
        addResources(artworkResources());
        open(2.0f);
        auto& style = ui->make<Knob::Style>();
        style.setImages("KnobLarge");
        knob = &add<Knob>(Rect::ofSize(200.0f, 20.0f, 58.0f, 58.0f), nullptr, &style);
        knob->maximum = 10;
        settle(*ui);
    }
    template <typename Kind, typename... Arguments>
    Kind& add(const Rect& at, Arguments&&... arguments) {
        auto& control = ui->make<Kind>(std::forward<Arguments>(arguments)...);
        control.bounds = at;
        control.parent = &ui->rootControl();
        return control;
    }
    bool becomes(ValueControl& control, int value) {
        const bool came = runUntil(*ui, [&] { return control.value == value; });
        EXPECT_EQ(control.value, value);
        return came;
    }

    static constexpr int kKnobX = 458, kKnobY = 98;
    Knob* knob = nullptr;
};

TEST_F(X11ControlsTest, AKnobIsDraggedAndTurnedByTheWheelAndTheKeys) {
    server.movePointer(kKnobX, kKnobY);
    server.press();
    settle(*ui);
    const auto dragTo = [&](int y) {
        server.movePointer(kKnobX, y);
        settle(*ui);
    };
    for (int y = kKnobY; y > kKnobY - 200; y -= 20) dragTo(y);
    EXPECT_GE(knob->value, 2);
    for (int y = kKnobY - 200; y <= kKnobY; y += 20) dragTo(y);
    becomes(*knob, 0);
    server.release();
    server.click(4);
    becomes(*knob, 1);
    ASSERT_TRUE(runUntil(*ui, [&] { return !knob->isChanging(); })) << "the wheel's gesture ends by itself";
    knob->takeFocus();
    server.typeKey(XK_Up);
    becomes(*knob, 2);
    server.typeKey(XK_Home);
    becomes(*knob, 0);
}

TEST_F(X11ControlsTest, AValueIsTypedAfterADoubleClick) {
    auto& entry = ui->make<ValueEntry>();
    entry.attach(*knob);
    knob->value = 4;
    server.movePointer(kKnobX, kKnobY);
    server.click();
    server.click();
    ASSERT_TRUE(runUntil(
        *ui, [&] { return dynamic_cast<EditField*>(ui->rootControl().focusedControl()) != nullptr; }));
    settle(*ui);
    server.typeKey(XK_7);
    server.typeKey(XK_Return);
    becomes(*knob, 7);
    server.click();
    server.click();
    settle(*ui);
    server.typeKey(XK_2);
    server.typeKey(XK_Escape);
    settle(*ui);
    EXPECT_EQ(knob->value, 7);
    expectPictureOnScreen();
}

TEST_F(X11ControlsTest, AnItemIsPickedFromASelectButtonsMenu) {
    auto& select = add<SelectButton>(Rect::ofSize(170.0f, 100.0f, 100.0f, 20.0f));
    for (const char* item : {"Transparent", "Punchy", "Dynamic"}) select.addItem(item);
    settle(*ui);
    server.movePointer(400, 220);
    server.click();
    Script mouse(*ui, {[&] { server.movePointer(400, 320); }, [&] { server.click(); }});
    becomes(select, 1);
    server.movePointer(400, 220);
    server.click();
    Script keys(*ui, {[&] { server.typeKey(XK_d); }, [&] { server.typeKey(XK_Return); }});
    becomes(select, 2);
    settle(*ui);
    server.click(5);
    becomes(select, 1);
}

}  // namespace
}  // namespace vanta::gui
