#include "dsp/sr/elliptic_half_band.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vanta::sr {

namespace {

constexpr int kMostTransformations = 16;
/// A modulus below this makes a sine of the elliptic one.
constexpr double kVanishingModulus = 1e-8;

/// Jacobi's sn(x K, modulus), where K is the quarter period, by descending Landen transformations: they leave
/// x as it is.
double jacobiSine(double x, double modulus) {
    std::vector<double> moduli;
    while (modulus >= kVanishingModulus && moduli.size() < kMostTransformations) {
        const double ratio = modulus / (1.0 + std::sqrt(1.0 - modulus * modulus));
        modulus = ratio * ratio;
        moduli.push_back(modulus);
    }
    double sine = std::sin(x * std::numbers::pi / 2);
    for (auto k = moduli.rbegin(); k != moduli.rend(); ++k) {
        sine = (1.0 + *k) * sine / (1.0 + *k * sine * sine);
    }
    return sine;
}

}  // namespace

std::vector<float> designEllipticHalfBand(int order, double passbandEdge) {
    const double tangent = std::tan(passbandEdge / 2);
    // The ratio of the edges of pass and stop band after the bilinear transform.
    const double modulus = tangent * tangent;
    const double inverse = 1.0 / modulus;
    std::vector<float> coefficients;
    for (int i = 0; i < (order - 1) / 2; ++i) {
        const double sine = jacobiSine(static_cast<double>(2 * i + 1) / order + 1.0, modulus);
        const double square = sine * sine;
        const double whole = square + inverse;
        const double root = std::sqrt((inverse * inverse - square) * (1.0 - square));
        coefficients.push_back(static_cast<float>((whole - root) / (whole + root)));
    }
    std::ranges::sort(coefficients);
    return coefficients;
}

}  // namespace vanta::sr
