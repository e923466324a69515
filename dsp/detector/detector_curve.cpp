#include "dsp/detector/detector_curve.hpp"

#include <cmath>

#include "foundation/numbers.hpp"
#include "kernel/level_math.hpp"

namespace vanta::detector_curve {

double soft(double distance, double knee) {
    const double half = knee * 0.5;
    if (knee <= kEqualWithin || std::abs(distance) > half) return distance;
    const double part = (half + distance) / knee;
    return part * part * half;
}

double compression(double levelDb, const Point& p) {
    const double bent = soft(levelDb - p.threshold, p.knee);
    if (p.ratio >= 100.0) return bent;
    // A ratio of 0 has no inverse; at the threshold itself even that changes nothing.
    return bent == 0.0 ? 0.0 : bent * (1.0 - 1.0 / p.ratio);
}

double upwardExpansion(double levelDb, const Point& p) {
    return soft(levelDb - p.threshold, p.knee) * (p.ratio - 1.0);
}

double downwardExpansion(double levelDb, const Point& p, bool& open) {
    const double distance = p.threshold - levelDb;
    if (!open && distance < 0.0) {
        open = true;
    } else if (open && distance > p.hysteresis) {
        open = false;
    }
    return open ? 0.0 : soft(distance - p.knee * 0.5, p.knee) * (p.ratio - 1.0);
}

double clipping(double amplitude, double thresholdDb) {
    if (thresholdDb >= -static_cast<double>(kEqualWithin)) return 0.0;
    const double slope = kernel::limitedExp(-thresholdDb * kDbToLog) - 1.0;
    return dbFromGain(1.0 + std::abs(amplitude * slope));
}

}  // namespace vanta::detector_curve
