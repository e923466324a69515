#include "host/offline/loudness_search.hpp"

#include <algorithm>
#include <cmath>

namespace vanta {

namespace {

/// Gains nearer than this make no difference that a meter shows.
constexpr double kFinestGainDb = 1e-3;
/// The highest loudness that leaves no reading.
constexpr double kGateLufs = -70.0;
/// What the first step takes for LU per dB: if the first gain missed, the limiter is at work.
constexpr double kUsualSlope = 0.5;
constexpr double kLeastSlope = 0.05;
/// The loudness bends down as the gain grows: a step by the slope so far falls short.
constexpr double kReach = 1.1;

}  // namespace

LoudnessSearch::LoudnessSearch(const LoudnessTarget& wanted)
    : target(wanted), gain(limited(wanted.firstGainDb)), slope(kUsualSlope) {}

LoudnessSearch::State LoudnessSearch::note(std::optional<double> lufs) {
    const double missedBy = lufs.value_or(kGateLufs) - target.lufs;
    place(missedBy);
    follow(missedBy);
    if (lufs && std::abs(missedBy) <= target.toleranceLu) return State::Reached;
    if (isSpent(missedBy)) return State::OutOfReach;
    gain = nextGain();
    return State::Searching;
}

double LoudnessSearch::limited(double gainDb) const {
    return std::clamp(gainDb, target.lowestGainDb, target.highestGainDb);
}

void LoudnessSearch::place(double missedBy) {
    Side& side = missedBy > 0.0 ? above : below;
    Side& other = missedBy > 0.0 ? below : above;
    if (&side == last && other.known) other.weight *= 0.5;
    side = {gain, missedBy, true};
    last = &side;
}

void LoudnessSearch::follow(double missedBy) {
    if (std::abs(gain - lastGain) >= kFinestGainDb)
        slope = std::max((missedBy - lastMiss) / (gain - lastGain), kLeastSlope);
    lastGain = gain;
    lastMiss = missedBy;
}

bool LoudnessSearch::isSpent(double missedBy) const {
    if (missedBy > 0.0 ? gain <= target.lowestGainDb : gain >= target.highestGainDb) return true;
    return above.known && below.known && above.gainDb - below.gainDb < kFinestGainDb;
}

double LoudnessSearch::nextGain() const {
    if (!above.known || !below.known) return limited(gain - kReach * lastMiss / slope);
    const double share = below.weight / (below.weight - above.weight);
    return below.gainDb + share * (above.gainDb - below.gainDb);
}

}  // namespace vanta
