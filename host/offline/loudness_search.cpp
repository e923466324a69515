#include "host/offline/loudness_search.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

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

/// A pass on one side of the target. The Illinois rule halves `weight` while its side stays.
struct Side {
    double gainDb = 0.0;
    double weight = 0.0;  ///< LU from the target, positive above it
    bool known = false;
};

class Search {
public:
    explicit Search(const LoudnessTarget& wanted) : target(wanted) {}

    /// False when there is nothing left to try.
    bool note(double gainDb, std::optional<double> lufs) {
        ++found.passes;
        const double off = lufs.value_or(kGateLufs) - target.lufs;
        if (std::abs(off) < nearest) {
            nearest = std::abs(off);
            found.gainDb = gainDb;
            found.lufs = lufs;
        }
        found.reached = found.lufs && nearest <= target.toleranceLu;
        place(gainDb, off);
        follow(gainDb, off);
        return !found.reached && found.passes < target.mostPasses && !atAnEnd(gainDb, off);
    }

    double nextGain() const {
        if (!above.known || !below.known) return limited(gain - kReach * missedBy / slope);
        const double share = below.weight / (below.weight - above.weight);
        return below.gainDb + share * (above.gainDb - below.gainDb);
    }
    bool narrow() const { return above.known && below.known && above.gainDb - below.gainDb < kFinestGainDb; }
    double limited(double gainDb) const {
        return std::clamp(gainDb, target.lowestGainDb, target.highestGainDb);
    }
    const LoudnessFound& result() const { return found; }

private:
    void place(double gainDb, double off) {
        Side& side = off > 0.0 ? above : below;
        Side& other = off > 0.0 ? below : above;
        if (&side == last && other.known) other.weight *= 0.5;
        side = {gainDb, off, true};
        last = &side;
    }
    void follow(double gainDb, double off) {
        if (found.passes > 1 && gainDb != gain)
            slope = std::max((off - missedBy) / (gainDb - gain), kLeastSlope);
        gain = gainDb;
        missedBy = off;
    }
    bool atAnEnd(double gainDb, double off) const {
        return off > 0.0 ? gainDb <= target.lowestGainDb : gainDb >= target.highestGainDb;
    }

    const LoudnessTarget& target;
    LoudnessFound found;
    Side below;
    Side above;
    const Side* last = nullptr;
    double gain = 0.0;  ///< of the last pass
    double missedBy = 0.0;
    double slope = kUsualSlope;  ///< LU per dB
    double nearest = std::numeric_limits<double>::infinity();
};

}  // namespace

LoudnessFound findLoudness(const LoudnessTarget& target,
                           const std::function<std::optional<double>(double gainDb)>& loudnessOf) {
    Search search(target);
    double gainDb = search.limited(target.firstGainDb);
    while (search.note(gainDb, loudnessOf(gainDb)) && !search.narrow()) gainDb = search.nextGain();
    return search.result();
}

}  // namespace vanta
