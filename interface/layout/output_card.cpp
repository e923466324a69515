#include "interface/layout/output_card.hpp"

#include <algorithm>

#include "interface/controls/position_curves.hpp"
#include "interface/layout/captions.hpp"

namespace vanta::interface {
namespace {

using gui::Rect;

constexpr gui::Point kCard{627.0f, 347.0f};
constexpr float kWidth = 110.0f;
constexpr float kHeight = 106.0f;
constexpr float kBesideMeters = 109.0f;  ///< from its left to the level meters
constexpr int kBackdropAlpha = 80;
constexpr int kOverMetersAlpha = 255;
constexpr float kValuePoints = 9.0f;

}  // namespace

OutputCard::OutputCard(const LayoutContext& context)
    : context_(context),
      backdrop_(&context.factory().addImage(kCard, "BottomBackgroundLarge.png")),
      card_(&context.factory().add<gui::Control>(Rect::ofSize(kCard.x, kCard.y, kWidth, kHeight))) {
    backdrop_->alpha = kBackdropAlpha;
    for (gui::Control* control : {static_cast<gui::Control*>(backdrop_), card_})
        control->anchor = gui::anchor::kRight | gui::anchor::kBottom;
    ControlFactory& factory = context.factory();
    const ParentScope onCard(factory, *card_);
    addCaption(factory, {8.0f, 15.0f}, "OUT", gui::Alignment::Left);
    value_ = &factory.addLabel(Rect::ofSize(31.0f, 1.0f, 66.0f, 20.0f), {}, gui::Alignment::Right);
    value_->style().fontName = std::string(kSemiBold);
    value_->style().fontSize = kValuePoints;
    value_->textColor = gui::Color{255, 255, 255, 255};
    knob_ = &factory.addKnob({21.0f, 21.0f}, KnobStyle::Large);
    knob_->toNormal = &levelToNormal;
    knob_->fromNormal = &levelFromNormal;
    knob_->hitThreshold = 0;  // also while it is dimmed
    context.bind(context.plugin.outputLevel, *knob_);
    OutputToggles(context, {8.0f, 88.0f}).bind();
}

void OutputCard::place(float right, float clearOf) {
    const float left = std::max(right - kBesideMeters, clearOf);
    // Its letters and knob could not be told from the bars and letters of meters.
    isOverMeters_ = left > right - kBesideMeters;
    backdrop_->alpha = isOverMeters_ ? kOverMetersAlpha : kBackdropAlpha;
    backdrop_->setLeft(left);
    card_->setLeft(left);
}

void OutputCard::follow(const ParameterChange& change) {
    const VantaPlugin& plugin = context_.plugin;
    if (change.concerns(plugin.outputLevel, plugin.truePeakLimiting))
        value_->setText(shortOutputLevel(plugin));
    if (!change.concerns(plugin.unityGain)) return;
    // The level of the output is not what is heard.
    const int alpha = plugin.unityGain.mapped() ? kDisabledAlpha : 255;
    knob_->alpha = alpha;
    value_->alpha = alpha;
}

}  // namespace vanta::interface
