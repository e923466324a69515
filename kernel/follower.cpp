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

/// 1 - exp(-y) for 0 <= y <= 0.5, where the difference itself would lose digits: the series, to y^8.
template <class D, class V>
HWY_INLINE V shortStep(D d, V y) {
    auto p = hn::Set(d, -1.0f / 40320);
    p = hn::MulAdd(p, y, hn::Set(d, 1.0f / 5040));
    p = hn::MulAdd(p, y, hn::Set(d, -1.0f / 720));
    p = hn::MulAdd(p, y, hn::Set(d, 1.0f / 120));
    p = hn::MulAdd(p, y, hn::Set(d, -1.0f / 24));
    p = hn::MulAdd(p, y, hn::Set(d, 1.0f / 6));
    p = hn::MulAdd(p, y, hn::Set(d, -0.5f));
    p = hn::MulAdd(p, y, hn::Set(d, 1.0f));
    return hn::Mul(p, y);
}

void followerCoefficients(const float* seconds, float sampleRate, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto one = hn::Set(d, 1.0f);
        const auto samples = hn::Mul(hn::LoadU(d, seconds + i), hn::Set(d, sampleRate));
        // The floor is where exp has long become 0; it also catches times that are 0 or negative.
        const auto y =
            hn::Div(hn::Set(d, static_cast<float>(kFollowerDecay)), hn::Max(samples, hn::Set(d, 0.0261658f)));
        const auto difference = hn::Sub(one, vectorExp(d, hn::Neg(y)));
        const auto isShort = hn::Le(y, hn::Set(d, 0.5f));
        hn::StoreU(hn::IfThenElse(isShort, shortStep(d, hn::Min(y, one)), difference), d, out + i);
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
