#include "dsp/kernel/level_math.hpp"

#include <array>
#include <cstdint>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/kernel/level_math.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "dsp/kernel/vector_loop.hpp"
#include "dsp/kernel/vector_math.hpp"

#ifndef VANTA_LOG_TABLE
#define VANTA_LOG_TABLE
namespace vanta::kernel {
/// ln(1 + i/2048) and the mean slope up to the next entry, a unit of the low 12 mantissa bits. Pairs, so that
/// one load brings both.
struct alignas(8) LogTableEntry {
    float log;
    float slope;
};
}  // namespace vanta::kernel
#endif

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Looks up one pair a lane. Copying pairs beats a gather, which would touch the table twice.
template <class D, class VI>
HWY_INLINE void LookUp(D d, VI index, const LogTableEntry* table, hn::Vec<D>& log, hn::Vec<D>& slope) {
    constexpr std::size_t kLanes = hn::MaxLanes(D());
    HWY_ALIGN std::int32_t indices[kLanes];
    HWY_ALIGN float pairs[2 * kLanes];
    hn::Store(index, hn::RebindToSigned<D>(), indices);
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
        std::memcpy(pairs + 2 * lane, table + indices[lane], sizeof(LogTableEntry));
    }
    if constexpr (kLanes == 1) {
        log = hn::Set(d, pairs[0]);
        slope = hn::Set(d, pairs[1]);
    } else {
        hn::LoadInterleaved2(d, pairs, log, slope);
    }
}

void DecibelsFromAmplitudeImpl(const LogTableEntry* table, const float* a, float* out, std::size_t count) {
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
        LookUp(d, index, table, log, slope);
        const auto mantissa = hn::MulAdd(low, slope, log);
        const auto natural = hn::MulAdd(hn::ConvertTo(d, exponent), hn::Set(d, 8.2629583e-08f), mantissa);
        const auto db = hn::Mul(natural, hn::Set(d, kLogToDb));
        hn::StoreU(hn::Max(db, hn::Set(d, -180.0f)), d, out + i);
    });
}

void AmplitudeFromDecibelsImpl(const float* a, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto exponent = hn::Mul(hn::LoadU(d, a + i), hn::Set(d, kDbToLogSingle));
        hn::StoreU(Exp(d, exponent), d, out + i);
    });
}

void DecibelsFromReductionImpl(const float* a, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto left = hn::Abs(hn::Sub(hn::Set(d, 1.0f), hn::LoadU(d, a + i)));
        const auto db = hn::Mul(Log(d, hn::Max(left, hn::Set(d, 1e-10f))), hn::Set(d, kLogToDb));
        hn::StoreU(hn::Neg(hn::Max(db, hn::Set(d, -180.0f))), d, out + i);
    });
}

/// e^x in double precision for |x| up to kExponentLimit, to which x is limited.
template <class D, class V>
HWY_INLINE V ExpDouble(D d, V x) {
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

void ReductionFromDecibelsImpl(const float* a, float* out, std::size_t count) {
    doubleLoop(count, [&](auto d, auto df, std::size_t i) {
        const auto db = hn::PromoteTo(d, hn::LoadU(df, a + i));
        const auto gain = ExpDouble(d, hn::Mul(db, hn::Set(d, -0.11512925465)));
        hn::StoreU(hn::DemoteTo(df, hn::Sub(hn::Set(d, 1.0), gain)), df, out + i);
    });
}

void SquareRootImpl(const float* a, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        hn::StoreU(hn::Sqrt(hn::Max(hn::LoadU(d, a + i), hn::Zero(d))), d, out + i);
    });
}

