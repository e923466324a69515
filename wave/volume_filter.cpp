#include "wave/volume_filter.hpp"

#include "foundation/numbers.hpp"
#include "kernel/mix.hpp"

namespace vanta::wave {

void VolumeFilter::produce(BasicBlock<float>* block, int samples, int flags) {
    if (muteTest && muteTest->muted()) {
        publishSilence();
    } else {
        Filter::produce(block, samples, flags);
    }
}

void VolumeFilter::process(const BasicBlock<float>& in, BasicBlock<float>* out, int samples, int) {
    const auto count = static_cast<std::size_t>(samples);
    const float* gains = gain.pullData(samples);
    const bool constant = gain.isConstant();
    if (constant && nearlyEqual(gains[0], 0.0f)) {
        publishSilence();
        return;
    }
    const float* second = secondGain ? secondGain->pullData(samples) : nullptr;
    if (source->isConstant() && in[0] == 0.0f) {
        // Whatever the gains do: a release that still fades keeps nothing behind it busy.
        publishSilence();
    } else if (constant && nearlyEqual(gains[0], 1.0f)) {
        if (second) {
            kernel::multiply(in.data(), second, out->data(), count);
        } else {
            publishInput();
        }
    } else if (second) {
        kernel::multiplyTwice(in.data(), gains, second, out->data(), count);
    } else if (constant) {
        kernel::scale(in.data(), gains[0], out->data(), count);
    } else {
        kernel::multiply(in.data(), gains, out->data(), count);
    }
}

}  // namespace vanta::wave
