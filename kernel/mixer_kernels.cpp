#include "kernel/mixer_kernels.hpp"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernel/mixer_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <hwy/contrib/math/math-inl.h>

#include "kernel/vector_loop.hpp"

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// One to three terms in one pass, on top of what `out` holds or from nothing.
template <std::size_t kTerms, bool kOnTop, bool kConstant>
HWY_INLINE void sumGroup(const MixTerm* terms, float* out, std::size_t count) {
    float constants[kTerms];
    for (std::size_t t = 0; t < kTerms; ++t) constants[t] = terms[t].gain[0];
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto gain = [&](std::size_t t) HWY_ATTR {
            return kConstant ? hn::Set(d, constants[t]) : hn::LoadU(d, terms[t].gain + i);
        };
        const auto first = hn::LoadU(d, terms[0].signal + i);
        auto sum = kOnTop ? hn::MulAdd(first, gain(0), hn::LoadU(d, out + i)) : hn::Mul(first, gain(0));
        if constexpr (kTerms > 1) sum = hn::MulAdd(hn::LoadU(d, terms[1].signal + i), gain(1), sum);
        if constexpr (kTerms > 2) sum = hn::MulAdd(hn::LoadU(d, terms[2].signal + i), gain(2), sum);
        hn::StoreU(sum, d, out + i);
    });
}

template <std::size_t kTerms, bool kOnTop>
HWY_INLINE void sumGroup(const MixTerm* terms, float* out, std::size_t count) {
    const bool constant =
        std::all_of(terms, terms + kTerms, [](const MixTerm& term) { return term.constantGain; });
    if (constant) {
        sumGroup<kTerms, kOnTop, true>(terms, out, count);
    } else {
        sumGroup<kTerms, kOnTop, false>(terms, out, count);
    }
}

template <bool kOnTop>
HWY_INLINE std::size_t sumNext(const MixTerm* terms, std::size_t left, float* out, std::size_t count) {
    if (left >= 3) {
        sumGroup<3, kOnTop>(terms, out, count);
        return 3;
    }
    if (left == 2) {
        sumGroup<2, kOnTop>(terms, out, count);
        return 2;
    }
    sumGroup<1, kOnTop>(terms, out, count);
    return 1;
}

void sumProducts(std::span<const MixTerm> terms, float* out, std::size_t count) {
    if (terms.empty()) {
        mapBlocks(out, count, [](auto d) { return hn::Zero(d); });
        return;
    }
    std::size_t done = sumNext<false>(terms.data(), terms.size(), out, count);
    while (done < terms.size()) {
        done += sumNext<true>(terms.data() + done, terms.size() - done, out, count);
    }
}

void subtractProduct(const float* a, const float* b, const float* c, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto, auto x, auto y, auto z) { return hn::NegMulAdd(y, z, x); }, a, b, c);
}

void maximumMagnitude(const float* a, const float* b, const float* c, float* out, std::size_t count) {
    const auto larger = [](auto, auto x, auto y, auto z) { return hn::Max(x, hn::Mul(hn::Abs(y), z)); };
    mapBlocks(out, count, larger, a, b, c);
}

void maximumProduct(const float* a, const float* b, const float* c, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto, auto x, auto y, auto z) { return hn::Max(x, hn::Mul(y, z)); }, a, b, c);
}

void minimumProduct(const float* a, const float* b, const float* c, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto, auto x, auto y, auto z) { return hn::Min(x, hn::Mul(y, z)); }, a, b, c);
}

void divideLimited(const float* a, const float* b, const float* c, float* out, std::size_t count) {
    const auto divide = [](auto d, auto x, auto y, auto z) {
        const auto zero = hn::Zero(d);
        const auto divisor = hn::Abs(hn::Mul(y, z));
        const auto nothing = hn::Eq(divisor, zero);
        // Dividing by 1 instead of 0 keeps 0 / 0 out; the result is not used.
        const auto safe = hn::IfThenElse(nothing, hn::Set(d, 1.0f), divisor);
        const auto limited = hn::Min(hn::Max(hn::Div(x, safe), zero), hn::Set(d, 1.0f));
        return hn::IfThenZeroElse(nothing, limited);
    };
    mapBlocks(out, count, divide, a, b, c);
}

void divideFloored(const float* a, const float* b, const float* c, float* out, std::size_t count) {
    const auto divide = [](auto d, auto x, auto y, auto z) {
        const auto floor = hn::Set(d, 1e-9f);
        const auto divisor = hn::Abs(hn::Mul(y, z));
        const auto quotient = hn::Div(hn::Max(x, floor), hn::Max(divisor, floor));
        return hn::Min(quotient, hn::Set(d, 3.4028234e38f));
    };
    mapBlocks(out, count, divide, a, b, c);
}

void mixBothFull(const float* a, const float* b, const float* c, float* out, std::size_t count) {
    const auto mix = [](auto d, auto x, auto y, auto position) {
        const auto one = hn::Set(d, 1.0f);
        const auto gainX = hn::Sub(one, hn::Max(position, hn::Zero(d)));
        const auto gainY = hn::Add(one, hn::Min(position, hn::Zero(d)));
        return hn::MulAdd(y, gainY, hn::Mul(x, gainX));
    };
    mapBlocks(out, count, mix, a, b, c);
}

void mixLinear(const float* a, const float* b, const float* c, float* out, std::size_t count) {
    const auto mix = [](auto d, auto x, auto y, auto position) {
        const auto half = hn::Set(d, 0.5f);
        const auto gainY = hn::MulAdd(position, half, half);
        const auto gainX = hn::Sub(hn::Set(d, 1.0f), gainY);
        return hn::MulAdd(y, gainY, hn::Mul(x, gainX));
    };
    mapBlocks(out, count, mix, a, b, c);
}

void mixConstantPower(const float* a, const float* b, const float* c, float* out, std::size_t count) {
    const auto mix = [](auto d, auto x, auto y, auto position) {
        const auto way = hn::Add(hn::Set(d, 1.0f), position);
        const auto angle = hn::Mul(way, hn::Set(d, 0.78539816339744831f));
        // The cosine, for 1 less the square of the sine would lose its digits near the end.
        const auto gainX = hn::Abs(hn::Cos(d, angle));
        const auto gainY = hn::Sin(d, angle);
        return hn::MulAdd(y, gainY, hn::Mul(x, gainX));
    };
    mapBlocks(out, count, mix, a, b, c);
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

VANTA_KERNEL(sumProducts);
VANTA_KERNEL(subtractProduct);
VANTA_KERNEL(maximumMagnitude);
VANTA_KERNEL(maximumProduct);
VANTA_KERNEL(minimumProduct);
VANTA_KERNEL(divideLimited);
VANTA_KERNEL(divideFloored);
VANTA_KERNEL(mixBothFull);
VANTA_KERNEL(mixLinear);
VANTA_KERNEL(mixConstantPower);

}  // namespace vanta::kernel
#endif
