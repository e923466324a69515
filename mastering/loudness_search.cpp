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
/// A longer step could pass over the loudest gain and the target with it.
constexpr double kLongestStepDb = 8.0;
/// The loudest gain is known well enough when its neighbours are this near: its top is round.
constexpr double kTopWidthDb = 1.5;
/// A top that a parabola puts this far below the target is no use.
constexpr double kHopelessLu = 0.3;

}  // namespace

LoudnessSearch::LoudnessSearch(const LoudnessTarget& target)
    : target_(target), gain_(limited(target.firstGainDb)) {}

LoudnessSearch::State LoudnessSearch::note(std::optional<double> lufs) {
    const double missedBy = lufs.value_or(kGateLufs) - target_.lufs;
    keep({gain_, missedBy});
    if (lufs && std::abs(missedBy) <= target_.toleranceLu) return State::Reached;
    const auto next = nextGain();
    gain_ = next.value_or(passes_[nearest()].gainDb);
    return next ? State::Searching : State::OutOfReach;
}

double LoudnessSearch::limited(double gainDb) const {
    return std::clamp(gainDb, target_.lowestGainDb, target_.highestGainDb);
}

void LoudnessSearch::keep(Pass pass) {
    const auto at = std::ranges::lower_bound(passes_, pass.gainDb, {}, &Pass::gainDb);
    if (at != passes_.end() && at->gainDb == pass.gainDb) {
        *at = pass;
    } else {
        passes_.insert(at, pass);
    }
}

std::size_t LoudnessSearch::firstRise() const {
    for (std::size_t i = 1; i < passes_.size(); ++i) {
        if (passes_[i].missedBy > 0.0 && passes_[i - 1].missedBy <= 0.0) return i;
    }
    return passes_.size();
}

std::size_t LoudnessSearch::nearest() const {
    const auto at =
        std::ranges::min_element(passes_, {}, [](const Pass& pass) { return std::abs(pass.missedBy); });
    return static_cast<std::size_t>(at - passes_.begin());
}

std::optional<double> LoudnessSearch::nextGain() const {
    if (passes_.front().missedBy > 0.0) return nextBelowAll();
    const std::size_t above = firstRise();
    return above < passes_.size() ? nextBetween(above) : nextAboveAll();
}

std::optional<double> LoudnessSearch::nextBetween(std::size_t above) const {
    const Pass& low = passes_[above - 1];
    const Pass& high = passes_[above];
    const double width = high.gainDb - low.gainDb;
    if (width < kFinestGainDb) return {};
    const double straight = low.gainDb - low.missedBy * width / (high.missedBy - low.missedBy);
    // A third pass shows how the line between the two bends.
    const bool hasLower = above >= 2;
    if (!hasLower && above + 1 == passes_.size()) return straight;
    const Pass& third = hasLower ? passes_[above - 2] : passes_[above + 1];
    const auto term = [](const Pass& a, const Pass& b, const Pass& c) {
        return a.gainDb * b.missedBy * c.missedBy / ((a.missedBy - b.missedBy) * (a.missedBy - c.missedBy));
    };
    const double bent = term(low, high, third) + term(high, low, third) + term(third, low, high);
    return bent > low.gainDb + 0.02 * width && bent < high.gainDb - 0.02 * width ? bent : straight;
}

std::optional<double> LoudnessSearch::nextBelowAll() const {
    const Pass& lowest = passes_.front();
    if (lowest.gainDb <= target_.lowestGainDb) return {};
    double slope = kUsualSlope;
    if (passes_.size() > 1 && passes_[1].gainDb - lowest.gainDb >= kFinestGainDb)
        slope = (passes_[1].missedBy - lowest.missedBy) / (passes_[1].gainDb - lowest.gainDb);
    return limited(lowest.gainDb - kReach * lowest.missedBy / std::clamp(slope, kLeastSlope, 1.0));
}

std::optional<double> LoudnessSearch::nextAboveAll() const {
    const std::size_t loudest = nearest();
    const Pass& best = passes_[loudest];
    const bool isLast = loudest + 1 == passes_.size();
    if (isLast && best.gainDb < target_.highestGainDb) {
        double slope = kUsualSlope;
        if (loudest > 0 && best.gainDb - passes_[loudest - 1].gainDb >= kFinestGainDb) {
            const Pass& before = passes_[loudest - 1];
            slope = (best.missedBy - before.missedBy) / (best.gainDb - before.gainDb);
        }
        const double step = -kReach * best.missedBy / std::clamp(slope, kLeastSlope, 1.0);
        // Below the gate nothing says how far it is.
        const bool isGated = best.missedBy + target_.lufs <= kGateLufs;
        return limited(best.gainDb + (isGated ? step : std::min(step, kLongestStepDb)));
    }
    return nextTowardsTop(loudest);
}

// The top lies between the neighbours of the loudest pass, or the ends of the range.
std::optional<double> LoudnessSearch::nextTowardsTop(std::size_t loudest) const {
    const Pass& best = passes_[loudest];
    if (best.missedBy + target_.lufs <= kGateLufs) return {};
    const bool isFirst = loudest == 0;
    const bool isLast = loudest + 1 == passes_.size();
    const double left = best.gainDb - (isFirst ? target_.lowestGainDb : passes_[loudest - 1].gainDb);
    const double right = (isLast ? target_.highestGainDb : passes_[loudest + 1].gainDb) - best.gainDb;
    if (std::max(left, right) <= kTopWidthDb) return {};
    const double halved = left > right ? best.gainDb - 0.5 * left : best.gainDb + 0.5 * right;
    if (isFirst || isLast) return halved;
    // The top of a parabola through the three, unless that is where the loudest pass was.
    const double fallLeft = (best.missedBy - passes_[loudest - 1].missedBy) / left;
    const double fallRight = (best.missedBy - passes_[loudest + 1].missedBy) / right;
    if (fallLeft + fallRight <= 0.0) return halved;
    const double shift = 0.5 * (fallLeft * right - fallRight * left) / (fallLeft + fallRight);
    const double height = best.missedBy + shift * shift * (fallLeft + fallRight) / (left + right);
    const bool isNarrow = std::max(left, right) <= kLongestStepDb;
    if (isNarrow && height + (height - best.missedBy) < -kHopelessLu) return {};
    return std::abs(shift) > 0.25 * kTopWidthDb ? best.gainDb + shift : halved;
}

}  // namespace vanta
