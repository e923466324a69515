#include "interface/controls/styles.hpp"

#include "gui/tree/user_interface.hpp"

namespace vanta::interface {
namespace {

using gui::Alignment;
using gui::ButtonLook;

struct ButtonRow {
    const char* family;
    bool hasOff = false;
    bool hasOn = false;
    Alignment text = Alignment::Center;
    ButtonLook::BackgroundStyle background = ButtonLook::BackgroundStyle::Stretched;
};

/// In the order of ButtonStyle.
constexpr ButtonRow kButtonTable[kButtonStyles] = {
    {.family = "Bar", .hasOn = true},
    {.family = "Hide"},
    {.family = "Dark", .text = Alignment::Left},
    {.family = "Advanced"},
    {.family = "Transparent"},
    {.family = "Meter", .hasOff = true, .hasOn = true},
    {.family = "Hover", .hasOn = true, .background = ButtonLook::BackgroundStyle::Centred},
    {.family = "Hotspots"},
    {.family = "CLFE"},
};

struct KnobRow {
    const char* family;
    float innerRadius;
    float outerRadius;
};

/// In the order of KnobStyle.
constexpr KnobRow kKnobTable[kKnobStyles] = {
    {"KnobLarge", 7.0f, 27.0f},
    {"KnobSmall", 7.0f, 27.0f},
    {"KnobExtraLarge", 19.0f, 42.0f},
};
constexpr float kKnobRingWidth = 30.0f;
constexpr float kValueTextOffset = 8.0f;
constexpr float kCaretMargin = 5.0f;

gui::Button::Style& makeButtonStyle(gui::UserInterface& ui, const ButtonRow& row) {
    auto& style = ui.make<gui::Button::Style>();
    const std::string name = std::string("Button") + row.family;
    style.textColor = kButtonTextColor;
    style.loadKind(row.family, row.hasOff ? name + "Off" : std::string(),
                   row.hasOn ? name + "On" : std::string());
    style.backgroundStyle = row.background;
    style.textAlignment = row.text;
    if (row.text == Alignment::Left) {
        style.textOffset = kValueTextOffset;
        style.overlayAlignment = Alignment::Right;
        style.overlayMargin = kCaretMargin;
    }
    return style;
}

}  // namespace

Styles::Styles(gui::UserInterface& ui)
    : light_(&ui.make<gui::Light::Style>()), gainSlider_(&ui.make<gui::Switch::Style>()) {
    for (std::size_t i = 0; i < buttons_.size(); ++i) buttons_[i] = &makeButtonStyle(ui, kButtonTable[i]);
    for (std::size_t i = 0; i < knobs_.size(); ++i) {
        knobs_[i] = &ui.make<gui::Knob::Style>();
        knobs_[i]->setImages(kKnobTable[i].family);
        knobs_[i]->ringWidth = kKnobRingWidth;
        knobs_[i]->innerRadius = kKnobTable[i].innerRadius;
        knobs_[i]->outerRadius = kKnobTable[i].outerRadius;
    }
    light_->setImages("LightOff.png", "LightOn.png");
    gainSlider_->setImages("GainSliderBackgroundNormal.png", "GainSliderBackgroundActive.png",
                           "GainSliderButtonNormal.png", "GainSliderButtonActive.png");
}

gui::Button::Style& Styles::makePictureStyle(gui::UserInterface& ui, const std::string& offImage,
                                             const std::string& onImage) {
    auto& style = ui.make<gui::Button::Style>();
    style.textColor = kButtonTextColor;
    style.loadImages({}, {}, {}, offImage, onImage);
    return style;
}

}  // namespace vanta::interface
