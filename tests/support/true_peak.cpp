#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

constexpr int kHalf = 512;   ///< samples on each side of a point
constexpr int kFactor = 16;  ///< points a sample
constexpr int kBlock = 16;   ///< points of one phase that are computed side by side
constexpr double kBeta = 12.3;

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
    const double place = distance / kHalf;
    if (std::abs(place) >= 1.0) return 0.0;
    const double angle = std::numbers::pi * distance;
    const double sinc = std::abs(angle) < 1e-9 ? 1.0 : std::sin(angle) / angle;
    static const double scale = 1.0 / bessel0(kBeta);
    return sinc * bessel0(kBeta * std::sqrt(1.0 - place * place)) * scale;
}

using Taps = std::array<double, 2 * kHalf>;

/// Tap k weighs the sample at `k - kHalf + 1` from the one before the point.
Taps tapsOfPhase(int phase) {
    Taps taps{};
    for (int k = 0; k < 2 * kHalf; ++k) {
        taps[static_cast<std::size_t>(k)] = kernelAt(k - kHalf + 1 - static_cast<double>(phase) / kFactor);
    }
    return taps;
}

const std::vector<Taps>& phases() {
    static const std::vector<Taps> all = [] {
        std::vector<Taps> made;
        for (int phase = 0; phase < kFactor; ++phase) made.push_back(tapsOfPhase(phase));
        return made;
    }();
    return all;
}

/// Several neighbouring points of one phase: the sums stay in registers.
void interpolate(const double* samples, const Taps& taps, std::array<double, kBlock>& points) {
    std::array<double, kBlock> sums{};
    for (std::size_t k = 0; k < taps.size(); ++k) {
        for (std::size_t i = 0; i < kBlock; ++i) sums[i] += taps[k] * samples[k + i];
    }
    points = sums;
}

/// The signal in double, with silence around it for the kernel to reach into.
struct Padded {
    explicit Padded(std::span<const float> signal) : samples(signal.size() + 2 * kHalf + kBlock, 0.0) {
        std::copy(signal.begin(), signal.end(), samples.begin() + kHalf - 1);
    }
    /// The first sample that reaches the points between `place` and the next sample.
    const double* reaching(std::size_t place) const { return samples.data() + place; }
    double at(double place) const {
        const double whole = std::floor(place);
        const double* reached = reaching(static_cast<std::size_t>(whole));
        double sum = 0.0;
        for (int k = 0; k < 2 * kHalf; ++k) sum += reached[k] * kernelAt(k - kHalf + 1 - (place - whole));
        return sum;
    }
    std::vector<double> samples;
};

/// Golden-section search for the largest magnitude within `reach` of a place.
double refine(const Padded& padded, double place, double reach, double end) {
    double low = std::max(place - reach, 0.0);
    double high = std::min(place + reach, end);
    double best = 0.0;
    for (int i = 0; i < 24; ++i) {
        const double left = high - (high - low) / std::numbers::phi;
        const double right = low + (high - low) / std::numbers::phi;
        const double atLeft = std::abs(padded.at(left));
        const double atRight = std::abs(padded.at(right));
        best = std::max({best, atLeft, atRight});
        (atLeft > atRight ? high : low) = atLeft > atRight ? right : left;
    }
    return best;
}

}  // namespace

double truePeak(std::span<const float> signal) {
    return signal.empty() ? 0.0 : truePeak(signal, 0, signal.size() - 1);
}

double truePeak(std::span<const float> signal, std::size_t first, std::size_t last) {
    const Padded padded(signal);
    double largest = 0.0;
    double place = 0.0;
    std::array<double, kBlock> points{};
    for (std::size_t start = first; start <= last; start += kBlock) {
        const std::size_t count = std::min<std::size_t>(kBlock, last - start + 1);
        for (int phase = 0; phase < kFactor; ++phase) {
            interpolate(padded.reaching(start), phases()[static_cast<std::size_t>(phase)], points);
            // Behind the last sample nothing is looked at.
            const std::size_t used = phase && start + count > last ? count - 1 : count;
            for (std::size_t i = 0; i < used; ++i) {
                if (std::abs(points[i]) <= largest) continue;
                largest = std::abs(points[i]);
                place = static_cast<double>(start + i) + static_cast<double>(phase) / kFactor;
            }
        }
    }
    return std::max(largest, refine(padded, place, 1.0 / kFactor, static_cast<double>(last)));
}

}  // namespace vanta::test
