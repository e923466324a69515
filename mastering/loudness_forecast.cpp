#include "mastering/loudness_forecast.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "foundation/numbers.hpp"
#include "limiter/styles/style_names.hpp"

namespace vanta {

namespace {

/// Moments that share a 400 ms window.
constexpr std::size_t kWindow = 4;
/// Of the demonstration song at 9 dB of Gain.
constexpr std::array kStyleSoftnessDb = std::to_array<std::pair<LimitingStyle, double>>({
    {LimitingStyle::Transparent, 12.0},
    {LimitingStyle::Punchy, 9.0},
    {LimitingStyle::Dynamic, 9.0},
    {LimitingStyle::Allround, 9.0},
    {LimitingStyle::Aggressive, 20.0},
    {LimitingStyle::Modern, 9.5},
    {LimitingStyle::Bus, 3.4},
    {LimitingStyle::Safe, 0.01},
});
constexpr double kUsualSoftnessDb = 9.0;
constexpr double kLeastSoftnessDb = 0.01;
constexpr double kMostSoftnessDb = 1000.0;
/// The gates of BS.1770: absolute, and relative to what passes it.
constexpr double kAbsoluteGateLufs = -70.0;
constexpr double kRelativeGateLu = -10.0;
/// Far below any gate.
constexpr double kSilentPeakDb = -200.0;

double powerOf(double lufs) {
    return std::pow(10.0, lufs / 10.0);
}

double meanAbove(std::span<const double> powers, double gate) {
    double sum = 0.0;
    double count = 0.0;
    for (const double power : powers) {
        if (power < gate) continue;
        sum += power;
        count += 1.0;
    }
    return count > 0.0 ? sum / count : 0.0;
}

/// Where a growing function reaches `wanted`.
template <typename Function>
double solve(double low, double high, double wanted, Function&& function) {
    for (int round = 0; round < 50; ++round) {
        const double middle = 0.5 * (low + high);
        (function(middle) < wanted ? low : high) = middle;
    }
    return 0.5 * (low + high);
}

}  // namespace

LoudnessForecast::LoudnessForecast(std::span<const std::span<const TimelinePoint>> timelines,
                                   double integratedLufs, double softnessDb)
    : softnessDb_(softnessDb) {
    for (const auto& timeline : timelines) {
        for (const TimelinePoint& point : timeline) {
            const auto peak = static_cast<double>(point.truePeak);
            moments_.push_back(
                {point.momentary > kNoLoudness ? powerOf(static_cast<double>(point.momentary)) : 0.0,
                 peak > 0.0 ? dbFromGain(peak) : kSilentPeakDb});
        }
    }
    // So soft that nothing is lost.
    biasLu_ = integratedLufs - lufs(0.0, std::numeric_limits<double>::infinity());
}

double LoudnessForecast::lufs(double gainDb, double softnessDb) const {
    const double gain = powerOf(gainDb);
    std::vector<double> powers(moments_.size());
    std::array<double, kWindow> kept{1.0, 1.0, 1.0, 1.0};  // shares of power of the latest moments
    for (std::size_t i = 0; i < moments_.size(); ++i) {
        const double over = std::max(moments_[i].peakDb + gainDb, 0.0);
        kept[i % kWindow] = powerOf(-over * over / (over + softnessDb));
        const double share = (kept[0] + kept[1] + kept[2] + kept[3]) / kWindow;
        powers[i] = moments_[i].power * gain * share;
    }
    const double absolute = meanAbove(powers, powerOf(kAbsoluteGateLufs));
    const double gated =
        meanAbove(powers, std::max(absolute * powerOf(kRelativeGateLu), powerOf(kAbsoluteGateLufs)));
    return gated > 0.0 ? 10.0 * std::log10(gated) + biasLu_ : kAbsoluteGateLufs;
}

double LoudnessForecast::usualSoftnessDb(std::optional<int> style) {
    for (const auto& [known, softnessDb] : kStyleSoftnessDb) {
        if (style && static_cast<int>(known) == *style) return softnessDb;
    }
    return kUsualSoftnessDb;
}

double LoudnessForecast::gainFor(double wanted, double lowestDb, double highestDb) const {
    return solve(lowestDb, highestDb, wanted, [&](double gainDb) { return lufs(gainDb); });
}

void LoudnessForecast::learn(double gainDb, double reached) {
    softnessDb_ = std::exp(solve(std::log(kLeastSoftnessDb), std::log(kMostSoftnessDb), reached,
                                 [&](double logarithm) { return lufs(gainDb, std::exp(logarithm)); }));
}

}  // namespace vanta
