#pragma once

#include "interface/controls/float_value_label.hpp"
#include "interface/layout/bottom_bar.hpp"
#include "interface/layout/channel_link_group.hpp"
#include "interface/layout/interface_form.hpp"
#include "interface/layout/limiting_controls.hpp"
#include "interface/loudness/vanta_meter_panel.hpp"

namespace vanta::interface {

/// A fixed strip of controls with lying meters, without a display.
class CompactForm final : public InterfaceForm {
public:
    /// In the factory's parent.
    CompactForm(const LayoutContext& context, BottomBar& bottomBar);
    ~CompactForm() override;

    bool isCompact() const override { return true; }
    void layOut() override {}
    void follow(const ParameterChange& change) override;
    void channelLayoutChanged() override;

private:
    FloatValueLabel& addValue(const AbstractPluginParameter& parameter, float middle);
    void addLevels();

    const LayoutContext& context_;
    LimitingControls limiting_;
    ChannelLinkGroup channelLink_;
    gui::Knob* output_ = nullptr;
    gui::Image* unit_ = nullptr;
    FloatValueLabel* gainValue_ = nullptr;
    FloatValueLabel* outputValue_ = nullptr;
    VantaMeterPanel* panel_ = nullptr;
};

}  // namespace vanta::interface
