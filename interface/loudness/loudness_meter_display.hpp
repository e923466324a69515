#pragma once

#include "interface/meters/level_meter_display.hpp"

namespace vanta::interface {

/// Momentary, Short Term and Integrated loudness, sources 0 to 2: the chosen one as a wide bar, the others
/// beside it, and a line at the target.
class LoudnessMeterDisplay final : public LevelMeterDisplay {
public:
    static constexpr float kWideBar = 32.0f;
    static constexpr float kBreadth = 48.0f;

    using LevelMeterDisplay::LevelMeterDisplay;

    /// The source of the wide bar.
    Property<int> chosen{this, 0};
    /// LUFS.
    Property<float> target{this, 0.0f};

    int channelGroup(int channel) const override { return channel; }
    int barPosition(int bar) const override;
    int channelOrder(int bar) const override;
    void propertyChanged(AbstractProperty& property) override;
    void paint(gui::Canvas& canvas) override;
};

}  // namespace vanta::interface
