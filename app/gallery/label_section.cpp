#include "app/gallery/section.hpp"
#include "gui/controls/edit_field.hpp"
#include "gui/controls/image.hpp"
#include "gui/controls/light.hpp"
#include "gui/controls/shape.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gallery {
namespace {

void addTexts(const Workshop& shop, gui::Point at) {
    const struct {
        gui::Alignment alignment;
        const char* text;
        float points;
        gui::Color color;
    } rows[] = {{gui::Alignment::Left, "Left, 11 pixels", 8.25f, kValue},
                {gui::Alignment::Center, "Centre, 10 pixels", 7.5f, kCaption},
                {gui::Alignment::Right, "Right, 18 pixels", 13.5f, kValue}};
    float y = at.y;
    for (const auto& row : rows) {
        auto& label = shop.ui().make<gui::Label>(row.text);
        label.style().fontSize = row.points;
        label.textColor = row.color;
        label.shadowColor = gui::Color{0, 0, 0, 180};
        label.alignment = row.alignment;
        label.bounds = gui::Rect::ofSize(at.x, y, 180.0f, 24.0f);
        label.parent = &shop.parent;
        y += 24.0f;
    }
}

void addLights(const Workshop& shop, gui::Point at) {
    auto& style = shop.ui().make<gui::Light::Style>();
    style.setImages("LightOff", "LightOn");
    for (const bool on : {false, true}) {
        auto& light = shop.ui().make<gui::Light>(shop.animator, &style);
        light.on = on;
        light.bounds = gui::Rect::ofSize(at.x + (on ? 18.0f : 0.0f), at.y, 14.0f, 14.0f);
        light.parent = &shop.parent;
    }
    auto& shade = shop.ui().make<gui::Shape>();
    shade.gradient = gui::Gradient(gui::Color::of(0xFFEE9883), gui::Color::of(0x00EE9883));
    shade.direction = gui::Shape::Direction::Right;
    shade.bounds = gui::Rect::ofSize(at.x + 40.0f, at.y, 80.0f, 14.0f);
    shade.parent = &shop.parent;
}

}  // namespace

void addLabels(const Workshop& shop, gui::Point at) {
    addTexts(shop, at);
    auto& several = shop.ui().make<gui::MultiLabel>(3);
    several.setText(0, "Several lines");
    several.setText(1, "in one style,");
    several.setText(2, "dimmed");
    several.enabledLook = false;
    several.bounds = gui::Rect::ofSize(at.x + 200.0f, at.y, 90.0f, 60.0f);
    several.parent = &shop.parent;

    auto& tag = shop.ui().make<gui::ImageLabel>("PeakLabelBackground");
    tag.text().text = "-3.3 dB";
    tag.bounds = gui::Rect::ofSize(at.x + 300.0f, at.y + 4.0f, 48.0f, 16.0f);
    tag.parent = &shop.parent;
    auto& wide = shop.ui().make<gui::ImageLabel>("MidiLearnLabel");
    wide.text().text = "A wider tag";
    wide.bounds = gui::Rect::ofSize(at.x + 300.0f, at.y + 28.0f, wide.fittingWidth(), 20.0f);
    wide.parent = &shop.parent;

    addCaption(shop, "Text", gui::Rect::ofSize(at.x + 390.0f, at.y - 10.0f, 100.0f, 14.0f));
    auto& field = shop.ui().make<gui::EditField>();
    field.style().fontSize = 8.25f;
    field.line().setText("Typed into");
    field.bounds = gui::Rect::ofSize(at.x + 390.0f, at.y + 6.0f, 120.0f, 20.0f);
    field.parent = &shop.parent;
    addLights(shop, {at.x + 390.0f, at.y + 40.0f});
}

}  // namespace vanta::gallery
