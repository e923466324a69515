#include "dsp/saturator/wave_shaper.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "kernel/wave_shaper_kernels.hpp"

namespace vanta {

namespace {

constexpr double kQuarterTurn = std::numbers::pi / 2;

double tube(double t) {
    if (t < double{kernel::kTubeLowEnd}) return double{kernel::kTubeLowest};
    if (t >= double{kernel::kTubeHighEnd}) return double{kernel::kTubeHighest};
    if (t >= double{kernel::kTubeKnee}) return (3.9375 - 6.153 * t) * t;
    const double w = t + 0.032847;
    return 0.75 * (std::pow(1.0 + w, 12.0) - 1.0) + 0.25 * w - 0.01;
}

double triode(double t) {
    const double b = std::max(0.5 + 0.04 * t, 0.0);
    const double w = std::clamp((b * b - 0.25) * 24.0384483 * 0.1, -1.0, 1.0);
    return (15.0 - 5.0 * w * w) * w;
}

/// Of a magnitude, for the curves that are odd, and for what Rectify makes of either sign.
double magnitudeCurve(int function, double u) {
    const double v = std::min(u, 1.0);
    switch (function) {
        case WaveShaper::ArcTan:
            return std::atan(u * kQuarterTurn) / kQuarterTurn;
        case WaveShaper::Exp:
            return 2.0 * (1.0 / (1.0 + std::exp(-u)) - 0.5);
        case WaveShaper::DivAbs:
            return u / (1.0 + u);
        case WaveShaper::DivRootSquare:
            return u / std::sqrt(1.0 + u * u);
        case WaveShaper::TanHyperbolic:
            return std::tanh(u);
        case WaveShaper::Sine:
            return std::sin(v * kQuarterTurn);
        case WaveShaper::PolynomeOrder2:
        case WaveShaper::Rectify:
            return (2.0 - v) * v;
        case WaveShaper::PolynomeOrder3:
            return (1.5 - 0.5 * v * v) * v;
        case WaveShaper::PolynomeOrder4:
            return (4.0 - v * v * v) * v / 3.0;
        case WaveShaper::PolynomeOrder5:
            return (1.25 - 0.25 * v * v * v * v) * v;
        default:
            return u;
    }
}

double signedCurve(int function, double t) {
    switch (function) {
        case WaveShaper::Tube:
            return tube(t);
        case WaveShaper::Triode:
            return triode(t);
        case WaveShaper::Rectify:
            return magnitudeCurve(function, std::abs(t));
        default:
            return std::copysign(magnitudeCurve(function, std::abs(t)), t);
    }
}

/// |x| to a power, with the sign of x.
double signedPower(double x, double power) {
    return power == 1.0 ? x : std::copysign(std::pow(std::abs(x), power), x);
}

template <int function, const kernel::UnaryKernel& kernel>
std::unique_ptr<WaveShaper> vectorShaper() {
    return std::make_unique<WaveShaperVec<kernel>>(function);
}

}  // namespace

double WaveShaper::curve(double x) const {
    if (x == 0.0) return 0.0;
    const double half = x < 0.0 ? double{scale} : 1.0;
    const double power = double{exponent};
    return signedPower(signedCurve(transferFunction, signedPower(x * half, power)), 1.0 / power) / half;
}

void WaveShaper::shape(const float* in, float* out, int count) const {
    for (int i = 0; i < count; ++i) out[i] = static_cast<float>(curve(double{in[i]}));
}

std::unique_ptr<WaveShaper> makeWaveShaper(int transferFunction) {
    switch (transferFunction) {
        case WaveShaper::ArcTan:
            return vectorShaper<WaveShaper::ArcTan, kernel::vectorClipArcTanFast>();
        case WaveShaper::DivAbs:
            return vectorShaper<WaveShaper::DivAbs, kernel::vectorClipDivAbsFast>();
        case WaveShaper::Sine:
            return vectorShaper<WaveShaper::Sine, kernel::vectorClipSineFast>();
        case WaveShaper::PolynomeOrder2:
            return vectorShaper<WaveShaper::PolynomeOrder2, kernel::vectorClipPolynomeOrder2Fast>();
        case WaveShaper::PolynomeOrder3:
            return vectorShaper<WaveShaper::PolynomeOrder3, kernel::vectorClipPolynomeOrder3Fast>();
        case WaveShaper::Tube:
            return vectorShaper<WaveShaper::Tube, kernel::vectorClipTubeFast>();
        case WaveShaper::Rectify:
            return vectorShaper<WaveShaper::Rectify, kernel::vectorClipRectifyFast>();
        default:
            return std::make_unique<WaveShaper>(transferFunction);
    }
}

}  // namespace vanta
