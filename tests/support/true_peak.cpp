#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

constexpr std::ptrdiff_t kHalf = 512;  ///< samples on each side of a point
constexpr std::size_t kFine = 8;       ///< points a sample that the transform looks at
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

/// The largest magnitude within two samples of a place: point by point, then by golden section.
double largestAround(std::span<const float> signal, double place, double first, double last) {
    double best = 0.0, top = place;
    for (double at = std::max(place - 2.0, first); at <= std::min(place + 2.0, last); at += kStep) {
        const double magnitude = magnitudeAt(signal, at);
        if (magnitude > best) best = magnitude, top = at;
    }
    double low = std::max(top - kStep, first), high = std::min(top + kStep, last);
    for (int i = 0; i < 24; ++i) {
        const double left = high - (high - low) / std::numbers::phi;
        const double right = low + (high - low) / std::numbers::phi;
        const double atLeft = magnitudeAt(signal, left), atRight = magnitudeAt(signal, right);
        best = std::max({best, atLeft, atRight});
        (atLeft > atRight ? high : low) = atLeft > atRight ? right : left;
    }
    return best;
}

/// The magnitudes at `kFine` times the rate, seen through nothing but the signal's own spectrum.
std::vector<double> upsampled(std::span<const float> signal) {
    std::size_t size = 2048;
    while (size < signal.size() + 1024) size *= 2;
    std::vector<double> samples(size, 0.0), result(size * kFine, 0.0);
    std::vector<std::complex<double>> spectrum(size * kFine / 2 + 1);
    auto* bins = reinterpret_cast<fftw_complex*>(spectrum.data());
    const auto length = static_cast<int>(size);
    const fftw_plan forward = fftw_plan_dft_r2c_1d(length, samples.data(), bins, FFTW_ESTIMATE);
    const fftw_plan back = fftw_plan_dft_c2r_1d(length * int{kFine}, bins, result.data(), FFTW_ESTIMATE);
    std::copy(signal.begin(), signal.end(), samples.begin());
    for (const fftw_plan plan : {forward, back}) fftw_execute(plan), fftw_destroy_plan(plan);
    for (double& value : result) value = std::abs(value);
    return result;
}

}  // namespace

double truePeak(std::span<const float> signal) {
    return signal.empty() ? 0.0 : truePeak(signal, 0, signal.size() - 1);
}

double truePeak(std::span<const float> signal, std::size_t first, std::size_t last) {
    std::vector<double> fine = upsampled(signal);
    double largest = peak(signal.subspan(first, last - first + 1));
    const auto pointAt = [&](std::size_t sample) { return fine.begin() + static_cast<long>(sample * kFine); };
    for (int candidate = 0; candidate < 2; ++candidate) {
        const auto top = std::max_element(pointAt(first), pointAt(last) + 1);
        const double place = static_cast<double>(top - fine.begin()) * kStep;
        largest = std::max(largest, largestAround(signal, place, double(first), double(last)));
        // The next candidate stands elsewhere.
        const auto sample = static_cast<std::size_t>(place);
        std::fill(pointAt(sample - std::min<std::size_t>(sample, 2)), pointAt(std::min(sample + 3, last + 1)),
                  0.0);
    }
    return largest;
}

}  // namespace vanta::test
