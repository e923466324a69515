#include "interface/layout/dither_menu.hpp"

#include <fmt/format.h>

#include "gui/controls/picture.hpp"
#include "interface/hints/hint_texts.hpp"
#include "interface/layout/captions.hpp"

namespace vanta::interface {
namespace {

using gui::Rect;

constexpr float kPanelWidth = 140.0f;
constexpr float kPanelHeight = 110.0f;
constexpr float kBottomBar = 27.0f;
/// Of the bytes that a colour that is multiplied by another leaves.
constexpr int kOffAlpha = 64;
constexpr float kOffMargin = 10.0f;
constexpr float kOnMargin = 5.0f;

/// From the edges of the ground's picture to its plate: left, top, right, bottom.
constexpr gui::Rect kGroundShadow{6.0f, 4.0f, 6.0f, 14.0f};

/// Opaque, as what lies below is in motion or full of controls. The plate fills it, without its shadow, and
/// goes on behind the bottom bar.
class DitherPanel final : public gui::AnimatedControl {
public:
    DitherPanel(gui::UserInterface& interface, gui::Animator* animatedBy)
        : AnimatedControl(interface, animatedBy), ground_(gui::loadPicture(interface, "PopupBackground")) {}

    void paint(gui::Canvas& canvas) override {
        const Rect& all = localBounds();
        const Rect around{all.left - kGroundShadow.left, all.top - kGroundShadow.top,
                          all.right + kGroundShadow.right, all.bottom + kGroundShadow.bottom};
        canvas.drawStretched(*ground_, around, ground_->logicalRect());
    }

private:
    std::unique_ptr<gui::Bitmap> ground_;
};

}  // namespace

DitherMenu::DitherMenu(const LayoutContext& context) : context_(context) {
    ControlFactory& factory = context.factory();
    button_ =
        &factory.addButton<gui::PopupButton>(Rect::ofSize(0.0f, 0.0f, kWidth, 20.0f), ButtonStyle::Dark);
    button_->setIcon("IconSelect.png");
    button_->hint = hintText("Dither Menu");
    button_->accessibleName = std::string("Dither");

    panel_ =
        &factory.add<DitherPanel>(Rect::ofSize(0.0f, 0.0f, kPanelWidth, kPanelHeight), factory.animator());
    panel_->parent = &context.root();
    const ParentScope inPanel(factory, *panel_);
    gui::Image& ground = factory.addImage({}, "DitherPanel.png");
    ground.alpha = 128;
    const auto addChoice = [&](int row, const AbstractPluginParameter& parameter) -> gui::SelectButton& {
        const float top = 46.0f * static_cast<float>(row);
        addCaption(factory, {21.0f, 31.0f + top}, row == 0 ? "DITHER" : "NOISE SHAPING",
                   gui::Alignment::Left);
        return context_.bindChoice(parameter,
                                   factory.addSelectButton(Rect::ofSize(21.0f, 37.0f + top, 98.0f, 20.0f)));
    };
    addChoice(0, context.plugin.dithering);
    noiseShaping_ = &addChoice(1, context.plugin.noiseShaping);
    noiseShaping_->hitThreshold = 0;  // also while it is dimmed
    button_->panel = panel_;
}

std::string DitherMenu::caption() const {
    const int bits = VantaParameters::ditherBits(context_.plugin.dithering.currentIndex());
    if (bits == 0) return "Off";
    const AbstractPluginParameter& shaping = context_.plugin.noiseShaping;
    return fmt::format("{}{} ({})", bits, isCompact_ ? "" : " Bits",
                       shaping.text(shaping.value()).substr(0, 1));
}

void DitherMenu::follow() {
    const bool isOn = context_.plugin.dithering.currentIndex() > 0;
    button_->setCaption(caption());
    button_->textOffset = isOn ? kOnMargin + 3.0f : kOffMargin;
    button_->textOverrideAlpha = isOn ? -1 : kOffAlpha;
    noiseShaping_->alpha = isOn ? 255 : kDisabledAlpha;
}

void DitherMenu::setForm(bool isCompact) {
    isCompact_ = isCompact;
    button_->setWidth(isCompact ? kWidthInCompact : kWidth);
    follow();
}

void DitherMenu::place() {
    const Rect at = button_->windowBounds();
    const float middle = (at.left + at.right) / 2.0f;
    panel_->setPosition({std::floor(middle - kPanelWidth / 2.0f),
                         context_.root().content().height() - kBottomBar - kPanelHeight});
}

}  // namespace vanta::interface
