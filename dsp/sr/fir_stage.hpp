#pragma once

#include "dsp/sr/half_band_design.hpp"
#include "dsp/sr/stage_lines.hpp"
#include "foundation/realtime.hpp"

namespace vanta::sr {

/// One doubling or halving of the rate: what it needs of its past input, and the taps that it reads. The
/// higher of its two rates is `ratio` times the base rate.
class FIRStage {
public:
    /// Room for filters of up to `longestLength` taps.
    FIRStage(int ratio, int longestLength);

    /// Takes the taps, which the caller keeps alive, and starts anew from silence.
    void prepare(const CoefficientSet& set);
    /// Starts anew from silence.
    VANTA_REALTIME void reset() { past_.clear(); }

    // The input stands in a line, from its `input()` on. What the line holds in front of it is overwritten.

    /// `count` samples in, twice as many out. Taps are a polyphase branch.
    VANTA_REALTIME void interpolate(StageLine line, float* out, int count);
    /// Twice `count` samples in, `count` samples out. Taps are a full filter. The scratch holds
    /// kernel::decimatorScratch floats.
    VANTA_REALTIME void decimate(StageLine line, float* scratch, float* out, int count);

    int ratio() const { return ratio_; }
    int longestLength() const { return longestLength_; }
    /// Samples of past input, at most, that a stage of this kind puts in front of its input.
    static int mostPast(int ratio, int longestLength) {
        // It reads late by less than its ratio.
        return longestLength - 1 + ratio;
    }
    /// How many samples in front of an input the output of a stage with that set depends on.
    static int reachOf(const CoefficientSet& set, int ratio);
    /// Samples of the base rate, at most, that are remembered of the input.
    int memory() const { return 2 * past_.size() / ratio_ + 1; }

private:
    VANTA_REALTIME const float* continueIn(StageLine line, int count);

    wave::AlignedBuffer<float> past_;  ///< the newest input, oldest first
    const CoefficientSet* set_ = nullptr;
    int longestLength_;
    int ratio_;
    int reach_ = 0;
};

}  // namespace vanta::sr
