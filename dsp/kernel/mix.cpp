#include "dsp/kernel/mix.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/kernel/mix.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "dsp/kernel/vector_loop.hpp"

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

void ScaleImpl(const float* a, float gain, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        hn::StoreU(hn::Mul(hn::LoadU(d, a + i), hn::Set(d, gain)), d, out + i);
    });
}

void Multiply2Impl(const float* a, const float* b, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        hn::StoreU(hn::Mul(hn::LoadU(d, a + i), hn::LoadU(d, b + i)), d, out + i);
    });
}

void Multiply3Impl(const float* a, const float* b, const float* c, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto product = hn::Mul(hn::LoadU(d, a + i), hn::LoadU(d, b + i));
        hn::StoreU(hn::Mul(product, hn::LoadU(d, c + i)), d, out + i);
    });
}

void AddImpl(const float* a, const float* b, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        hn::StoreU(hn::Add(hn::LoadU(d, a + i), hn::LoadU(d, b + i)), d, out + i);
    });
}

void SubtractImpl(const float* a, const float* b, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        hn::StoreU(hn::Sub(hn::LoadU(d, a + i), hn::LoadU(d, b + i)), d, out + i);
    });
}

void AddScaledImpl(const float* a, const float* b, float gain, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        hn::StoreU(hn::MulAdd(hn::LoadU(d, b + i), hn::Set(d, gain), hn::LoadU(d, a + i)), d, out + i);
    });
}

void MultiplyAddImpl(const float* a, const float* b, const float* c, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        hn::StoreU(hn::MulAdd(hn::LoadU(d, b + i), hn::LoadU(d, c + i), hn::LoadU(d, a + i)), d, out + i);
    });
}

void MagnitudeImpl(const float* a, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) { hn::StoreU(hn::Abs(hn::LoadU(d, a + i)), d, out + i); });
}

void MaximumImpl(const float* a, const float* b, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        hn::StoreU(hn::Max(hn::LoadU(d, a + i), hn::LoadU(d, b + i)), d, out + i);
    });
}

void MinimumImpl(const float* a, const float* b, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        hn::StoreU(hn::Min(hn::LoadU(d, a + i), hn::LoadU(d, b + i)), d, out + i);
    });
}

void ClampImpl(const float* a, float low, float high, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        hn::StoreU(hn::Min(hn::Max(hn::LoadU(d, a + i), hn::Set(d, low)), hn::Set(d, high)), d, out + i);
    });
}

void CrossfadeImpl(const float* a, const float* b, const float* mix, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto from = hn::LoadU(d, a + i);
        hn::StoreU(hn::MulAdd(hn::Sub(hn::LoadU(d, b + i), from), hn::LoadU(d, mix + i), from), d, out + i);
    });
}

void MoveTowardImpl(const float* a, const float* b, float amount, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto from = hn::LoadU(d, a + i);
        hn::StoreU(hn::MulAdd(hn::Sub(hn::LoadU(d, b + i), from), hn::Set(d, amount), from), d, out + i);
    });
}

void ComplementImpl(const float* a, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        hn::StoreU(hn::Sub(hn::Set(d, 1.0f), hn::LoadU(d, a + i)), d, out + i);
    });
}

float PeakImpl(const float* a, std::size_t count) {
    const hn::ScalableTag<float> d;
    const std::size_t lanes = hn::Lanes(d);
    auto highest = hn::Zero(d);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) highest = hn::Max(highest, hn::Abs(hn::LoadU(d, a + i)));
    float result = hn::GetLane(hn::MaxOfLanes(d, highest));
    for (; i < count; ++i) {
        const float value = a[i] < 0 ? -a[i] : a[i];
        result = value > result ? value : result;
    }
    return result;
}

void SanitizeImpl(const float* a, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto value = hn::LoadU(d, a + i);
        const auto limit = hn::Set(d, kLargestSample);
        const auto limited = hn::Min(hn::Max(value, hn::Neg(limit)), limit);
        // x - x is 0 for a finite x and NaN for any other.
        const auto finite = hn::Eq(hn::Sub(value, value), hn::Zero(d));
        hn::StoreU(hn::IfThenElseZero(finite, limited), d, out + i);
    });
}

void FillImpl(float value, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) { hn::StoreU(hn::Set(d, value), d, out + i); });
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

HWY_EXPORT(ScaleImpl);
HWY_EXPORT(Multiply2Impl);
HWY_EXPORT(Multiply3Impl);
HWY_EXPORT(AddImpl);
HWY_EXPORT(SubtractImpl);
HWY_EXPORT(AddScaledImpl);
HWY_EXPORT(MultiplyAddImpl);
HWY_EXPORT(MagnitudeImpl);
HWY_EXPORT(MaximumImpl);
HWY_EXPORT(MinimumImpl);
HWY_EXPORT(ClampImpl);
HWY_EXPORT(CrossfadeImpl);
HWY_EXPORT(MoveTowardImpl);
HWY_EXPORT(ComplementImpl);
HWY_EXPORT(PeakImpl);
HWY_EXPORT(SanitizeImpl);
HWY_EXPORT(FillImpl);

void scale(const float* a, float gain, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(ScaleImpl)(a, gain, out, count);
}
void multiply(const float* a, const float* b, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(Multiply2Impl)(a, b, out, count);
}
void multiply(const float* a, const float* b, const float* c, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(Multiply3Impl)(a, b, c, out, count);
}
void add(const float* a, const float* b, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(AddImpl)(a, b, out, count);
}
void subtract(const float* a, const float* b, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(SubtractImpl)(a, b, out, count);
}
void addScaled(const float* a, const float* b, float gain, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(AddScaledImpl)(a, b, gain, out, count);
}
void multiplyAdd(const float* a, const float* b, const float* c, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(MultiplyAddImpl)(a, b, c, out, count);
}
void magnitude(const float* a, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(MagnitudeImpl)(a, out, count);
}
void maximum(const float* a, const float* b, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(MaximumImpl)(a, b, out, count);
}
void minimum(const float* a, const float* b, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(MinimumImpl)(a, b, out, count);
}
void clamp(const float* a, float low, float high, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(ClampImpl)(a, low, high, out, count);
}
void crossfade(const float* a, const float* b, const float* mix, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(CrossfadeImpl)(a, b, mix, out, count);
}
void moveToward(const float* a, const float* b, float amount, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(MoveTowardImpl)(a, b, amount, out, count);
}
void complement(const float* a, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(ComplementImpl)(a, out, count);
}
float peak(const float* a, std::size_t count) {
    return HWY_DYNAMIC_DISPATCH(PeakImpl)(a, count);
}
void sanitize(const float* a, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(SanitizeImpl)(a, out, count);
}
void fill(float value, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(FillImpl)(value, out, count);
}

}  // namespace vanta::kernel
#endif
