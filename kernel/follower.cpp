#include "kernel/follower.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernel/follower.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "kernel/vector_loop.hpp"
#include "kernel/vector_math.hpp"

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

void followerCoefficients(const float* seconds, float sampleRate, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto samples = hn::Mul(hn::LoadU(d, seconds + i), hn::Set(d, sampleRate));
        // The floor is where exp has long become 0; it also catches times that are 0 or negative.
        const auto y =
            hn::Div(hn::Set(d, static_cast<float>(kFollowerDecay)), hn::Max(samples, hn::Set(d, 0.0261658f)));
        hn::StoreU(vectorExpComplement(d, y), d, out + i);
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

VANTA_KERNEL(followerCoefficients);

}  // namespace vanta::kernel
#endif
