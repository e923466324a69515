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
/// How many of the transform's peaks are looked at, and how many points on each side: what lies next to half
/// the sample rate moves the largest from one of many alike to another.
constexpr int kCandidates = 64;
constexpr std::size_t kReach = kFine;

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

/// The magnitude of the continuous signal behind sample `before`, with `kernel(i)` the weight of sample i.
template <typename Kernel>
double magnitude(std::span<const float> signal, std::ptrdiff_t before, Kernel&& kernel) {
    const auto end = std::min(before + kHalf + 1, std::ssize(signal));
    double sum = 0.0;
    for (auto i = std::max<std::ptrdiff_t>(before - kHalf + 1, 0); i < end; ++i) {
        sum += static_cast<double>(signal[static_cast<std::size_t>(i)]) * kernel(i);
    }
    return std::abs(sum);
}

double magnitudeAt(std::span<const float> signal, double place) {
    return magnitude(signal, static_cast<std::ptrdiff_t>(std::floor(place)),
                     [&](std::ptrdiff_t i) { return kernelAt(static_cast<double>(i) - place); });
}

/// The same at one of the points of the transform, from a table.
double magnitudeAtPoint(std::span<const float> signal, std::size_t point) {
    static const std::vector<double> table = [] {
        std::vector<double> made;
        for (auto i = -kHalf * std::ptrdiff_t{kFine}; i <= kHalf * std::ptrdiff_t{kFine}; ++i) {
            made.push_back(kernelAt(static_cast<double>(i) * kStep));
        }
        return made;
    }();
    const double* centre = table.data() + kHalf * std::ptrdiff_t{kFine};
    const auto place = static_cast<std::ptrdiff_t>(point);
    return magnitude(signal, place / std::ptrdiff_t{kFine},
                     [&](std::ptrdiff_t i) { return centre[i * std::ptrdiff_t{kFine} - place]; });
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
    const std::size_t begin = first * kFine, end = last * kFine;
    double largest = 0.0;
    std::size_t place = begin;
    for (int candidate = 0; candidate < kCandidates; ++candidate) {
        const auto top = std::max_element(fine.begin() + static_cast<long>(begin),
                                          fine.begin() + static_cast<long>(end) + 1);
        const auto point = static_cast<std::size_t>(top - fine.begin());
        // The next candidate stands elsewhere.
        for (std::size_t k = std::max(point, begin + kReach) - kReach; k <= std::min(point + kReach, end);
             ++k) {
            fine[k] = 0.0;
            const double found = magnitudeAtPoint(signal, k);
            if (found > largest) largest = found, place = k;
        }
    }
    const double centre = static_cast<double>(place) * kStep;
    return std::max(
        {largest, peak(signal.subspan(first, last - first + 1)),
         refine(signal, std::max(centre - kStep, double(first)), std::min(centre + kStep, double(last)))});
}

}  // namespace vanta::test
