#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <map>
#include <numbers>
#include <vector>

#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

constexpr std::ptrdiff_t kHalf = 512;  ///< samples on each side of a point
constexpr std::size_t kFine = 8;       ///< points a sample that are looked at
constexpr double kStep = 1.0 / kFine;

/// Modified Bessel function of the first kind and order 0, by its series.
double bessel0(double x) {
    double sum = 1.0;
    double term = 1.0;
    for (int k = 1; term > 1e-18 * sum; ++k) {
        term *= (x / (2.0 * k)) * (x / (2.0 * k));
        sum += term;
    }
    return sum;
}

/// The interpolating kernel at a distance in samples.
double kernelAt(double distance) {
    constexpr double kBeta = 12.3;
    const double place = distance / kHalf;
    if (std::abs(place) >= 1.0) return 0.0;
    const double angle = std::numbers::pi * distance;
    const double sinc = std::abs(angle) < 1e-9 ? 1.0 : std::sin(angle) / angle;
    static const double scale = 1.0 / bessel0(kBeta);
    return sinc * bessel0(kBeta * std::sqrt(1.0 - place * place)) * scale;
}

/// The magnitude of the continuous signal at a place.
double magnitudeAt(std::span<const float> signal, double place) {
    const auto before = static_cast<std::ptrdiff_t>(std::floor(place));
    const auto end = std::min(before + kHalf + 1, std::ssize(signal));
    double sum = 0.0;
    for (auto i = std::max<std::ptrdiff_t>(before - kHalf + 1, 0); i < end; ++i) {
        sum += static_cast<double>(signal[static_cast<std::size_t>(i)]) *
               kernelAt(static_cast<double>(i) - place);
    }
    return std::abs(sum);
}

/// Golden-section search for the largest magnitude next to a place.
double refine(std::span<const float> signal, double low, double high) {
    double best = 0.0;
    for (int i = 0; i < 24; ++i) {
        const double left = high - (high - low) / std::numbers::phi;
        const double right = low + (high - low) / std::numbers::phi;
        const double atLeft = magnitudeAt(signal, left), atRight = magnitudeAt(signal, right);
        best = std::max({best, atLeft, atRight});
        (atLeft > atRight ? high : low) = atLeft > atRight ? right : left;
    }
    return best;
}

using Spectrum = std::vector<std::complex<double>>;

Spectrum transform(std::vector<double> samples) {
    Spectrum spectrum(samples.size() / 2 + 1);
    fftw_plan plan = fftw_plan_dft_r2c_1d(static_cast<int>(samples.size()), samples.data(),
                                          reinterpret_cast<fftw_complex*>(spectrum.data()), FFTW_ESTIMATE);
    fftw_execute(plan);
    fftw_destroy_plan(plan);
    return spectrum;
}

/// The kernel's own spectrum, with its centre on the first of `size` points.
const Spectrum& kernelSpectrum(std::size_t size) {
    static std::map<std::size_t, Spectrum> known;
    Spectrum& spectrum = known[size];
    if (!spectrum.empty()) return spectrum;
    std::vector<double> kernel(size, 0.0);
    for (std::size_t i = 0; i < std::size_t{kHalf} * kFine; ++i) {
        kernel[(size - i) % size] = kernel[i] =
            kernelAt(static_cast<double>(i) * kStep) / static_cast<double>(size);
    }
    return spectrum = transform(std::move(kernel));
}

/// The magnitudes of the continuous signal at all points.
std::vector<double> magnitudes(std::span<const float> signal) {
    std::size_t size = 2048 * kFine;
    while (size < (signal.size() + 2 * std::size_t{kHalf}) * kFine) size *= 2;
    std::vector<double> points(size, 0.0);
    for (std::size_t i = 0; i < signal.size(); ++i) points[i * kFine] = static_cast<double>(signal[i]);
    Spectrum spectrum = transform(points);
    const Spectrum& kernel = kernelSpectrum(size);
    for (std::size_t k = 0; k < spectrum.size(); ++k) spectrum[k] *= kernel[k];
    fftw_plan back =
        fftw_plan_dft_c2r_1d(static_cast<int>(size), reinterpret_cast<fftw_complex*>(spectrum.data()),
                             points.data(), FFTW_ESTIMATE);
    fftw_execute(back);
    fftw_destroy_plan(back);
    for (double& value : points) value = std::abs(value);
    return points;
}

}  // namespace

double truePeak(std::span<const float> signal) {
    return signal.empty() ? 0.0 : truePeak(signal, 0, signal.size() - 1);
}

double truePeak(std::span<const float> signal, std::size_t first, std::size_t last) {
    const std::vector<double> points = magnitudes(signal);
    double largest = 0.0, place = static_cast<double>(first);
    for (std::size_t k = first * kFine; k <= last * kFine; ++k) {
        const double before = points[k ? k - 1 : points.size() - 1], here = points[k], after = points[k + 1];
        if (here < before || here < after) continue;
        // The vertex of the parabola through the three.
        const double bend = 2.0 * here - before - after;
        const double top = here + (bend > 0.0 ? (after - before) * (after - before) / (8.0 * bend) : 0.0);
        if (top > largest) largest = top, place = static_cast<double>(k) * kStep;
    }
    const auto low = std::max(place - kStep, static_cast<double>(first));
    const auto high = std::min(place + kStep, static_cast<double>(last));
    return std::max(peak(signal.subspan(first, last - first + 1)), refine(signal, low, high));
}

}  // namespace vanta::test
