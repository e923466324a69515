#pragma once

#include <array>
#include <cstddef>

namespace vanta::interface {

/// A curve through points, straight between them and level beyond.
struct CurvePoint {
    float position;
    float normal;
};

template <std::size_t N>
constexpr float along(const std::array<CurvePoint, N>& points, float at, float CurvePoint::*from,
                      float CurvePoint::*to) {
    if (!(at > points.front().*from)) return points.front().*to;
    for (std::size_t i = 1; i < N; ++i) {
        const CurvePoint &a = points[i - 1], &b = points[i];
        if (at < b.*from) return a.*to + (at - a.*from) / (b.*from - a.*from) * (b.*to - a.*to);
    }
    return points.back().*to;
}

/// Where Gain and Output Level stand on their controls: the last decibels below 0, of which most is heard,
/// have half of the way. 0.5 is -2 dB of Output Level's 30, 0.2 is -15.
inline constexpr std::array kLevelCurve = {
    CurvePoint{0.0f, 0.0f},        CurvePoint{0.2f, 0.5f},  CurvePoint{0.4f, 0.8f},
    CurvePoint{0.5f, 0.93333334f}, CurvePoint{0.6f, 0.96f}, CurvePoint{0.7f, 0.97666669f},
    CurvePoint{0.8f, 0.98666668f}, CurvePoint{1.0f, 1.0f},
};

/// `toNormal` and `fromNormal` of Output Level.
inline float levelToNormal(float position) {
    return along(kLevelCurve, position, &CurvePoint::position, &CurvePoint::normal);
}
inline float levelFromNormal(float normal) {
    return along(kLevelCurve, normal, &CurvePoint::normal, &CurvePoint::position);
}

/// The same for Gain, whose fine decibels are those above 0.
inline float gainToNormal(float position) {
    return 1.0f - levelToNormal(1.0f - position);
}
inline float gainFromNormal(float normal) {
    return 1.0f - levelFromNormal(1.0f - normal);
}

/// Of a channel link where there is no more to link than pairs: the second half of the range does nothing.
inline float halfToNormal(float position) {
    return position / 2.0f;
}
inline float halfFromNormal(float normal) {
    return normal * 2.0f;
}

}  // namespace vanta::interface
