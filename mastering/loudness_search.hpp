#pragma once

#include <limits>
#include <optional>

namespace vanta {

/// What loudness is wanted, and where to look for it.
struct LoudnessTarget {
    double lufs = -14.0;
    double toleranceLu = 0.05;  ///< how near is near enough
    double lowestGainDb = 0.0;
    double highestGainDb = 30.0;
    double firstGainDb = 0.0;  ///< where to begin; limited to the range
};

/// Looks for the gain at which a limited programme has a loudness. The loudness grows with the gain, at most
/// dB for dB and less the harder is limited: steps follow the slope of the last two passes, and once the
/// target lies between two of them, false position with the Illinois rule (Dowell and Jarratt, 1971) closes
/// in.
class LoudnessSearch {
public:
    enum class State { Searching, Reached, OutOfReach };

    explicit LoudnessSearch(const LoudnessTarget& target);

    /// What to try next, or again.
    double gainDb() const { return gain_; }
    /// What a pass at `gainDb()` gave; nothing if it lies below the gate. `Reached`: this gain is
    /// within the tolerance. `OutOfReach`: it is the end of the range, or there is nothing left between the
    /// passes.
    State note(std::optional<double> lufs);

private:
    /// A pass on one side of the target. The Illinois rule halves `weight` while the other side stays.
    struct Side {
        double gainDb = 0.0;
        double weight = 0.0;  ///< LU from the target, positive above it
        bool known = false;
    };

    double limited(double gainDb) const;
    void place(double missedBy);
    void follow(double missedBy);
    bool isSpent(double missedBy) const;
    double nextGain() const;

    LoudnessTarget target_;
    Side below_;
    Side above_;
    const Side* last_ = nullptr;
    double gain_;
    double lastGain_ = std::numeric_limits<double>::quiet_NaN();
    double lastMiss_ = 0.0;
    double slope_;  ///< LU per dB
};

}  // namespace vanta
