#include "interface/layout/regular_form.hpp"

#include <fmt/format.h>

#include "interface/controls/position_curves.hpp"
#include "interface/hints/hint_texts.hpp"

namespace vanta::interface {
namespace {

using gui::Rect;

constexpr float kGainLeft = 6.0f;  ///< from the left margin
constexpr float kGainTop = 16.0f;
constexpr float kGainWidth = 48.0f;
constexpr float kGainHeight = 296.0f;
constexpr gui::Point kGainLabel{12.0f, 310.0f};  ///< x from the slider
constexpr float kButtonsTop = 46.0f;
constexpr float kButtonsGap = 6.0f;  ///< to the meters
constexpr float kCardGap = 2.0f;     ///< to the advanced panel

}  // namespace

RegularForm::RegularForm(const LayoutContext& context)
    : Component(context.frame.ui()),
      context_(context),
      parent_(context.factory().parent),
      display_(&makeDisplay()),
      scale_(*parent_, *display_),
      panel_(&makePanel()),
      advanced_(context),
      card_(context),
      gain_(&makeGain()),
      gainLabel_(&context.factory().addImage(kGainLabel, "GainLabel.png")),
      buttons_(context) {
    gainLabel_->hitThreshold = 255;
    panel_->onResize.addHandler(this, &RegularForm::panelResized);
    link(*this, *panel_);
    setSampleRate(context.plugin.sampleRate());
}

RegularForm::~RegularForm() {
    if (panel_) panel_->onResize.removeHandler(this, &RegularForm::panelResized);
}

void RegularForm::linkRemoved(Component* other) {
    if (other == static_cast<Component*>(panel_)) panel_ = nullptr;
}

LimiterDisplay& RegularForm::makeDisplay() const {
    auto& display = context_.factory().add<LimiterDisplay>(
        Rect::ofSize(0.0f, 0.0f, kWidth, kHeight), context_.factory().animator(), context_.plugin.levels());
    display.hint = hintText("Level Display");
    display.accessibleName = std::string("Level Display");
    return display;
}

VantaMeterPanel& RegularForm::makePanel() {
    auto& panel = context_.frame.ui().make<VantaMeterPanel>(
        *parent_, context_.meters, context_.factory().animator(), VantaMeterPanel::Form::Regular);
    panel.setMainScale(display_, {&scale_.grid(), &display_->grid()});
    return panel;
}

GainSlider& RegularForm::makeGain() const {
    auto& slider = context_.factory().add<GainSlider>(
        Rect::ofSize(kGainLeft, kGainTop, kGainWidth, kGainHeight), context_.factory().animator(),
        context_.frame.styles().gainSlider());
    slider.toNormal = &gainToNormal;
    slider.fromNormal = &gainFromNormal;
    return context_.bind(context_.plugin.gain, slider);
}

void RegularForm::layOut() {
    const float margin = leftMargin(context_.root().localBounds().width());
    gain_->setLeft(margin + kGainLeft);
    gainLabel_->setLeft(margin + kGainLeft + kGainLabel.x);
    advanced_.place();
    placeDisplay();
}

void RegularForm::panelResized(void*) {
    placeDisplay();
}

/// The picture ends where the meters begin, and so do scale and buttons. A small window has no room for the
/// meters of many channels beside the advanced panel: what would lie below it makes way.
void RegularForm::placeDisplay() {
    const Rect& all = parent_->localBounds();
    const float right = panel_->bounds.value().left;
    // The loudness meter opens beside the card, so that nothing of it moves.
    const bool hasLoudness =
        static_cast<MeterScale>(context_.plugin.meterScale.currentIndex()) == MeterScale::Loudness;
    const float meters = all.right - panel_->fittingWidth();
    std::vector<Rect> taken = advanced_.covered();
    card_.place(meters + (hasLoudness ? VantaMeterPanel::kLoudnessWidth : 0.0f),
                taken.empty() ? 0.0f : taken.back().right + kCardGap);
    const bool meetsLoudness = hasLoudness && !taken.empty() && meters < taken.front().right;
    panel_->keepOffBottom(meetsLoudness ? AdvancedPanel::kHeight : 0.0f);
    panel_->keepReadableBeside(card_.isOverMeters() ? card_.bounds() : Rect{});
    display_->setBounds({0.0f, 0.0f, right, all.height()});
    scale_.place(right, all.height());
    buttons_.place({right - DisplayButtons::kWidth - kButtonsGap, kButtonsTop});
    taken.insert(taken.end(), {buttons_.group().bounds, card_.bounds()});
    scale_.keepClear(taken);
    followDisplay({-1});
}

void RegularForm::followDisplay(const ParameterChange& change) {
    const VantaPlugin& plugin = context_.plugin;
    const auto mode = static_cast<DisplayMode>(plugin.displayMode.currentIndex());
    if (change.concerns(plugin.displayMode)) display_->setMode(mode, context_.root().localBounds().width());
    if (change.concerns(plugin.meterScale, plugin.loudnessTimeScale))
        display_->showSlowLevel(static_cast<MeterScale>(plugin.meterScale.currentIndex()),
                                static_cast<ProgrammeLevel>(plugin.loudnessTimeScale.currentIndex()));
    const bool isShown = mode != DisplayMode::Off && !plugin.bypass.mapped();
    if (isShown != std::exchange(isPictureShown_, isShown)) display_->showPicture(isShown);
}

void RegularForm::follow(const ParameterChange& change) {
    panel_->parameterChanged(change.index);
    followDisplay(change);
    advanced_.follow(change);
    if (change.concerns(context_.plugin.showAdvanced)) placeDisplay();
    card_.follow(change);
    buttons_.follow(change);
    if (change.concerns(context_.plugin.gain))
        gain_->caption().text = fmt::format("{:.1f}", context_.plugin.gain.value());
}

void RegularForm::channelLayoutChanged() {
    advanced_.channelLayoutChanged();
    panel_->channelLayoutChanged();
    placeDisplay();
}

}  // namespace vanta::interface
