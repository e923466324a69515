#include "interface/layout/display_buttons.hpp"

#include "gui/controls/picture.hpp"
#include "interface/hints/hint_texts.hpp"
#include "interface/layout/captions.hpp"

namespace vanta::interface {
namespace {

using gui::Rect;

constexpr int kModes = 5;
constexpr float kCell = 24.0f;
constexpr float kPanelMargin = 8.0f;
/// The upper part of the button lies below the bar's shadow and is not its own.
constexpr int kPopupHeight = 7;

/// "-48" for "-48 dB".
std::string shortScale(const std::string& name) {
    return name == "Loudness" ? "LUFS" : name.substr(0, name.find(" dB"));
}

/// One of the pictures of a strip.
class ModeCell final : public gui::Button {
public:
    ModeCell(gui::UserInterface& interface, gui::Animator* animatedBy, Style* sharedStyle, int mode)
        : Button(interface, animatedBy, sharedStyle),
          mode_(mode),
          off_(gui::loadPicture(interface, "DisplayIconsOff")),
          on_(gui::loadPicture(interface, "DisplayIconsOn")) {}

    bool takesFocus() const override { return true; }
    void paint(gui::Canvas& canvas) override {
        Button::paint(canvas);
        const gui::Bitmap& picture = on ? *on_ : *off_;
        canvas.drawBitmap(picture, localBounds(), gui::Point{kCell * static_cast<float>(mode_), 0.0f});
    }

private:
    int mode_;
    std::unique_ptr<gui::Bitmap> off_;
    std::unique_ptr<gui::Bitmap> on_;
};

}  // namespace

/// The five modes beside each other.
class DisplayButtons::ModePanel final : public gui::AnimatedControl {
public:
    ModePanel(gui::UserInterface& interface, gui::Animator* animatedBy)
        : AnimatedControl(interface, animatedBy), ground_(gui::loadPicture(interface, "PopupBackground")) {}

    void paint(gui::Canvas& canvas) override {
        canvas.drawStretched(*ground_, localBounds(), ground_->logicalRect());
    }

private:
    std::unique_ptr<gui::Bitmap> ground_;
};

DisplayButtons::DisplayButtons(const LayoutContext& context) : context_(context) {
    ControlFactory& factory = context.factory();
    group_ = &factory.add<gui::Control>(Rect::ofSize(0.0f, 0.0f, kWidth, kHeight));
    const ParentScope inGroup(factory, *group_);
    modeButton_ = &factory.add<gui::PopupButton>(
        Rect::ofSize(0.0f, 0.0f, 30.0f, kHeight), factory.animator(),
        &Styles::makePictureStyle(context.frame.ui(), "DisplayMenu.png", "DisplayMenu.png"));
    modeButton_->popupBehavior = gui::PopupButton::PopupBehavior::Hover;
    modeButton_->popupHeight = kPopupHeight;
    modeButton_->accessibleName = std::string("Display Mode");
    addTruePeakMetering(context, Rect::ofSize(30.0f, 0.0f, 30.0f, kHeight));
    addMeterScale(context, Rect::ofSize(60.0f, 0.0f, 118.0f, kHeight));

    modes_ = &factory.add<ModePanel>(
        Rect::ofSize(0.0f, 0.0f, kModes * kCell + 2.0f * kPanelMargin, kHeight + 2.0f * kPanelMargin),
        factory.animator());
    modes_->parent = &context.root();
    const ParentScope inPanel(factory, *modes_);
    choice_ = &factory.add<gui::ToggleButton>(Rect{}, factory.animator());
    choice_->visible = false;
    for (int mode = 0; mode < kModes; ++mode) {
        auto& cell = factory.add<ModeCell>(
            Rect::ofSize(kPanelMargin + kCell * static_cast<float>(mode), kPanelMargin, kCell, kHeight),
            factory.animator(), &context.frame.styles().button(ButtonStyle::Hide), mode);
        const std::string name = context.plugin.displayMode.text(static_cast<float>(mode));
        cell.hint = hintText("Display Mode: " + name);
        cell.accessibleName = name;
        choice_->addButton(cell);
        modeButton_->hotSpots.push_back({mode, cell.bounds});
    }
    context.bind(context.plugin.displayMode, *choice_);
    modeButton_->hint = choice_->hint.value();
    modeButton_->panel = modes_;
}

void DisplayButtons::place(gui::Point at) {
    group_->setPosition(at);
    modes_->setPosition({at.x - kPanelMargin, at.y + kHeight});
}

void DisplayButtons::follow(const ParameterChange& change) {
    const AbstractPluginParameter& mode = context_.plugin.displayMode;
    if (change.concerns(mode)) modeButton_->accessibleName = "Display Mode: " + mode.text(mode.value());
}

gui::ToggleButton& addTruePeakMetering(const LayoutContext& context, const Rect& at) {
    auto& button = context.factory().addButton<gui::ToggleButton>(at, ButtonStyle::Meter, "TP");
    button.text().color = kOnPictureColor;
    button.accessibleName = context.plugin.truePeakMetering.displayName;
    return context.bind(context.plugin.truePeakMetering, button);
}

gui::SelectButton& addMeterScale(const LayoutContext& context, const Rect& at, bool isNarrow) {
    gui::SelectButton& button = context.factory().addSelectButton(at, ButtonStyle::Meter);
    button.overlayAlignment = gui::Alignment::Right;
    button.overlayMargin = 4.0f;
    button.textOffset = kBesideCaret;
    button.text().color = kOnPictureColor;
    return context.bindChoice(context.plugin.meterScale, button, isNarrow ? &shortScale : nullptr);
}

}  // namespace vanta::interface
