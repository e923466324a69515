#pragma once

namespace vanta {

/// How a stored value becomes an engine value: e = curveOffset + curve(v) * curveScale.
/// Every curve keeps the sign of its argument and maps 0 to 0; the piecewise linear ones hold their last
/// value beyond 1.
enum class EngineCurve {
    Identity,
    Attack,     ///< v to the fourth power
    Release,    ///< cubic up to half the range at 0.9, linear above
    Time,       ///< piecewise linear, for lengths of look-ahead, holds and windows
    SlotLevel,  ///< piecewise linear: 0.5 is a factor of 1, 1 a factor of 100
    Ratio,      ///< 0.9 is a ratio of 10:1, 1 a ratio of 100:1; times 99 plus 1
};

using CurveFunction = float (*)(float);

/// Never null.
CurveFunction curveFunction(EngineCurve curve);
/// Stored value of a curve's result: inverse(curve(v)) is v up to rounding for v within -1 to 1.
CurveFunction inverseCurveFunction(EngineCurve curve);

float attackCurve(float v);
float inverseAttackCurve(float share);
float releaseCurve(float v);
float inverseReleaseCurve(float share);
float timeCurve(float v);
float inverseTimeCurve(float share);
/// Factor of a slot's stored Level.
float slotLevelCurve(float v);
float inverseSlotLevelCurve(float factor);
float ratioCurve(float v);
float inverseRatioCurve(float share);

}  // namespace vanta
