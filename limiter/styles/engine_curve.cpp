#include "limiter/styles/engine_curve.hpp"

#include <array>
#include <cmath>
#include <span>

namespace vanta {
namespace {

struct Corner {
    double x;
    double y;
};

constexpr std::array<Corner, 7> kTime{
    {{0, 0}, {0.1, 0.002}, {0.25, 0.05}, {0.5, 0.16}, {0.7, 0.36}, {0.9, 0.91}, {1, 1}}};
constexpr std::array<Corner, 8> kSlotLevel{
    {{0, 0}, {0.1, 0.01}, {0.25, 0.3}, {0.5, 1}, {0.7, 4}, {0.9, 20}, {0.95, 50}, {1, 100}}};

/// Where the ratio's fine lower part ends and the stretch up to infinity begins: 10:1.
constexpr double kRatioKnee = 1.0 / 11;
constexpr std::array<Corner, 11> kRatio{{{0, 0},
                                         {0.1, 0.00101010},
                                         {0.2, 0.00252525},
                                         {0.3, 0.00505051},
                                         {0.4, 0.0101010},
                                         {0.5, 0.0176768},
                                         {0.6, 0.0303030},
                                         {0.7, 0.0505051},
                                         {0.8, 0.0707071},
                                         {0.9, kRatioKnee},
                                         {1, 1}}};

/// Interpolates through the corners, from the coordinate `from` to the coordinate `to`.
double interpolate(std::span<const Corner> corners, double value, double Corner::*from, double Corner::*to) {
    for (std::size_t i = 1; i < corners.size(); ++i) {
        const Corner& low = corners[i - 1];
        const Corner& high = corners[i];
        if (value <= high.*from) {
            const double share = (value - low.*from) / (high.*from - low.*from);
            return low.*to + share * (high.*to - low.*to);
        }
    }
    return corners.back().*to;
}

double along(std::span<const Corner> corners, double x) {
    return interpolate(corners, x, &Corner::x, &Corner::y);
}
double back(std::span<const Corner> corners, double y) {
    return interpolate(corners, y, &Corner::y, &Corner::x);
}

/// Applies a curve of the magnitude to a value of either sign.
template <typename F>
float keepingSign(float value, F magnitudeCurve) {
    return static_cast<float>(std::copysign(magnitudeCurve(std::abs(static_cast<double>(value))), value));
}

float identity(float v) {
    return v;
}

}  // namespace

float attackCurve(float v) {
    return keepingSign(v, [](double a) { return a * a * a * a; });
}
float inverseAttackCurve(float share) {
    return keepingSign(share, [](double a) { return std::sqrt(std::sqrt(a)); });
}

float releaseCurve(float v) {
    return keepingSign(v, [](double a) {
        const double part = a / 0.9;
        return a < 0.9 ? 0.5 * part * part * part : (a - 0.9) * 5 + 0.5;
    });
}
float inverseReleaseCurve(float share) {
    return keepingSign(share,
                       [](double a) { return a < 0.5 ? 0.9 * std::cbrt(2 * a) : (a - 0.5) * 0.2 + 0.9; });
}

float timeCurve(float v) {
    return keepingSign(v, [](double a) { return along(kTime, a); });
}
float inverseTimeCurve(float share) {
    return keepingSign(share, [](double a) { return back(kTime, a); });
}

float slotLevelCurve(float v) {
    return keepingSign(v, [](double a) { return along(kSlotLevel, a); });
}
float inverseSlotLevelCurve(float factor) {
    return keepingSign(factor, [](double a) { return back(kSlotLevel, a); });
}

float ratioCurve(float v) {
    return keepingSign(v, [](double a) {
        const double y = along(kRatio, a);
        return y > kRatioKnee ? along(kTime, (y - kRatioKnee) * 1.1) * (10.0 / 11) + kRatioKnee : y;
    });
}
float inverseRatioCurve(float share) {
    return keepingSign(share, [](double a) {
        const double y = a > kRatioKnee ? back(kTime, (a - kRatioKnee) * 1.1) / 1.1 + kRatioKnee : a;
        return back(kRatio, y);
    });
}

CurveFunction curveFunction(EngineCurve curve) {
    constexpr std::array<CurveFunction, 6> functions{identity,  attackCurve,    releaseCurve,
                                                     timeCurve, slotLevelCurve, ratioCurve};
    return functions[static_cast<std::size_t>(curve)];
}

CurveFunction inverseCurveFunction(EngineCurve curve) {
    constexpr std::array<CurveFunction, 6> functions{
        identity,         inverseAttackCurve,    inverseReleaseCurve,
        inverseTimeCurve, inverseSlotLevelCurve, inverseRatioCurve};
    return functions[static_cast<std::size_t>(curve)];
}

}  // namespace vanta
