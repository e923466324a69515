#include "kernel/level_math.hpp"

#include <cstdint>
#include <cstring>

#include "kernel/log_table.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernel/level_math.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "kernel/vector_loop.hpp"
#include "kernel/vector_math.hpp"

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Looks up one pair a lane. Copying pairs beats a gather, which would touch the table twice.
template <class D, class VI>
HWY_INLINE void lookUp(D d, VI index, hn::Vec<D>& log, hn::Vec<D>& slope) {
    constexpr std::size_t kLanes = hn::MaxLanes(D());
    HWY_ALIGN std::int32_t indices[kLanes];
    HWY_ALIGN float pairs[2 * kLanes];
    hn::Store(index, hn::RebindToSigned<D>(), indices);
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
        std::memcpy(pairs + 2 * lane, kLogTable.data() + indices[lane], sizeof(LogTableEntry));
    }
    if constexpr (kLanes == 1) {
        log = hn::Set(d, pairs[0]);
        slope = hn::Set(d, pairs[1]);
    } else {
        hn::LoadInterleaved2(d, pairs, log, slope);
    }
}

void decibelsFromAmplitude(const float* a, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        using D = decltype(d);
        const hn::RebindToSigned<D> di;
        const auto x = hn::Max(hn::Abs(hn::LoadU(d, a + i)), hn::Set(d, 1e-10f));
        const auto bits = hn::BitCast(di, x);
        // The exponent alone; the mantissa is the table's part.
        const auto exponent = hn::Sub(hn::And(bits, hn::Set(di, static_cast<std::int32_t>(0xFF800000))),
                                      hn::Set(di, 0x3F800000));
        const auto low = hn::ConvertTo(d, hn::And(bits, hn::Set(di, 0xFFF)));
        const auto index = hn::ShiftRight<12>(hn::And(bits, hn::Set(di, 0x7FF000)));
        hn::Vec<D> log, slope;
        lookUp(d, index, log, slope);
        const auto mantissa = hn::MulAdd(low, slope, log);
        const auto natural = hn::MulAdd(hn::ConvertTo(d, exponent), hn::Set(d, 8.2629583e-08f), mantissa);
        const auto db = hn::Mul(natural, hn::Set(d, kLogToDb));
        hn::StoreU(hn::Max(db, hn::Set(d, -180.0f)), d, out + i);
    });
}

void amplitudeFromDecibels(const float* a, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto d, auto x) { return vectorExp(d, hn::Mul(x, hn::Set(d, kDbToLogSingle))); }, a);
}

void decibelsFromReduction(const float* a, float* out, std::size_t count) {
    const auto level = [](auto d, auto x) {
        const auto left = hn::Abs(hn::Sub(hn::Set(d, 1.0f), x));
        const auto db = hn::Mul(vectorLog(d, hn::Max(left, hn::Set(d, 1e-10f))), hn::Set(d, kLogToDb));
        return hn::Neg(hn::Max(db, hn::Set(d, -180.0f)));
    };
    mapBlocks(out, count, level, a);
}

/// e^x in double precision for |x| up to kExponentLimit, to which x is limited.
template <class D, class V>
HWY_INLINE V expDouble(D d, V x) {
    const hn::RebindToSigned<D> di;
    x = hn::Min(hn::Max(x, hn::Set(d, -kExponentLimit)), hn::Set(d, kExponentLimit));
    // Adding 1.5 * 2^52 rounds to an integer and leaves that integer in the low bits.
    const auto magic = hn::Set(d, 6755399441055744.0);
    const auto shifted = hn::MulAdd(x, hn::Set(d, 1.44269504088896340736), magic);
    const auto whole = hn::Sub(shifted, magic);
    auto r = hn::NegMulAdd(whole, hn::Set(d, 6.93147180369123816490e-01), x);
    r = hn::NegMulAdd(whole, hn::Set(d, 1.90821492927058770002e-10), r);

    // Taylor to the 11th power: with |r| <= ln(2)/2 what is left out is below 7e-15.
    auto p = hn::Set(d, 1.0 / 39916800);
    p = hn::MulAdd(p, r, hn::Set(d, 1.0 / 3628800));
    p = hn::MulAdd(p, r, hn::Set(d, 1.0 / 362880));
    p = hn::MulAdd(p, r, hn::Set(d, 1.0 / 40320));
    p = hn::MulAdd(p, r, hn::Set(d, 1.0 / 5040));
    p = hn::MulAdd(p, r, hn::Set(d, 1.0 / 720));
    p = hn::MulAdd(p, r, hn::Set(d, 1.0 / 120));
    p = hn::MulAdd(p, r, hn::Set(d, 1.0 / 24));
    p = hn::MulAdd(p, r, hn::Set(d, 1.0 / 6));
    p = hn::MulAdd(p, r, hn::Set(d, 0.5));
    p = hn::MulAdd(p, r, hn::Set(d, 1.0));
    p = hn::MulAdd(p, r, hn::Set(d, 1.0));
    const auto n = hn::Sub(hn::BitCast(di, shifted), hn::BitCast(di, magic));
    return hn::Mul(p, hn::BitCast(d, hn::ShiftLeft<52>(hn::Add(n, hn::Set(di, std::int64_t{1023})))));
}

