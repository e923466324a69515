#pragma once

#include "dsp/convolver/convolver_stage.hpp"

namespace vanta {

/// The first taps of a kernel in the time domain: what gives a convolver without latency its beginning.
class DirectFir {
public:
    /// `tapCount` taps, over blocks of up to `largestBlock` samples at a time.
    DirectFir(int tapCount, int largestBlock);

    VANTA_REALTIME void reset();
    /// Stores into the stretch's outputs.
    VANTA_REALTIME void process(const ConvolverStretch& stretch, const KernelTransition& transition);

private:
    void apply(const KernelVersion* version, float* out, int count) const;

    int tapCount_;
    int largestBlock_;
    wave::AlignedBuffer<float> history_;  ///< tapCount_ samples of the past, then those of the block
};

}  // namespace vanta
