#pragma once

#include <vector>

#include "dsp/metering/loudness.hpp"
#include "foundation/realtime.hpp"

namespace vanta {

/// Ends of a loudness range in LUFS; both kNoLoudness if there is none.
struct LoudnessRange {
    float low = kNoLoudness;
    float high = kNoLoudness;
};

/// A histogram of block levels in steps of 0.01 LU from -70 LUFS up, which is a balanced tree at the same
/// time: gated means and percentiles cost the same however long the programme runs (EBU R128, Tech 3342).
class LoudnessGate {
public:
    static constexpr int kBins = 8192;

    struct Total {
        double sum = 0.0;  ///< of mean squares
        int count = 0;
    };

    /// Blocks of `strideCount` strides of 100 ms.
    explicit LoudnessGate(int strideCount);

    /// Forgets everything. The bins are cleared along with the samples that follow.
    VANTA_REALTIME void reset(double sampleRate);
    /// Takes in a stream of mean squares over the window: a value once it is full, then one every 100 ms.
    /// Returns whether one was due.
    VANTA_REALTIME bool feed(const float* meanSquares, int count);
    /// What lies at or above a threshold relative to the mean of all, in LU. Nothing while the bins are
    /// cleared.
    VANTA_REALTIME Total query(double relativeThreshold) const;
    /// The level, in LUFS, that `rank` values lie above.
    VANTA_REALTIME float levelAtRank(int rank) const;
    /// The mean square of what lies above the gate of ITU-R BS.1770-4; 0 if nothing does.
    VANTA_REALTIME double gatedMeanSquare() const;
    /// The levels between which the loudness of the programme moves, EBU Tech 3342.
    VANTA_REALTIME LoudnessRange range() const;

    /// Adds the values of another measurement, as if both were one. Set-up: clears what is left to clear.
    void merge(const LoudnessGate& other);

private:
    struct LoudnessBin {
        int leafCount = 0;     ///< of the bin
        int subtreeCount = 0;  ///< of the tree node with this index
        double subtreeSum = 0.0;
    };

    static constexpr int kRoot = kBins / 2;

    LoudnessBin& at(int index) { return bins_[static_cast<std::size_t>(index)]; }
    const LoudnessBin& at(int index) const { return bins_[static_cast<std::size_t>(index)]; }
    void clearUpTo(int end);
    void take(float meanSquare);
    void addBin(int index, Total& total) const;

    int blocks_;
    int size_ = 4410;    ///< samples of a stride
    int untilNext_ = 0;  ///< samples until the next value is due
    int cleared_ = 0;    ///< bins that are clean
    std::vector<LoudnessBin> bins_;
};

}  // namespace vanta
