#include "dsp/kernel/mixer_kernels.hpp"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/kernel/mixer_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <hwy/contrib/math/math-inl.h>

#include "dsp/kernel/vector_loop.hpp"

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// One to three terms in one pass, on top of what stands in `out` or from nothing.
template <std::size_t kTerms, bool kOnTop, bool kConstant>
HWY_INLINE void SumGroup(const MixTerm* terms, float* out, std::size_t count) {
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
HWY_INLINE void SumGroup(const MixTerm* terms, float* out, std::size_t count) {
    const bool constant =
        std::all_of(terms, terms + kTerms, [](const MixTerm& term) { return term.constantGain; });
    if (constant) {
        SumGroup<kTerms, kOnTop, true>(terms, out, count);
    } else {
        SumGroup<kTerms, kOnTop, false>(terms, out, count);
    }
}

template <bool kOnTop>
HWY_INLINE std::size_t SumNext(const MixTerm* terms, std::size_t left, float* out, std::size_t count) {
    if (left >= 3) {
        SumGroup<3, kOnTop>(terms, out, count);
        return 3;
    }
    if (left == 2) {
        SumGroup<2, kOnTop>(terms, out, count);
        return 2;
    }
    SumGroup<1, kOnTop>(terms, out, count);
    return 1;
}

void SumProductsImpl(const MixTerm* terms, std::size_t termCount, float* out, std::size_t count) {
    std::size_t done = SumNext<false>(terms, termCount, out, count);
    while (done < termCount) done += SumNext<true>(terms + done, termCount - done, out, count);
}

void SubtractProductImpl(const float* a, const float* x, const float* gain, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto from = hn::LoadU(d, a + i);
        hn::StoreU(hn::NegMulAdd(hn::LoadU(d, x + i), hn::LoadU(d, gain + i), from), d, out + i);
    });
}

void MaximumMagnitudeImpl(const float* a, const float* x, const float* gain, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto value = hn::Mul(hn::Abs(hn::LoadU(d, x + i)), hn::LoadU(d, gain + i));
        hn::StoreU(hn::Max(hn::LoadU(d, a + i), value), d, out + i);
    });
}

void MaximumProductImpl(const float* a, const float* x, const float* gain, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto value = hn::Mul(hn::LoadU(d, x + i), hn::LoadU(d, gain + i));
        hn::StoreU(hn::Max(hn::LoadU(d, a + i), value), d, out + i);
    });
}

void MinimumProductImpl(const float* a, const float* x, const float* gain, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto value = hn::Mul(hn::LoadU(d, x + i), hn::LoadU(d, gain + i));
        hn::StoreU(hn::Min(hn::LoadU(d, a + i), value), d, out + i);
    });
}

void DivideLimitedImpl(const float* a, const float* x, const float* gain, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto zero = hn::Zero(d);
        const auto divisor = hn::Abs(hn::Mul(hn::LoadU(d, x + i), hn::LoadU(d, gain + i)));
        const auto nothing = hn::Eq(divisor, zero);
        // Dividing by 1 instead of 0 keeps 0 / 0 out; the result is not used.
        const auto safe = hn::IfThenElse(nothing, hn::Set(d, 1.0f), divisor);
        const auto quotient = hn::Div(hn::LoadU(d, a + i), safe);
        const auto limited = hn::Min(hn::Max(quotient, zero), hn::Set(d, 1.0f));
        hn::StoreU(hn::IfThenZeroElse(nothing, limited), d, out + i);
    });
}

void DivideFlooredImpl(const float* a, const float* x, const float* gain, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto floor = hn::Set(d, 1e-9f);
        const auto divisor = hn::Abs(hn::Mul(hn::LoadU(d, x + i), hn::LoadU(d, gain + i)));
        const auto quotient = hn::Div(hn::Max(hn::LoadU(d, a + i), floor), hn::Max(divisor, floor));
        hn::StoreU(hn::Min(quotient, hn::Set(d, 3.4028234e38f)), d, out + i);
    });
}

