#include "interface/layout/compact_form.hpp"

#include "interface/controls/position_curves.hpp"
#include "interface/layout/captions.hpp"
#include "interface/layout/display_buttons.hpp"

namespace vanta::interface {
namespace {

using gui::Rect;

constexpr int kDecimals = 2;
constexpr float kStep = 0.1f;
constexpr float kDragScale = 0.01f;
constexpr float kValuePoints = 9.75f;
constexpr float kValueBase = 153.0f;  ///< the middle of both numbers

}  // namespace

CompactForm::CompactForm(const LayoutContext& context, BottomBar& bottomBar)
    : context_(context),
      limiting_(context, {.style = Rect::ofSize(205.0f, 46.0f, 96.0f, 20.0f),
                          .lookahead = {145.0f, 76.0f},
                          .attack = {224.0f, 76.0f},
                          .release = {303.0f, 76.0f}}),
      channelLink_(context, {396.0f, 75.0f}) {
    ControlFactory& factory = context.factory();
    limiting_.style().textAlignment = gui::Alignment::Center;
    limiting_.style().textOffset = kBesideCaret;
    addLevels();
    addCaption(factory, {62.0f, 138.0f}, "GAIN");
    addCaption(factory, {585.0f, 138.0f}, "OUTPUT");
    addCaption(factory, {197.0f, 60.0f}, "STYLE", gui::Alignment::Right);
    addCaption(factory, {174.0f, 150.0f}, "LOOKAHEAD");
    addCaption(factory, {253.0f, 150.0f}, "ATTACK");
    addCaption(factory, {332.0f, 150.0f}, "RELEASE");
    addCaption(factory, {457.0f, 60.0f}, "CHANNEL LINK");
    bottomBar.toggles().bind();
    panel_ = &context.frame.ui().make<VantaMeterPanel>(*factory.parent, context.meters, factory.animator(),
                                                       VantaMeterPanel::Form::Compact);
    addTruePeakMetering(context, Rect::ofSize(8.0f, 211.0f, 34.0f, 20.0f));
    gui::SelectButton& scale = addMeterScale(context, Rect::ofSize(606.0f, 211.0f, 46.0f, 20.0f), true);
    scale.text().fontSize = 7.5f;
    // No number of the scale below it.
    const gui::Point origin = panel_->gridControl()->bounds.value().origin();
    panel_->gridControl()->grid().exclusions =
        std::vector{scale.bounds.value().translated({-origin.x, -origin.y})};
}

CompactForm::~CompactForm() {
    panel_ = nullptr;
}

void CompactForm::addLevels() {
    ControlFactory& factory = context_.factory();
    gui::Knob& gain = factory.addKnob({18.0f, 48.0f}, KnobStyle::ExtraLarge);
    gain.toNormal = &gainToNormal;
    gain.fromNormal = &gainFromNormal;
    context_.bind(context_.plugin.gain, gain);
    output_ = &factory.addKnob({541.0f, 48.0f}, KnobStyle::ExtraLarge);
    output_->toNormal = &levelToNormal;
    output_->fromNormal = &levelFromNormal;
    output_->hitThreshold = 0;  // also while it is dimmed
    context_.bind(context_.plugin.outputLevel, *output_);
    unit_ = &factory.addImage({543.0f, 142.0f}, "OutputLevelLabelsDBTP.png");
    gainValue_ = &addValue(context_.plugin.gain, 62.0f);
    outputValue_ = &addValue(context_.plugin.outputLevel, 593.0f);
}

FloatValueLabel& CompactForm::addValue(const AbstractPluginParameter& parameter, float middle) {
    auto& label = context_.factory().add<FloatValueLabel>(
        Rect::ofSize(middle - 32.0f, kValueBase - 10.0f, 64.0f, 20.0f), context_.frame.gestures(), parameter);
    label.precision = kDecimals;
    label.step = kStep;
    label.dragScale = kDragScale;
    label.style().fontName = std::string(kSemiBold);
    label.style().fontSize = kValuePoints;
    return label;
}

void CompactForm::follow(const ParameterChange& change) {
    const VantaPlugin& plugin = context_.plugin;
    panel_->parameterChanged(change.index);
    limiting_.follow(change);
    if (change.concerns(plugin.gain)) gainValue_->refresh();
    if (change.concerns(plugin.outputLevel)) outputValue_->refresh();
    if (change.concerns(plugin.truePeakLimiting))
        unit_->load(plugin.truePeakLimiting.mapped() ? "OutputLevelLabelsDBTP.png"
                                                     : "OutputLevelLabelsDB.png");
    if (!change.concerns(plugin.unityGain)) return;
    const int alpha = plugin.unityGain.mapped() ? kDisabledAlpha : 255;
    for (gui::Control* control :
         {static_cast<gui::Control*>(output_), static_cast<gui::Control*>(outputValue_)})
        control->alpha = alpha;
}

void CompactForm::channelLayoutChanged() {
    channelLink_.follow();
    panel_->channelLayoutChanged();
}

}  // namespace vanta::interface
