#pragma once

#include <cstdint>

#include "dsp/convolver/kernel_version.hpp"

namespace vanta {

/// Which kernel versions a convolver's output is made of: up to `start` it is `from`, then the two are
/// crossfaded over `length` samples, then it is `to`. Times are in samples since the convolver's last
/// restart. All stages follow one transition, so the kernel is complete at every moment of a crossfade.
struct KernelTransition {
    KernelVersion* from = nullptr;  ///< null: no crossfade is under way
    KernelVersion* to = nullptr;
    std::int64_t start = 0;
    int length = 0;

    bool over(std::int64_t time) const { return !from || time >= start + length; }
    /// The version that output at `time` ends on or, before the crossfade, rests on.
    const KernelVersion* main(std::int64_t time) const { return from && time < start ? from : to; }
    /// The version that fades out at `time`, or null.
    const KernelVersion* fading(std::int64_t time) const {
        return time >= start && !over(time) ? from : nullptr;
    }
};

}  // namespace vanta