void MixBothFullImpl(const float* a, const float* b, const float* position, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto m = hn::LoadU(d, position + i);
        const auto one = hn::Set(d, 1.0f);
        const auto gainA = hn::Sub(one, hn::Max(m, hn::Zero(d)));
        const auto gainB = hn::Add(one, hn::Min(m, hn::Zero(d)));
        const auto partA = hn::Mul(hn::LoadU(d, a + i), gainA);
        hn::StoreU(hn::MulAdd(hn::LoadU(d, b + i), gainB, partA), d, out + i);
    });
}

void MixLinearImpl(const float* a, const float* b, const float* position, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto half = hn::Set(d, 0.5f);
        const auto gainB = hn::MulAdd(hn::LoadU(d, position + i), half, half);
        const auto gainA = hn::Sub(hn::Set(d, 1.0f), gainB);
        const auto partA = hn::Mul(hn::LoadU(d, a + i), gainA);
        hn::StoreU(hn::MulAdd(hn::LoadU(d, b + i), gainB, partA), d, out + i);
    });
}

void MixConstantPowerImpl(const float* a, const float* b, const float* position, float* out,
                          std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto way = hn::Add(hn::Set(d, 1.0f), hn::LoadU(d, position + i));
        const auto angle = hn::Mul(way, hn::Set(d, 0.78539816339744831f));
        // The cosine, for 1 less the square of the sine would lose its digits near the end.
        const auto gainA = hn::Abs(hn::Cos(d, angle));
        const auto gainB = hn::Sin(d, angle);
        const auto partA = hn::Mul(hn::LoadU(d, a + i), gainA);
        hn::StoreU(hn::MulAdd(hn::LoadU(d, b + i), gainB, partA), d, out + i);
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

HWY_EXPORT(SumProductsImpl);
HWY_EXPORT(SubtractProductImpl);
HWY_EXPORT(MaximumMagnitudeImpl);
HWY_EXPORT(MaximumProductImpl);
HWY_EXPORT(MinimumProductImpl);
HWY_EXPORT(DivideLimitedImpl);
HWY_EXPORT(DivideFlooredImpl);
HWY_EXPORT(MixBothFullImpl);
HWY_EXPORT(MixLinearImpl);
HWY_EXPORT(MixConstantPowerImpl);

void sumProducts(std::span<const MixTerm> terms, float* out, std::size_t count) {
    if (terms.empty()) {
        std::fill(out, out + count, 0.0f);
    } else {
        HWY_DYNAMIC_DISPATCH(SumProductsImpl)(terms.data(), terms.size(), out, count);
    }
}
void subtractProduct(const float* a, const float* x, const float* gain, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(SubtractProductImpl)(a, x, gain, out, count);
}
void maximumMagnitude(const float* a, const float* x, const float* gain, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(MaximumMagnitudeImpl)(a, x, gain, out, count);
}
void maximumProduct(const float* a, const float* x, const float* gain, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(MaximumProductImpl)(a, x, gain, out, count);
}
void minimumProduct(const float* a, const float* x, const float* gain, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(MinimumProductImpl)(a, x, gain, out, count);
}
void divideLimited(const float* a, const float* x, const float* gain, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(DivideLimitedImpl)(a, x, gain, out, count);
}
void divideFloored(const float* a, const float* x, const float* gain, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(DivideFlooredImpl)(a, x, gain, out, count);
}
void mixBothFull(const float* a, const float* b, const float* position, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(MixBothFullImpl)(a, b, position, out, count);
}
void mixLinear(const float* a, const float* b, const float* position, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(MixLinearImpl)(a, b, position, out, count);
}
void mixConstantPower(const float* a, const float* b, const float* position, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(MixConstantPowerImpl)(a, b, position, out, count);
}

}  // namespace vanta::kernel
#endif
