#pragma once

namespace vanta::interface {

/// A soft way from (0, 0) to (1, 1): a cubic Bezier curve that leaves and arrives almost level.
class Spline {
public:
    Spline();
    /// y at x, within 0.0001; beyond the ends the straight lines to the inner control points go on.
    float valueAt(float x) const;

private:
    /// A polynomial without a constant.
    struct Polynomial {
        Polynomial(float first, float second);
        float at(float t) const { return ((cube * t + square) * t + linear) * t; }
        float cube, square, linear;
    };
    Polynomial x_;
    Polynomial y_;
};

}  // namespace vanta::interface
