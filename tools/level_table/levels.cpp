#include "tools/level_table/levels.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <vector>

#include "foundation/numbers.hpp"
#include "tools/windowed_sinc.hpp"

namespace vanta {
namespace {

constexpr std::size_t kPoints = 8;  // between two samples
constexpr std::size_t kReach = 64;  // taps a side
constexpr std::size_t kTaps = 2 * kReach;
constexpr double kBeta = 9;

/// The kernel with the points of one tap side by side, so that the inner loop runs over them.
using Kernel = std::array<std::array<float, kPoints>, kTaps>;

const Kernel& kernel() {
    static const Kernel rows = [] {
        Kernel result{};
        for (std::size_t tap = 0; tap < kTaps; ++tap)
            for (std::size_t point = 0; point < kPoints; ++point) {
                const double x = static_cast<double>(kReach) - 1 - static_cast<double>(tap) +
                                 static_cast<double>(point) / kPoints;
                result[tap][point] = static_cast<float>(windowedSinc(x, 0.5, kReach, kBeta));
            }
        return result;
    }();
    return rows;
}

/// The kPoints values from `at[0]` on, up to but without `at[1]`. `at` has kReach neighbours on each side.
std::array<float, kPoints> interpolate(const float* at, const Kernel& rows) {
    std::array<float, kPoints> points{};
    const float* first = at - static_cast<std::ptrdiff_t>(kReach) + 1;
    for (std::size_t tap = 0; tap < kTaps; ++tap)
        for (std::size_t point = 0; point < kPoints; ++point) points[point] += rows[tap][point] * first[tap];
    return points;
}

/// Height of the parabola through three equally spaced values, of which the middle one is the highest.
double vertex(double before, double middle, double after) {
    const double curvature = before - 2 * middle + after;
    if (curvature >= 0) return middle;
    return middle - (after - before) * (after - before) / (8 * curvature);
}

}  // namespace

double truePeak(std::span<const float> samples) {
    const Kernel& rows = kernel();
    std::vector<float> padded(2 * kReach);
    padded.insert(padded.end(), samples.begin(), samples.end());
    padded.resize(padded.size() + 2 * kReach);
    double peak = 0, before = 0, middle = 0;
    for (std::size_t i = kReach; i + kReach < padded.size(); ++i)
        for (const float point : interpolate(padded.data() + i, rows)) {
            const double after = std::abs(point);
            if (middle > before && middle >= after && middle > 0.9 * peak)
                peak = std::max(peak, vertex(before, middle, after));
            before = middle;
            middle = after;
        }
    return peak;
}

Levels measureLevels(std::span<const std::span<const float>> channels) {
    if (channels.empty()) throw std::invalid_argument("there is no channel to measure");
    double peak = 0, between = 0, energy = 0;
    std::size_t count = 0;
    for (const auto channel : channels) {
        for (const float sample : channel) {
            peak = std::max(peak, static_cast<double>(std::abs(sample)));
            energy += static_cast<double>(sample) * static_cast<double>(sample);
        }
        between = std::max(between, truePeak(channel));
        count += channel.size();
    }
    const double rms = count > 0 ? std::sqrt(energy / static_cast<double>(count)) : 0;
    return {dbFromGain(peak), dbFromGain(std::max(peak, between)), dbFromGain(rms)};
}

}  // namespace vanta
