#include "gui/controls/button.hpp"
#include "gui/controls/edit_field.hpp"
#include "gui/controls/image.hpp"
#include "gui/controls/knob.hpp"
#include "gui/controls/label.hpp"
#include "gui/controls/light.hpp"
#include "gui/controls/message_dialog.hpp"
#include "gui/controls/select_button.hpp"
#include "gui/controls/shape.hpp"
#include "gui/controls/switch.hpp"
#include "gui/controls/toggle_button.hpp"
#include "tests/gui/controls_fixture.hpp"
#include "tests/gui/pictures.hpp"

namespace vanta::gui {
namespace {

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

TEST_P(ControlPictures, Messages) {
    ui.root->bounds = Rect{0.0f, 0.0f, 420.0f, 230.0f};
    const MessageDialog dialog(ui, "Confirmation",
                               "A message of more than one line breaks where its panel ends, and what cannot "
                               "be undone says so: do you want to go on?",
                               true);
    expectLooks("messages");
}

INSTANTIATE_TEST_SUITE_P(Scales, ControlPictures, ::testing::Values(1.0f, 1.5f, 2.0f), [](const auto& scale) {
    return "At" + std::to_string(static_cast<int>(scale.param * 100));
});

}  // namespace
}  // namespace vanta::gui
