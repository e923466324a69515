#include "dsp/convolver/direct_fir.hpp"

#include <algorithm>

#include "kernel/convolver_kernels.hpp"

namespace vanta {

DirectFir::DirectFir(int tapCount, int largestBlock)
    : tapCount_(tapCount), largestBlock_(largestBlock), history_(tapCount + largestBlock) {}

void DirectFir::reset() {
    history_.clear();
}

void DirectFir::process(const ConvolverStretch& stretch, const KernelTransition& transition) {
    int count = 0;
    for (int done = 0; done < stretch.count; done += count) {
        count = std::min(stretch.count - done, largestBlock_);
        const ConvolverStretch part = stretch.part(done, count);
        std::copy_n(part.in, count, history_.data() + tapCount_);
        apply(transition.main(part.time), part.out, count);
        if (part.fadeCount > 0) apply(transition.fading(part.time), part.fade, part.fadeCount);
        std::copy_n(history_.data() + count, tapCount_, history_.data());
    }
}

void DirectFir::apply(const KernelVersion* version, float* out, int count) const {
    if (!version) {
        std::fill_n(out, count, 0.0f);
        return;
    }
    const int taps = std::min(version->length, tapCount_);
    kernel::fir(history_.data() + tapCount_, version->taps.data(), static_cast<std::size_t>(taps), out,
                static_cast<std::size_t>(count));
}

}  // namespace vanta