/// Calls body(double tag, float tag of as many lanes, i) over the block.
template <typename Body>
HWY_INLINE void doubleLoop(std::size_t count, Body&& body) {
    const hn::ScalableTag<double> wide;
    const hn::CappedTag<double, 1> single;
    const std::size_t lanes = hn::Lanes(wide);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) body(wide, hn::Rebind<float, decltype(wide)>(), i);
    for (; i < count; ++i) body(single, hn::Rebind<float, decltype(single)>(), i);
}

void reductionFromDecibels(const float* a, float* out, std::size_t count) {
    doubleLoop(count, [&](auto d, auto df, std::size_t i) {
        const auto db = hn::PromoteTo(d, hn::LoadU(df, a + i));
        const auto gain = expDouble(d, hn::Mul(db, hn::Set(d, -kDbToLogDouble)));
        hn::StoreU(hn::DemoteTo(df, hn::Sub(hn::Set(d, 1.0), gain)), df, out + i);
    });
}

void squareRoot(const float* a, float* out, std::size_t count) {
    mapBlocks(
        out, count, [](auto d, auto x) { return hn::Sqrt(hn::Max(x, hn::Zero(d))); }, a);
}

void exponentialCurve(const float* a, const float* b, float* out, std::size_t count) {
    doubleLoop(count, [&](auto d, auto df, std::size_t i) {
        const auto one = hn::Set(d, 1.0);
        const auto s = hn::PromoteTo(d, hn::LoadU(df, b + i));
        const auto wanted = hn::MulAdd(s, hn::Set(d, 15.0), hn::Set(d, 0.01));
        const auto bend = hn::Min(hn::Max(wanted, hn::Set(d, -kLargestBend)), hn::Set(d, kLargestBend));
        const auto k = hn::PromoteTo(d, hn::DemoteTo(df, bend));
        const auto x = hn::PromoteTo(d, hn::LoadU(df, a + i));
        const auto rise = hn::Sub(expDouble(d, hn::Mul(k, x)), one);
        const auto whole = hn::Sub(expDouble(d, k), one);
        // Where k vanishes the curve is a straight line.
        const auto straight = hn::Lt(hn::Abs(k), hn::Set(d, 1e-9));
        const auto y = hn::IfThenElse(straight, x, hn::Div(rise, whole));
        const auto largest = hn::Set(d, 3.4028234e38);
        hn::StoreU(hn::DemoteTo(df, hn::Min(hn::Max(y, hn::Neg(largest)), largest)), df, out + i);
    });
}

void powerCurve(const float* a, const float* b, float* out, std::size_t count) {
    const auto curve = [](auto d, auto x, auto strength) {
        const auto wanted = hn::MulAdd(strength, hn::Set(d, 15.0f), hn::Set(d, 1.0f));
        const auto largest = hn::Set(d, static_cast<float>(kLargestBend));
        const auto power = hn::Min(hn::Max(wanted, hn::Neg(largest)), largest);
        const auto y = vectorExp(d, hn::Mul(power, vectorLog(d, x)));
        return hn::IfThenElseZero(hn::Gt(x, hn::Zero(d)), y);
    };
    mapBlocks(out, count, curve, a, b);
}

void powerFiveAndHalf(const float* a, float* out, std::size_t count) {
    const auto curve = [](auto d, auto sample) {
        const auto x = hn::Max(sample, hn::Zero(d));
        const auto square = hn::Mul(x, x);
        const auto y = hn::Mul(hn::Mul(hn::Mul(square, square), x), hn::Sqrt(x));
        return hn::Min(y, hn::Set(d, kLargestFloat));
    };
    mapBlocks(out, count, curve, a);
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

VANTA_KERNEL(decibelsFromAmplitude);
VANTA_KERNEL(amplitudeFromDecibels);
VANTA_KERNEL(decibelsFromReduction);
VANTA_KERNEL(reductionFromDecibels);
VANTA_KERNEL(squareRoot);
VANTA_KERNEL(exponentialCurve);
VANTA_KERNEL(powerCurve);
VANTA_KERNEL(powerFiveAndHalf);

}  // namespace vanta::kernel
#endif
