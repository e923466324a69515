#pragma once

#include <array>

#include "gui/graphics/gradient.hpp"
#include "interface/meters/level_meter_display.hpp"

namespace vanta::interface {

/// Of a bar that has no bands, from its upper end to its lower.
struct BarColors {
    gui::Color top;
    gui::Color bottom;
};

/// Another pair while what is heard is not as loud as what goes out.
BarColors barColors(bool unityGain);
BarColors reductionColors();

/// The levels at which bands of colour begin, from the top down: too loud, loud, pale; below them lie the
/// bar's own colours.
using BandLimits = std::array<float, 3>;

BandLimits bandsOfReference(float k);
BandLimits bandsOfTarget(float target, float reach);

/// For the scale that the meter has now.
gui::Gradient bandGradient(const LevelMeterDisplay& meter, const BandLimits& limits, const BarColors& below);

inline constexpr gui::Color kClipColor{254, 64, 74, 255};
inline constexpr gui::Color kRangeColor{255, 185, 95, 255};

}  // namespace vanta::interface
