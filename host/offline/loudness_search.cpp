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
/// How much of what is missing a step takes on while the other side is unknown.
constexpr double kReach = 1.5;

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
        return !found.reached && found.passes < target.mostPasses && !atAnEnd(gainDb, off);
    }

    double nextGain() const {
        if (!above.known) return limited(below.gainDb - kReach * below.weight);
        if (!below.known) return limited(above.gainDb - kReach * above.weight);
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
    bool atAnEnd(double gainDb, double off) const {
        return off > 0.0 ? gainDb <= target.lowestGainDb : gainDb >= target.highestGainDb;
    }

    const LoudnessTarget& target;
    LoudnessFound found;
    Side below;
    Side above;
    const Side* last = nullptr;
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
