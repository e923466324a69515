#include "kernel/convolver_kernels.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernel/convolver_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "kernel/vector_loop.hpp"

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// The sums of a vector of bins stay in registers over all pairs.
template <std::size_t Count>
HWY_INLINE void multiplyBins(const SpectrumPair* pairs, float* sum, std::size_t half, std::size_t begin,
                             std::size_t end, bool accumulate) {
    SpectrumPair local[Count];
    for (std::size_t j = 0; j < Count; ++j) local[j] = {pairs[j].input + begin, pairs[j].kernel + begin};
    sum += begin;
    vectorLoop(end - begin, [&](auto d, std::size_t k) {
        auto re = accumulate ? hn::LoadU(d, sum + k) : hn::Zero(d);
        auto im = accumulate ? hn::LoadU(d, sum + half + k) : hn::Zero(d);
        for (std::size_t j = 0; j < Count; ++j) {
            const auto xr = hn::LoadU(d, local[j].input + k), xi = hn::LoadU(d, local[j].input + half + k);
            const auto hr = hn::LoadU(d, local[j].kernel + k), hi = hn::LoadU(d, local[j].kernel + half + k);
            re = hn::NegMulAdd(xi, hi, hn::MulAdd(xr, hr, re));
            im = hn::MulAdd(xi, hr, hn::MulAdd(xr, hi, im));
        }
        hn::StoreU(re, d, sum + k);
        hn::StoreU(im, d, sum + half + k);
    });
}

void multiplySpectra(const SpectrumPair* pairs, std::size_t count, float* sum, std::size_t half,
                     std::size_t begin, std::size_t end, bool accumulate) {
    // The two real bins share a slot, for which the loop over complex bins computes nonsense.
    float dc = accumulate && begin == 0 ? sum[0] : 0.0f;
    float nyquist = accumulate && begin == 0 ? sum[half] : 0.0f;
    switch (count) {
        case 1:
            multiplyBins<1>(pairs, sum, half, begin, end, accumulate);
            break;
        case 2:
            multiplyBins<2>(pairs, sum, half, begin, end, accumulate);
            break;
        case 3:
            multiplyBins<3>(pairs, sum, half, begin, end, accumulate);
            break;
        default:
            multiplyBins<4>(pairs, sum, half, begin, end, accumulate);
            break;
    }
    if (begin != 0 || end == 0) return;
    for (std::size_t j = 0; j < count; ++j) {
        dc += pairs[j].input[0] * pairs[j].kernel[0];
        nyquist += pairs[j].input[half] * pairs[j].kernel[half];
    }
    sum[0] = dc;
    sum[half] = nyquist;
}

void fir(const float* in, const float* taps, std::size_t tapCount, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        auto sum = hn::Zero(d);
        const float* x = in + i;
        for (std::size_t j = 0; j < tapCount; ++j, --x) {
            sum = hn::MulAdd(hn::Set(d, taps[j]), hn::LoadU(d, x), sum);
        }
        hn::StoreU(sum, d, out + i);
    });
}

void crossfadeStretch(const float* from, float* to, float first, float length, std::size_t count) {
    const float step = 1.0f / length;
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto place = hn::Iota(d, first + static_cast<float>(i));
        const auto gain = hn::Mul(place, hn::Set(d, step));
        const auto a = hn::LoadU(d, from + i);
        hn::StoreU(hn::MulAdd(hn::Sub(hn::LoadU(d, to + i), a), gain, a), d, to + i);
    });
}

void addConstant(const float* a, float offset, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        hn::StoreU(hn::Add(hn::LoadU(d, a + i), hn::Set(d, offset)), d, out + i);
    });
}

bool allEqual(const float* a, std::size_t count) {
    const hn::ScalableTag<float> d;
    const std::size_t lanes = hn::Lanes(d);
    if (count == 0) return true;
    const auto first = hn::Set(d, a[0]);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        if (!hn::AllTrue(d, hn::Eq(hn::LoadU(d, a + i), first))) return false;
    }
    // Written so that a NaN alone in a block is different from itself.
    for (; i < count; ++i) {
        if (!(a[i] <= a[0] && a[i] >= a[0])) return false;
    }
    return true;
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

VANTA_KERNEL(multiplySpectra);
VANTA_KERNEL(fir);
VANTA_KERNEL(crossfadeStretch);
VANTA_KERNEL(addConstant);
VANTA_KERNEL(allEqual);

}  // namespace vanta::kernel
#endif
