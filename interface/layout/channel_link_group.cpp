#include "interface/layout/channel_link_group.hpp"

#include "interface/controls/position_curves.hpp"

namespace vanta::interface {
namespace {

using gui::Rect;

constexpr int kStereo = 2;

}  // namespace

ChannelLinkGroup::ChannelLinkGroup(const LayoutContext& context, gui::Point at)
    : context_(context), captions_(&context.factory().addImage(at, "StereoLinkLabelsNormal.png")) {
    ControlFactory& factory = context.factory();
    const VantaPlugin& plugin = context.plugin;
    captions_->hitThreshold = 255;
    knobs_[0] = &factory.addKnob({at.x + 2.0f, at.y + 17.0f}, KnobStyle::Small);
    knobs_[1] = &factory.addKnob({at.x + 63.0f, at.y + 17.0f}, KnobStyle::Small);
    const auto addSwitch = [&](float x, const std::string& name) {
        auto& style = context.frame.ui().make<gui::Button::Style>();
        style.loadKind("CLFE", "Button" + name + "Off", "Button" + name + "On");
        auto& made = factory.add<gui::ToggleButton>(Rect::ofSize(at.x + x, at.y + 76.0f, 28.0f, 16.0f),
                                                    factory.animator(), &style);
        return &made;
    };
    switches_[0] = addSwitch(32.0f, "C");
    switches_[1] = addSwitch(63.0f, "LFE");
    follow();
    context.bind(plugin.channelLinkCenter, *switches_[0]);
    context.bind(plugin.channelLinkLfe, *switches_[1]);
}

/// With a single pair the second half of the range, which links all pairs, has nothing to do.
void ChannelLinkGroup::useCurves(gui::Knob& knob, const AbstractPluginParameter& parameter,
                                 bool linksPairsOnly) const {
    knob.toNormal = linksPairsOnly ? &halfToNormal : nullptr;
    knob.fromNormal = linksPairsOnly ? &halfFromNormal : nullptr;
    context_.bind(parameter, knob);
}

void ChannelLinkGroup::follow() {
    const ChannelLayout layout = context_.plugin.channelLayout;
    const bool isSurround = channelCount(layout) > kStereo;
    captions_->load(isSurround ? "StereoLinkLabelsSurround.png" : "StereoLinkLabelsNormal.png");
    useCurves(*knobs_[0], context_.plugin.channelLinkTransients, !isSurround);
    useCurves(*knobs_[1], context_.plugin.channelLinkRelease, !isSurround);
    switches_[0]->visible = isSurround;
    switches_[1]->visible = isSurround;
}

}  // namespace vanta::interface
