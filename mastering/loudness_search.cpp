#include "mastering/loudness_search.hpp"

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

LoudnessSearch::LoudnessSearch(const LoudnessTarget& target)
    : target_(target), gain_(limited(target.firstGainDb)), slope_(kUsualSlope) {}

LoudnessSearch::State LoudnessSearch::note(std::optional<double> lufs) {
    const double missedBy = lufs.value_or(kGateLufs) - target_.lufs;
    place(missedBy);
    follow(missedBy);
    if (lufs && std::abs(missedBy) <= target_.toleranceLu) return State::Reached;
    if (isSpent(missedBy)) return State::OutOfReach;
    gain_ = nextGain();
    return State::Searching;
}

double LoudnessSearch::limited(double gainDb) const {
    return std::clamp(gainDb, target_.lowestGainDb, target_.highestGainDb);
}

void LoudnessSearch::place(double missedBy) {
    Side& side = missedBy > 0.0 ? above_ : below_;
    Side& other = missedBy > 0.0 ? below_ : above_;
    if (&side == last_ && other.known) other.weight *= 0.5;
    side = {gain_, missedBy, true};
    last_ = &side;
}

void LoudnessSearch::follow(double missedBy) {
    if (std::abs(gain_ - lastGain_) >= kFinestGainDb)
        slope_ = std::max((missedBy - lastMiss_) / (gain_ - lastGain_), kLeastSlope);
    lastGain_ = gain_;
    lastMiss_ = missedBy;
}

bool LoudnessSearch::isSpent(double missedBy) const {
    if (missedBy > 0.0 ? gain_ <= target_.lowestGainDb : gain_ >= target_.highestGainDb) return true;
    return above_.known && below_.known && above_.gainDb - below_.gainDb < kFinestGainDb;
}

double LoudnessSearch::nextGain() const {
    if (!above_.known || !below_.known) return limited(gain_ - kReach * lastMiss_ / slope_);
    const double share = below_.weight / (below_.weight - above_.weight);
    return below_.gainDb + share * (above_.gainDb - below_.gainDb);
}

}  // namespace vanta
