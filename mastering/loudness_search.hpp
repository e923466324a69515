#pragma once

#include <optional>
#include <vector>

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
/// dB for dB and less the harder is limited; driven too hard, some programmes get softer again. Steps follow
/// the slope of the passes so far. Once the target lies between two of them, inverse quadratic interpolation
/// closes in (R. P. Brent, 1973); where it lies above all of them, the search closes in on the loudest.
class LoudnessSearch {
public:
    enum class State { Searching, Reached, OutOfReach };

    explicit LoudnessSearch(const LoudnessTarget& target);

    /// What to try next, or again. After `OutOfReach`, the gain that comes nearest to the target.
    double gainDb() const { return gain_; }
    /// A better guess than its own, for the next pass.
    void propose(double gainDb) { gain_ = limited(gainDb); }
    /// Of the nearest pass so far, in LUFS.
    double nearestLufs() const { return passes_[nearest()].missedBy + target_.lufs; }
    /// What a pass at `gainDb()` gave; nothing if it lies below the gate. `Reached`: this gain is
    /// within the tolerance. `OutOfReach`: no gain of the range gives the loudness.
    State note(std::optional<double> lufs);

private:
    struct Pass {
        double gainDb = 0.0;
        double missedBy = 0.0;  ///< LU from the target, positive above it
    };

    double limited(double gainDb) const;
    void keep(Pass pass);
    /// The first pass above the target that follows one below it; `passes_.size()` if there is none.
    std::size_t firstRise() const;
    std::size_t nearest() const;
    std::optional<double> nextGain() const;
    std::optional<double> nextBetween(std::size_t above) const;
    std::optional<double> nextBelowAll() const;
    std::optional<double> nextAboveAll() const;
    std::optional<double> nextTowardsTop(std::size_t loudest) const;

    LoudnessTarget target_;
    std::vector<Pass> passes_;  ///< in the order of their gains
    double gain_;
};

}  // namespace vanta
