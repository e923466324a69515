#include "dsp/mixer/effect_mixer.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "foundation/numbers.hpp"
#include "kernel/mix.hpp"
#include "kernel/mixer_kernels.hpp"

namespace vanta {

namespace {

struct Gains {
    float a, b;
};

Gains gainsAt(int law, float position) {
    switch (law) {
        case EffectMixer::Linear: {
            const float b = (1.0f + position) * 0.5f;
            return {1.0f - b, b};
        }
        case EffectMixer::ConstantPower: {
            const double b = std::sin((1.0 + position) * std::numbers::pi / 4);
            return {static_cast<float>(std::sqrt(std::max(1.0 - b * b, 0.0))), static_cast<float>(b)};
        }
        default:
            return {1.0f - std::max(position, 0.0f), 1.0f + std::min(position, 0.0f)};
    }
}

void mixMoving(int law, const float* a, const float* b, const float* position, float* out,
               std::size_t count) {
    switch (law) {
        case EffectMixer::Linear:
            return kernel::mixLinear(a, b, position, out, count);
        case EffectMixer::ConstantPower:
            return kernel::mixConstantPower(a, b, position, out, count);
        default:
            return kernel::mixBothFull(a, b, position, out, count);
    }
}

}  // namespace

void EffectMixer::produce(wave::BasicBlock<float>* block, int samples, int) {
    const float* position = mix.pullData(samples);
    const bool steady = mix.isConstant();
    if (steady && nearlyEqual(position[0], -1.0f)) {
        a_.pull(samples);
        publish(a_);
        return;
    }
    if (steady && nearlyEqual(position[0], 1.0f)) {
        b_.pull(samples);
        publish(b_);
        return;
    }
    const float* a = a_.pullData(samples);
    const float* b = b_.pullData(samples);
    const auto count = static_cast<std::size_t>(samples);
    float* out = block->data();
    if (!steady) {
        mixMoving(panningLaw, a, b, position, out, count);
        return;
    }
    const bool constant = a_.isConstant() && b_.isConstant();
    const Gains gains = gainsAt(panningLaw, position[0]);
    const std::array<kernel::MixTerm, 2> terms = {{{a, &gains.a, true}, {b, &gains.b, true}}};
    kernel::sumProducts(terms, out, constant ? 1 : count);
    if (!constant) return;
    kernel::fill(out[0], out, count);
    setConstant(true);
}

}  // namespace vanta
