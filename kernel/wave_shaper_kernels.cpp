#include "kernel/wave_shaper_kernels.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernel/wave_shaper_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "kernel/vector_loop.hpp"

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

inline constexpr float kQuarterTurn = 1.57079632679f;

/// |x|, at most 1.
template <class D, class V>
HWY_INLINE V limited(D d, V x) {
    return hn::Min(hn::Abs(x), hn::Set(d, 1.0f));
}

/// 2 v - v^2
template <class D, class V>
HWY_INLINE V parabola(D d, V v) {
    return hn::Mul(v, hn::Sub(hn::Set(d, 2.0f), v));
}

/// Arc tangent of x >= 0 (Cephes, atanf).
template <class D, class V>
HWY_INLINE V arcTangent(D d, V x) {
    const auto one = hn::Set(d, 1.0f);
    const auto high = hn::Gt(x, hn::Set(d, 2.414213562373095f));
    const auto middle = hn::Gt(x, hn::Set(d, 0.4142135623730950f));
    const auto over = hn::IfThenElse(high, hn::Neg(one), hn::IfThenElse(middle, hn::Sub(x, one), x));
    const auto under = hn::IfThenElse(high, x, hn::IfThenElse(middle, hn::Add(x, one), one));
    const auto start = hn::IfThenElse(high, hn::Set(d, kQuarterTurn),
                                      hn::IfThenElse(middle, hn::Set(d, 0.5f * kQuarterTurn), hn::Zero(d)));
    const auto t = hn::Div(over, under);
    const auto z = hn::Mul(t, t);
    auto p = hn::MulAdd(z, hn::Set(d, 8.05374449538e-2f), hn::Set(d, -1.38776856032e-1f));
    p = hn::MulAdd(p, z, hn::Set(d, 1.99777106478e-1f));
    p = hn::MulAdd(p, z, hn::Set(d, -3.33329491539e-1f));
    return hn::Add(start, hn::MulAdd(hn::Mul(p, z), t, t));
}

/// sin(pi/2 v) for v from 0 to 1 (Cephes, sinf and cosf): each takes the half in which it is small.
template <class D, class V>
HWY_INLINE V quarterSine(D d, V v) {
    const auto upper = hn::Gt(v, hn::Set(d, 0.5f));
    const auto r = hn::Mul(hn::IfThenElse(upper, hn::Sub(hn::Set(d, 1.0f), v), v), hn::Set(d, kQuarterTurn));
    const auto z = hn::Mul(r, r);
    auto sine = hn::MulAdd(z, hn::Set(d, -1.9515295891e-4f), hn::Set(d, 8.3321608736e-3f));
    sine = hn::MulAdd(sine, z, hn::Set(d, -1.6666654611e-1f));
    sine = hn::MulAdd(hn::Mul(sine, z), r, r);
    auto cosine = hn::MulAdd(z, hn::Set(d, 2.443315711809948e-5f), hn::Set(d, -1.388731625493765e-3f));
    cosine = hn::MulAdd(cosine, z, hn::Set(d, 4.166664568298827e-2f));
    cosine = hn::MulAdd(hn::Mul(cosine, z), z, hn::NegMulAdd(z, hn::Set(d, 0.5f), hn::Set(d, 1.0f)));
    return hn::IfThenElse(upper, cosine, sine);
}

void vectorClipArcTanFast(const float* a, float* out, std::size_t count) {
    const auto curve = [](auto d, auto x) {
        const auto turned = arcTangent(d, hn::Mul(hn::Abs(x), hn::Set(d, kQuarterTurn)));
        return hn::CopySign(hn::Mul(turned, hn::Set(d, 1.0f / kQuarterTurn)), x);
    };
    mapBlocks(out, count, curve, a);
}

void vectorClipDivAbsFast(const float* a, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto d, auto x) { return hn::Div(x, hn::Add(hn::Abs(x), hn::Set(d, 1.0f))); }, a);
}

void vectorClipSineFast(const float* a, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto d, auto x) { return hn::CopySign(quarterSine(d, limited(d, x)), x); }, a);
}

void vectorClipPolynomeOrder2Fast(const float* a, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto d, auto x) { return hn::CopySign(parabola(d, limited(d, x)), x); }, a);
}

void vectorClipPolynomeOrder3Fast(const float* a, float* out, std::size_t count) {
    const auto curve = [](auto d, auto x) {
        const auto v = limited(d, x);
        const auto slope = hn::NegMulAdd(hn::Mul(v, v), hn::Set(d, 0.5f), hn::Set(d, 1.5f));
        return hn::CopySign(hn::Mul(v, slope), x);
    };
    mapBlocks(out, count, curve, a);
}

void vectorClipTubeFast(const float* a, float* out, std::size_t count) {
    const auto curve = [](auto d, auto x) {
        const auto t = hn::Max(x, hn::Set(d, kTubeLowEnd));
        const auto w = hn::Add(t, hn::Set(d, 0.032847f));
        const auto base = hn::Add(w, hn::Set(d, 1.0f));
        const auto square = hn::Mul(base, base);
        const auto fourth = hn::Mul(square, square);
        const auto twelfth = hn::Mul(hn::Mul(fourth, fourth), fourth);
        const auto straight = hn::MulAdd(w, hn::Set(d, 0.25f), hn::Set(d, -0.76f));
        const auto bent = hn::MulAdd(twelfth, hn::Set(d, 0.75f), straight);
        const auto middle = hn::Mul(t, hn::NegMulAdd(t, hn::Set(d, 6.153f), hn::Set(d, 3.9375f)));
        auto y = hn::IfThenElse(hn::Lt(t, hn::Set(d, kTubeKnee)), bent, middle);
        y = hn::IfThenElse(hn::Ge(t, hn::Set(d, kTubeHighEnd)), hn::Set(d, kTubeHighest), y);
        return hn::IfThenElse(hn::Lt(x, hn::Set(d, kTubeLowEnd)), hn::Set(d, kTubeLowest), y);
    };
    mapBlocks(out, count, curve, a);
}

void vectorClipRectifyFast(const float* a, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto d, auto x) { return parabola(d, limited(d, x)); }, a);
}

void scaleByTable(const float* a, const float* position, const float* table, std::size_t points, float* out,
                  std::size_t count) {
    const auto steps = static_cast<float>(points - 1);
    const auto lookUp = [&](auto d, auto x, auto at) {
        const hn::RebindToSigned<decltype(d)> di;
        const auto place = hn::Min(hn::Max(hn::Mul(at, hn::Set(d, steps)), hn::Zero(d)), hn::Set(d, steps));
        const auto point = hn::ConvertTo(di, place);
        const auto low = hn::GatherIndex(d, table, point);
        const auto high = hn::GatherIndex(d, table + 1, point);
        const auto part = hn::Sub(place, hn::ConvertTo(d, point));
        return hn::Mul(x, hn::MulAdd(hn::Sub(high, low), part, low));
    };
    mapBlocks(out, count, lookUp, a, position);
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

VANTA_KERNEL(vectorClipArcTanFast);
VANTA_KERNEL(vectorClipDivAbsFast);
VANTA_KERNEL(vectorClipSineFast);
VANTA_KERNEL(vectorClipPolynomeOrder2Fast);
VANTA_KERNEL(vectorClipPolynomeOrder3Fast);
VANTA_KERNEL(vectorClipTubeFast);
VANTA_KERNEL(vectorClipRectifyFast);
VANTA_KERNEL(scaleByTable);

}  // namespace vanta::kernel
#endif
