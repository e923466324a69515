#pragma once

#include "dsp/sr/half_band_design.hpp"
#include "wave/mirrored_ring.hpp"

namespace vanta::sr {

/// One doubling or halving of the rate: the newest samples of its input and the taps that it reads. The
/// higher of its two rates is `ratio` times the base rate.
class FIRStage {
public:
    /// Room for filters of up to `longestLength` taps and blocks of `maxBlock` samples of the base rate.
    FIRStage(int ratio, int longestLength, int maxBlock);

    /// Takes the taps, which the caller keeps alive, and starts anew from silence.
    void prepare(const CoefficientSet& set);
    /// Starts anew from silence.
    VANTA_REALTIME void reset() { ring_.clear(); }
    /// `count` samples in, twice as many out. Taps are a polyphase branch.
    VANTA_REALTIME void interpolate(const float* in, float* out, int count);
    /// As `interpolate`, but only the larger magnitude of each pair comes out.
    VANTA_REALTIME void interpolatePeaks(const float* in, float* out, int count);
    /// Twice `count` samples in, `count` samples out. Taps are a full filter.
    VANTA_REALTIME void decimate(const float* in, float* out, int count);

    int ratio() const { return ratio_; }
    /// Samples of the stage's input by which it reads late, so that its delay is a whole number of samples of
    /// the base rate.
    int pad() const { return pad_; }
    int longestLength() const { return longestLength_; }
    /// Samples of the base rate, at most, that are remembered of the input.
    int memory() const { return 2 * ring_.size() / ratio_ + 1; }

private:
    VANTA_REALTIME const float* write(const float* in, int count);

    wave::MirroredRing ring_;
    wave::AlignedBuffer<float> scratch_;
    const CoefficientSet* set_ = nullptr;
    int longestLength_;
    int ratio_;
    int pad_ = 0;
};

}  // namespace vanta::sr