void ExponentialCurveImpl(const float* a, const float* strength, float* out, std::size_t count) {
    doubleLoop(count, [&](auto d, auto df, std::size_t i) {
        const auto one = hn::Set(d, 1.0);
        const auto s = hn::PromoteTo(d, hn::LoadU(df, strength + i));
        const auto wanted = hn::MulAdd(s, hn::Set(d, 15.0), hn::Set(d, 0.01));
        const auto bend = hn::Min(hn::Max(wanted, hn::Set(d, -kLargestBend)), hn::Set(d, kLargestBend));
        const auto k = hn::PromoteTo(d, hn::DemoteTo(df, bend));
        const auto x = hn::PromoteTo(d, hn::LoadU(df, a + i));
        const auto rise = hn::Sub(ExpDouble(d, hn::Mul(k, x)), one);
        const auto whole = hn::Sub(ExpDouble(d, k), one);
        // Where k vanishes the curve is a straight line.
        const auto straight = hn::Lt(hn::Abs(k), hn::Set(d, 1e-9));
        const auto y = hn::IfThenElse(straight, x, hn::Div(rise, whole));
        const auto largest = hn::Set(d, 3.4028234e38);
        hn::StoreU(hn::DemoteTo(df, hn::Min(hn::Max(y, hn::Neg(largest)), largest)), df, out + i);
    });
}

void PowerCurveImpl(const float* a, const float* strength, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto x = hn::LoadU(d, a + i);
        const auto wanted = hn::MulAdd(hn::LoadU(d, strength + i), hn::Set(d, 15.0f), hn::Set(d, 1.0f));
        const auto largest = hn::Set(d, static_cast<float>(kLargestBend));
        const auto power = hn::Min(hn::Max(wanted, hn::Neg(largest)), largest);
        const auto y = Exp(d, hn::Mul(power, Log(d, x)));
        hn::StoreU(hn::IfThenElseZero(hn::Gt(x, hn::Zero(d)), y), d, out + i);
    });
}

void PowerFiveAndHalfImpl(const float* a, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto x = hn::Max(hn::LoadU(d, a + i), hn::Zero(d));
        const auto square = hn::Mul(x, x);
        const auto y = hn::Mul(hn::Mul(hn::Mul(square, square), x), hn::Sqrt(x));
        hn::StoreU(hn::Min(y, hn::Set(d, 3.4028234e38f)), d, out + i);
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

namespace {

constexpr std::size_t kLogTableSize = 2048;

std::array<LogTableEntry, kLogTableSize> makeLogTable() {
    std::array<LogTableEntry, kLogTableSize> table{};
    for (std::size_t i = 0; i < kLogTableSize; ++i) {
        const double m = 1.0 + static_cast<double>(i) / static_cast<double>(kLogTableSize);
        const double rise = std::log(m + 0.0004882216453552246) - std::log(m);
        table[i].log = static_cast<float>(std::log(m));
        table[i].slope = static_cast<float>(rise * 0.00024417043096081065);
    }
    table.back().slope = static_cast<float>(1.1920928955078125e-07 /
                                            (1.0 + static_cast<double>(kLogTableSize - 1) / kLogTableSize));
    return table;
}

// Made at load: the audio thread must find it ready.
const std::array<LogTableEntry, kLogTableSize> kLogTable = makeLogTable();

}  // namespace

HWY_EXPORT(DecibelsFromAmplitudeImpl);
HWY_EXPORT(AmplitudeFromDecibelsImpl);
HWY_EXPORT(DecibelsFromReductionImpl);
HWY_EXPORT(ReductionFromDecibelsImpl);
HWY_EXPORT(SquareRootImpl);
HWY_EXPORT(ExponentialCurveImpl);
HWY_EXPORT(PowerCurveImpl);
HWY_EXPORT(PowerFiveAndHalfImpl);

void decibelsFromAmplitude(const float* a, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(DecibelsFromAmplitudeImpl)(kLogTable.data(), a, out, count);
}
void amplitudeFromDecibels(const float* a, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(AmplitudeFromDecibelsImpl)(a, out, count);
}
void decibelsFromReduction(const float* a, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(DecibelsFromReductionImpl)(a, out, count);
}
void reductionFromDecibels(const float* a, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(ReductionFromDecibelsImpl)(a, out, count);
}
void squareRoot(const float* a, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(SquareRootImpl)(a, out, count);
}
void exponentialCurve(const float* a, const float* strength, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(ExponentialCurveImpl)(a, strength, out, count);
}
void powerCurve(const float* a, const float* strength, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(PowerCurveImpl)(a, strength, out, count);
}
void powerFiveAndHalf(const float* a, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(PowerFiveAndHalfImpl)(a, out, count);
}

}  // namespace vanta::kernel
#endif
