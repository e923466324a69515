#pragma once

#include <vector>

#include "interface/loudness/loudness_scale.hpp"
#include "interface/meters/display_grid.hpp"
#include "interface/meters/meter_scale.hpp"

namespace vanta::interface {

/// The scale that the level meters share with the scrolling display, of any of the seven kinds.
struct MainScale {
    LevelCurve curve;
    float scale;       ///< logical units a dB of the curve
    float labelShift;  ///< from full scale to the number shown: K on a K-scale
    float origin;      ///< from where steps count, as a number shown
    std::vector<float> extras;
    const std::vector<float>* steps;

    /// `length` is what the meters have for the scale, in logical units.
    static MainScale of(MeterScale kind, const LoudnessScale& loudness, float length);

    void applyTo(LevelDisplay& display) const;
    void applyTo(DisplayGrid& grid) const;
};

}  // namespace vanta::interface
