#pragma once

#include "gui/graphics/geometry.hpp"

namespace vanta::gui {

/// Where the values of a knob lie around it. Angles are turns, clockwise from the top, 0 to 1.
struct KnobGeometry {
    int minimum = 0;
    int maximum = 1;
    float sweepDegrees = 300.0f;      ///< from the lowest value to the highest
    float startOffsetDegrees = 0.0f;  ///< by which the sweep is turned from standing upright

    /// Of the lowest value.
    float base() const;
    float angleOf(int value) const;
    /// The nearest value; in the gap of the sweep, the nearer end.
    int valueAt(float angle) const;
    /// Whether the angle lies in the sweep, `marginDegrees` of ring shared by its ends included.
    bool isInSweep(float angle, float marginDegrees) const;

    /// Of a point relative to the centre.
    static float angleOfPoint(Point fromCentre);
    /// Between two angles, 0 to half a turn.
    static float distance(float a, float b);
    static float wrapped(float angle);

private:
    float sweepTurns() const;
};

}  // namespace vanta::gui
