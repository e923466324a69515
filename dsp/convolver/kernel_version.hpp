#pragma once

#include <cstdint>
#include <vector>

#include "dsp/convolver/convolver_plan.hpp"
#include "wave/aligned_buffer.hpp"

namespace vanta {

/// One state of a kernel: its taps, and their spectra for every partition of every stage.
class KernelVersion {
public:
    explicit KernelVersion(const ConvolverPlan& plan);

    /// The spectrum of a partition; stages count from the outermost one.
    float* spectrum(int stage, int partition) {
        const Spectra& own = stages_[static_cast<std::size_t>(stage)];
        return bins_.data() + own.start + partition * own.size;
    }
    const float* spectrum(int stage, int partition) const {
        return const_cast<KernelVersion*>(this)->spectrum(stage, partition);
    }

    /// Keeps this version from being rewritten up to the stream position `until`.
    void lease(std::int64_t until) {
        if (until > readyAt) readyAt = until;
    }

    wave::AlignedBuffer<float> taps;  ///< zero from `length` on
    int length = 0;
    std::int64_t readyAt = 0;     ///< the stream position before which nothing here may be rewritten
    std::int64_t countsFrom = 0;  ///< the stream position from which on it is the newest

private:
    struct Spectra {
        int start;
        int size;
    };

    std::vector<Spectra> stages_;
    wave::AlignedBuffer<float> bins_;
};

}  // namespace vanta
