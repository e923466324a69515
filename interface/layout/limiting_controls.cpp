#include "interface/layout/limiting_controls.hpp"

namespace vanta::interface {
namespace {

/// Has times of its own.
constexpr std::string_view kFixedStyle = "Safe";

}  // namespace

LimitingControls::LimitingControls(const LayoutContext& context, const Places& places)
    : context_(context),
      style_(&context.factory().addSelectButton(places.style)),
      lookahead_(&context.factory().addKnob(places.lookahead, KnobStyle::Large)),
      attack_(&context.factory().addKnob(places.attack, KnobStyle::Large)) {
    style_->text().fontName = std::string("Inter Medium");
    style_->text().color = kValueColor;
    context.bindChoice(context.plugin.style, *style_);
    context.bind(context.plugin.lookahead, *lookahead_);
    context.bind(context.plugin.attack, *attack_);
    context.bind(context.plugin.release, context.factory().addKnob(places.release, KnobStyle::Large));
}

void LimitingControls::follow(const ParameterChange& change) {
    const AbstractPluginParameter& style = context_.plugin.style;
    if (!change.concerns(style)) return;
    const bool hasTimes = style.text(style.value()) != kFixedStyle;
    for (gui::Knob* knob : {lookahead_, attack_}) {
        knob->enabled = hasTimes;
        knob->alpha = hasTimes ? 255 : kDisabledAlpha;
    }
}

}  // namespace vanta::interface
