#pragma once

#include "interface/layout/layout_context.hpp"

namespace vanta::interface {

/// The two knobs of the channel link, and in surround the switches of centre and low-frequency channel.
class ChannelLinkGroup {
public:
    /// Bound, in the factory's parent.
    ChannelLinkGroup(const LayoutContext& context, gui::Point at);

    /// The channels have another layout.
    void follow();

    gui::Knob& transients() const { return *knobs_[0]; }
    gui::Knob& release() const { return *knobs_[1]; }
    gui::ToggleButton& center() const { return *switches_[0]; }
    gui::ToggleButton& lfe() const { return *switches_[1]; }

private:
    void useCurves(gui::Knob& knob, const AbstractPluginParameter& parameter, bool linksPairsOnly) const;

    const LayoutContext& context_;
    gui::Image* captions_;
    std::array<gui::Knob*, 2> knobs_{};
    std::array<gui::ToggleButton*, 2> switches_{};
};

}  // namespace vanta::interface
