#pragma once

/// The detector's curves for one sample in double precision, for the settings that have no vector form.
namespace vanta::detector_curve {

struct Point {
    double knee, threshold, hysteresis, ratio, limit;
};

/// `distance` from the threshold, bent quadratically within half a knee of it, where it starts at 0.
double soft(double distance, double knee);
/// Gain changes in dB, before the limit.
double compression(double levelDb, const Point& p);
double upwardExpansion(double levelDb, const Point& p);
/// Moves `open` first: any level above the threshold opens, one more than the hysteresis below it closes.
double downwardExpansion(double levelDb, const Point& p, bool& open);
/// The saturating curve, of an amplitude.
double clipping(double amplitude, double thresholdDb);

}  // namespace vanta::detector_curve
