#include "dsp/sr/half_band_design.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace vanta::sr {

namespace {

constexpr double kPi = std::numbers::pi;

/// Modified Bessel function of the first kind and order 0.
double besselI0(double x) {
    double sum = 1.0;
    double term = 1.0;
    for (int n = 1; term >= 1e-9 * sum; ++n) {
        const double factor = x / (2.0 * n);
        term *= factor * factor;
        sum += term;
    }
    return sum;
}

CoefficientSet emptySet(int length) {
    CoefficientSet set;
    set.length = length;
    set.taps.resize((length + 6) / 4 * 4);
    return set;
}

}  // namespace

float narrowTransition(float sampleRate, float passband) {
    return std::max((sampleRate - 2.0f * passband) / sampleRate, kNarrowestTransition);
}

int halfBandLength(float transition, double attenuation) {
    const double q = (attenuation - 7.95) / 14.36;
    const int n = static_cast<int>(2.0 * q / static_cast<double>(transition)) + 2;
    return std::max(n / 4 * 4 + 1, 5);
}

CoefficientSet designHalfBand(int length, double attenuation) {
    const double shape = 0.1102 * (attenuation - 8.7);
    const int last = length - 1;
    const int centre = last / 2;
    std::vector<double> taps(static_cast<std::size_t>(length));
    double total = 0.0;
    for (int i = 0; i < length; ++i) {
        const int m = i - centre;
        const double argument = shape / centre * std::sqrt(static_cast<double>(last - i) * i);
        const double window = besselI0(argument) / besselI0(shape);
        double tap = 0.0;
        if (m == 0) {
            tap = 0.5 * window;
        } else if (m % 2 != 0) {
            // sin(pi m / 2) is exactly 1 or -1 here.
            tap = (m & 3) == 1 ? window / (kPi * m) : -window / (kPi * m);
        }
        taps[static_cast<std::size_t>(i)] = tap;
        total += tap;
    }
    CoefficientSet set = emptySet(length);
    for (int i = 0; i < length; ++i) {
        set.taps[i] = static_cast<float>(taps[static_cast<std::size_t>(i)] / total);
    }
    return set;
}

CoefficientSet polyphaseBranch(const CoefficientSet& full) {
    CoefficientSet branch = emptySet((full.length - 1) / 2);
    for (int j = 0; j < branch.length; ++j) branch.taps[j] = 2.0f * full.taps[2 * j + 1];
    return branch;
}

int stageDelay(int tapCount, int ratio) {
    const int delay = (tapCount - 1) / 2;
    return (delay + ratio - 1) / ratio * ratio;
}

int filterLatency(int factor, double sampleRate, double attenuation, double passband) {
    const float narrow = narrowTransition(static_cast<float>(sampleRate), static_cast<float>(passband));
    int total = 0;
    for (int ratio = factor; ratio > 1; ratio /= 2) {
        const int length = halfBandLength(ratio == 2 ? narrow : kWideTransition, attenuation);
        total += 2 * (stageDelay(length, ratio) / ratio);
    }
    return total;
}

int truePeakFactor(double sampleRate) {
    int factor = 8;
    while (factor * sampleRate > 384001.0 && factor >= 4) factor /= 2;
    return factor;
}

}  // namespace vanta::sr
