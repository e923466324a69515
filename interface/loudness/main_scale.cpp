#include "interface/loudness/main_scale.hpp"

#include <algorithm>
#include <cmath>

namespace vanta::interface {

MainScale MainScale::of(MeterScale kind, const LoudnessScale& loudness, float length) {
    const bool isLoudness = kind == MeterScale::Loudness;
    const float k = referenceOf(kind);
    const float range = isLoudness ? -loudness.bottom() : rangeOf(kind);
    // Its numbers are whole, even where the target of the loudness meter is not.
    const float lowest = std::ceil(k - range);
    const LevelCurve curve = curveOf(kind);
    // A K-scale counts from its reference, so that 0 has a number.
    return {.curve = curve,
            .scale = std::max(length, 0.0f) / -curve.toDisplay(-range),
            .labelShift = k,
            .origin = isLoudness ? std::round(loudness.target) : 0.0f,
            .extras = isKScale(kind) ? std::vector<float>{k, 0.0f, lowest} : std::vector<float>{lowest},
            .steps = &stepsOf(kind)};
}

void MainScale::applyTo(LevelDisplay& display) const {
    display.curve = curve;
    display.scale = scale;
}

void MainScale::applyTo(DisplayGrid& grid) const {
    grid.labelShift = labelShift;
    grid.tickOrigin = origin;
    grid.extras = extras;
    grid.steps = steps;
}

}  // namespace vanta::interface
