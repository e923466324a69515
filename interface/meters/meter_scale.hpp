#pragma once

#include <vector>

#include "interface/meters/level_display.hpp"

namespace vanta::interface {

/// The scales of the output meter, in the order in which users choose them.
enum class MeterScale { Db16, Db32, Db48, K12, K14, K20, Loudness };

/// The K-System after Katz, "Level Practices in Digital Audio": 0 lies K dB below full scale. 0 for scales
/// of another kind, else 12, 14 or 20.
float referenceOf(MeterScale scale);
inline bool isKScale(MeterScale scale) {
    return referenceOf(scale) > 0.0f;
}
/// From full scale to the lower end, dB; without that of Loudness, which depends on its target.
float rangeOf(MeterScale scale);
/// The dB scales are linear near full scale, and squeezed below.
LevelCurve curveOf(MeterScale scale);
/// The steps that suit the numbers of a scale; for DisplayGrid.
const std::vector<float>& stepsOf(MeterScale scale);

}  // namespace vanta::interface
