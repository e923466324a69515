#include "kernel/signal_steps.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernel/signal_steps.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

template <class D, class M>
HWY_INLINE std::uint64_t bitsOf(D d, M mask) {
    std::uint64_t bits = 0;
    hn::StoreMaskBits(d, mask, reinterpret_cast<std::uint8_t*>(&bits));
    return bits;
}

SignalSteps signalSteps(const float* in, float before, float within, std::size_t count) {
    SignalSteps inside;  // bit i: from sample i to sample i + 1
    const auto look = [&](auto d, std::size_t i) {
        const auto from = hn::LoadU(d, in + i);
        const auto to = hn::LoadU(d, in + i + 1);
        inside.notRising |= bitsOf(d, hn::Le(hn::Sub(to, from), hn::Set(d, within))) << i;
        inside.falling |= bitsOf(d, hn::Lt(to, from)) << i;
    };
    const hn::ScalableTag<float> wide;
    const hn::CappedTag<float, 1> single;
    const std::size_t lanes = hn::Lanes(wide);
    const std::size_t steps = count - 1;
    if (steps >= lanes) {
        for (std::size_t i = 0; i + lanes < steps; i += lanes) look(wide, i);
        // The last vector may look at steps again that have been seen: they say the same.
        look(wide, steps - lanes);
    } else {
        for (std::size_t i = 0; i < steps; ++i) look(single, i);
    }
    return {inside.notRising << 1 | std::uint64_t{in[0] - before <= within},
            inside.falling << 1 | std::uint64_t{in[0] < before}};
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

VANTA_KERNEL(signalSteps);

}  // namespace vanta::kernel
#endif
