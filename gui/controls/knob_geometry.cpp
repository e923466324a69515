#include "gui/controls/knob_geometry.hpp"

#include <numbers>

namespace vanta::gui {

float KnobGeometry::wrapped(float angle) {
    const float fraction = angle - std::floor(angle);
    return fraction < 1.0f ? fraction : 0.0f;
}

float KnobGeometry::distance(float a, float b) {
    const float between = wrapped(a - b);
    return std::min(between, 1.0f - between);
}

float KnobGeometry::angleOfPoint(Point fromCentre) {
    constexpr float kTurn = 2.0f * std::numbers::pi_v<float>;
    return wrapped(std::atan2(fromCentre.y, fromCentre.x) / kTurn + 0.25f);
}

float KnobGeometry::sweepTurns() const {
    return std::max(sweepDegrees, 1.0f) / 360.0f;
}

float KnobGeometry::base() const {
    return wrapped(1.0f - sweepDegrees / 720.0f + startOffsetDegrees / 360.0f);
}

float KnobGeometry::angleOf(int value) const {
    const auto range = static_cast<float>(std::max(maximum - minimum, 1));
    return wrapped(base() + static_cast<float>(value - minimum) * sweepTurns() / range);
}

int KnobGeometry::valueAt(float angle) const {
    float turns = wrapped(angle - base());
    if (turns > (1.0f + sweepTurns()) / 2.0f) turns = 0.0f;
    const auto range = static_cast<float>(maximum - minimum);
    const float steps = std::floor(turns / sweepTurns() * range + 0.5f);
    return minimum + static_cast<int>(std::clamp(steps, 0.0f, range));
}

bool KnobGeometry::isInSweep(float angle, float marginDegrees) const {
    const float margin = marginDegrees / 360.0f / 2.0f;
    return wrapped(angle - base() + margin) <= sweepTurns() + 2.0f * margin;
}

}  // namespace vanta::gui
