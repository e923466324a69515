#include "dsp/mixer/static_mixer.hpp"

#include "foundation/numbers.hpp"
#include "kernel/mix.hpp"

namespace vanta {

void StaticMixer::produce(wave::BasicBlock<float>* block, int samples, int) {
    const auto count = static_cast<std::size_t>(samples);
    float* own = block->data();
    const wave::Producer* only = nullptr;  // so far one input alone, at unity
    bool summed = false;                   // the own block holds the sum so far
    bool constant = true;                  // so far; of a sum one sample is then computed
    for (const Input& entry : inputs_) {
        if (!entry.input) continue;
        const float* x = entry.input->pullData(samples);
        if (constant && !entry.input->isConstant()) {
            constant = false;
            if (summed) kernel::fill(own[0], own, count);
        }
        const bool unity = nearlyEqual(entry.gain, 1.0f);
        if (!only && !summed && unity) {
            only = entry.input;
            continue;
        }
        const std::size_t work = constant ? 1 : count;
        const float* sum = only ? only->current().data() : own;
        if (!only && !summed) {
            kernel::scale(x, entry.gain, own, work);
        } else if (unity) {
            kernel::add(sum, x, own, work);
        } else {
            kernel::addScaled(sum, x, entry.gain, own, work);
        }
        only = nullptr;
        summed = true;
    }
    if (only) {
        publish(*only);
    } else if (!summed) {
        publishSilence();
    } else if (constant) {
        kernel::fill(own[0], own, count);
        setConstant(true);
    }
}

}  // namespace vanta
