#pragma once

#include "interface/display/level_time_display.hpp"
#include "interface/meters/meter_scale.hpp"
#include "limiter/parameters/meter_order.hpp"
#include "plugin/metering/level_exchange.hpp"

namespace vanta::interface {

/// How the display moves, in the order in which users choose it.
enum class DisplayMode { SlowDown, Fast, Slow, Infinite, Off };

/// What the limiter does to the sound: input and output level, gain reduction with its peaks, and a slow
/// level.
class LimiterDisplay final : public LevelTimeDisplay {
public:
    /// In the order of painting.
    enum CurveIndex { Input, Output, Reduction, SlowLevel };

    /// Full scale lies here, in logical units from the top.
    static constexpr float kZeroPosition = 57.0f;
    /// What the scale leaves of the height, above and below it, in logical units.
    static constexpr float kOffScale = 101.0f;

    LimiterDisplay(gui::UserInterface& interface, gui::Animator* animatedBy, LevelExchange& levels);

    /// `rootWidth`: of the whole interface, on which the speed depends; logical units.
    void setMode(DisplayMode mode, float rootWidth);
    /// `mode` or a bypass takes the picture away, softly.
    void showPicture(bool shown) { fadePicture(shown ? 255 : 0); }
    /// The slow level that goes with a scale of the meters: RMS on a K-scale, loudness on the others.
    /// `timeScale` is which one counts on the scale Loudness.
    void showSlowLevel(MeterScale meterScale, ProgrammeLevel timeScale);

    void refreshTree() override;

private:
    void addCurves();
    void setHairlines();

    LevelExchange& levels_;
};

}  // namespace vanta::interface
