#include "dsp/convolver/smoothing_shape.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "foundation/numbers.hpp"

namespace vanta {

namespace {

/// Place in the form, 0 to 1, of place `t` in the kernel: the middle of the form moves to 1 - offset.
double warp(double t, double offset) {
    const double middle = 1.0 - offset;
    const bool atEdge = middle <= kEqualWithin || middle >= 1.0 - static_cast<double>(kEqualWithin);
    if (atEdge) return 0.5 * (t + 1.0 - middle);
    return 0.5 * (middle > t ? t / middle : (t - middle) / (1.0 - middle) + 1.0);
}

double classic(double t, float smoothing) {
    if (smoothing <= kEqualWithin) return 1.0;
    return std::min(2.0 * (0.5 - std::abs(t - 0.5)) / smoothing, static_cast<double>(smoothing));
}

}  // namespace

float SmoothingShape::tap(int i) const {
    if (length <= 1) return 1.0f;
    const double t = warp((i + 1.0) / (length + 1.0), offset);
    const double s = smoothing;
    double y = 0.0;
    switch (form) {
        case Triangle:
            y = 0.5 - s * std::abs(t - 0.5);
            break;
        case Polynome:
            y = 1.0 + 4.0 * s * (t * (1.0 - t) - 0.25);
            break;
        case Sine:
            y = 0.5 * (1.0 + std::cos(2.0 * std::numbers::pi * s * (t - 0.5)));
            break;
        default:
            y = classic(t, smoothing);
            break;
    }
    const auto level = static_cast<float>(std::max(y, 0.0));
    return power <= 0.0f ? level : std::pow(level, 1.0f + 3.0f * power);
}

}  // namespace vanta
