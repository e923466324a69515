#include "kernel/detector_kernels.hpp"

#include <algorithm>
#include <cstdint>

#include "kernel/level_math.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernel/detector_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "kernel/vector_loop.hpp"
#include "kernel/vector_math.hpp"

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

inline constexpr float kEqualWithin = 1.1920929e-7f;
inline constexpr float kFloorAmplitude = 1e-9f;

/// Level in dB. The floor of -180 dB is applied to the amplitude, so that it covers silence too.
template <class D, class V>
HWY_INLINE V decibels(D d, V x) {
    return hn::Mul(vectorLog(d, hn::Max(hn::Abs(x), hn::Set(d, kFloorAmplitude))), hn::Set(d, kLogToDb));
}

/// The distance from the threshold, bent quadratically within half a knee of it.
template <class D, class V>
HWY_INLINE V soft(D d, V distance, V knee) {
    const auto half = hn::Mul(knee, hn::Set(d, 0.5f));
    const auto inside = hn::And(hn::Gt(knee, hn::Set(d, kEqualWithin)), hn::Le(hn::Abs(distance), half));
    const auto part = hn::Div(hn::Add(half, distance), knee);
    return hn::IfThenElse(inside, hn::Mul(hn::Mul(part, part), half), distance);
}

/// 1 - 1 / ratio. A ratio of 0 gives a large number instead of an infinite one, which must not meet a
/// distance of 0.
template <class D, class V>
HWY_INLINE V compressorFactor(D d, V ratio) {
    const auto one = hn::Set(d, 1.0f);
    const auto largest = hn::Set(d, kLargestFloat);
    const auto factor = hn::Min(hn::Max(hn::Sub(one, hn::Div(one, ratio)), hn::Neg(largest)), largest);
    return hn::IfThenElse(hn::Lt(ratio, hn::Set(d, kInfiniteRatio)), factor, one);
}

template <class D, class V>
HWY_INLINE V withinLimit(D d, V change, V limit) {
    return hn::Max(hn::Min(change, limit), hn::Zero(d));
}

/// The factor that lowers a signal by that many dB.
template <class D, class V>
HWY_INLINE V lowering(D d, V decibels) {
    return vectorExp(d, hn::Mul(decibels, hn::Set(d, -kDbToLogSingle)));
}

/// The gain change of a compressor in dB.
template <class D, class V>
HWY_INLINE V compression(D d, V level, const DetectorControls& c, std::size_t i) {
    const auto distance = hn::Sub(level, hn::LoadU(d, c.threshold + i));
    const auto bent = soft(d, distance, hn::LoadU(d, c.knee + i));
    const auto change = hn::Mul(bent, compressorFactor(d, hn::LoadU(d, c.ratio + i)));
    return withinLimit(d, change, hn::LoadU(d, c.limit + i));
}

void limitAmplitudeSteady(const float* in, float thresholdDb, float* out, std::size_t count) {
    // Silence counts as 1e-10, and no ceiling is lower, or 0 would be divided by 0.
    const auto ceiling = static_cast<float>(std::max(limitedExp(thresholdDb * kDbToLogDouble), 1e-10));
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto top = hn::Set(d, ceiling);
        const auto level = hn::Max(top, hn::Abs(hn::LoadU(d, in + i)));
        hn::StoreU(hn::Sub(hn::Set(d, 1.0f), hn::Div(top, level)), d, out + i);
    });
}

void limitAmplitude(const float* in, const float* threshold, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto wanted = vectorExp(d, hn::Mul(hn::LoadU(d, threshold + i), hn::Set(d, kDbToLogSingle)));
        const auto top = hn::Max(wanted, hn::Set(d, 1e-10f));
        const auto level = hn::Max(top, hn::Abs(hn::LoadU(d, in + i)));
        hn::StoreU(hn::Sub(hn::Set(d, 1.0f), hn::Div(top, level)), d, out + i);
    });
}

void limitDecibels(const float* in, const DetectorControls& c, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto distance = hn::Sub(hn::LoadU(d, in + i), hn::LoadU(d, c.threshold + i));
        hn::StoreU(withinLimit(d, distance, hn::LoadU(d, c.limit + i)), d, out + i);
    });
}

/// Without knee and limit the level needs no dB: all is a power of the ratio of level and threshold.
template <class D, class V>
HWY_INLINE void compressHard(D d, const float* in, const float* threshold, V factor, float* out) {
    const auto level = vectorLog(d, hn::Max(hn::Abs(hn::LoadU(d, in)), hn::Set(d, kFloorAmplitude)));
    const auto excess = hn::NegMulAdd(hn::LoadU(d, threshold), hn::Set(d, kDbToLogSingle), level);
    const auto change = hn::Mul(hn::Max(excess, hn::Zero(d)), factor);
    hn::StoreU(hn::Sub(hn::Set(d, 1.0f), vectorExp(d, hn::Min(hn::Neg(change), hn::Zero(d)))), d, out);
}

void compressAmplitudeHard(const float* in, const DetectorControls& c, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        compressHard(d, in + i, c.threshold + i, compressorFactor(d, hn::LoadU(d, c.ratio + i)), out + i);
    });
}

void compressAmplitudeHardSteady(const float* in, const float* threshold, float ratio, float* out,
                                 std::size_t count) {
    const hn::CappedTag<float, 1> single;
    const float factor = hn::GetLane(compressorFactor(single, hn::Set(single, ratio)));
    vectorLoop(count, [&](auto d, std::size_t i) {
        compressHard(d, in + i, threshold + i, hn::Set(d, factor), out + i);
    });
}

void compressAmplitude(const float* in, const DetectorControls& c, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto change = compression(d, decibels(d, hn::LoadU(d, in + i)), c, i);
        hn::StoreU(hn::Sub(hn::Set(d, 1.0f), lowering(d, change)), d, out + i);
    });
}

void compressDecibels(const float* in, const DetectorControls& c, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        hn::StoreU(compression(d, hn::LoadU(d, in + i), c, i), d, out + i);
    });
}

void clipAmplitude(const float* in, float thresholdDb, float limitDb, float* out, std::size_t count) {
    const bool acts = thresholdDb < -kEqualWithin;
    const auto slope = static_cast<float>(acts ? limitedExp(-thresholdDb * kDbToLogDouble) - 1.0 : 0.0);
    const auto largest = static_cast<float>(limitedExp(limitDb * kDbToLogDouble));
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto one = hn::Set(d, 1.0f);
        const auto drive = hn::Abs(hn::Mul(hn::LoadU(d, in + i), hn::Set(d, slope)));
        const auto v = hn::Max(hn::Min(hn::Add(one, drive), hn::Set(d, largest)), one);
        hn::StoreU(hn::Sub(one, hn::Div(one, v)), d, out + i);
    });
}

/// Lets a flag run through the lanes: a lane of `set` turns it on, one of `clear` off, never both. Returns
/// the flag as it stands at each lane. The flag travels as the carry of one addition: a lane that sets
/// generates a carry, one that keeps hands it on, one that clears swallows it.
template <class D, class M>
HWY_INLINE M latch(D d, M set, M clear, bool& flag) {
    std::uint64_t setBits = 0, clearBits = 0;
    hn::StoreMaskBits(d, set, reinterpret_cast<std::uint8_t*>(&setBits));
    hn::StoreMaskBits(d, clear, reinterpret_cast<std::uint8_t*>(&clearBits));
    const std::size_t lanes = hn::Lanes(d);
    const std::uint64_t all = (std::uint64_t{1} << lanes) - 1;
    const std::uint64_t passes = ~clearBits & all;
    const std::uint64_t sum = passes + (setBits & all) + (flag ? 1 : 0);
    const std::uint64_t stands = ((sum ^ passes ^ (setBits & all)) >> 1) & all;
    flag = ((stands >> (lanes - 1)) & 1) != 0;
    return hn::LoadMaskBits(d, reinterpret_cast<const std::uint8_t*>(&stands));
}

template <bool kAmplitude>
HWY_INLINE void expandDown(const float* in, const DetectorControls& c, float hysteresisDb, bool& open,
                           float* out, std::size_t count) {
    bool flag = open;
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto x = hn::LoadU(d, in + i);
        const auto level = kAmplitude ? decibels(d, x) : x;
        const auto distance = hn::Sub(hn::LoadU(d, c.threshold + i), level);
        const auto isOpen =
            latch(d, hn::Lt(distance, hn::Zero(d)), hn::Gt(distance, hn::Set(d, hysteresisDb)), flag);
        const auto knee = hn::LoadU(d, c.knee + i);
        const auto bent = soft(d, hn::NegMulAdd(knee, hn::Set(d, 0.5f), distance), knee);
        const auto slope = hn::Sub(hn::LoadU(d, c.ratio + i), hn::Set(d, 1.0f));
        const auto change = hn::IfThenZeroElse(isOpen, hn::Mul(bent, slope));
        const auto limited = withinLimit(d, change, hn::LoadU(d, c.limit + i));
        hn::StoreU(kAmplitude ? lowering(d, limited) : limited, d, out + i);
    });
    open = flag;
}

void expandDownAmplitude(const float* in, const DetectorControls& c, float hysteresisDb, bool& open,
                         float* out, std::size_t count) {
    expandDown<true>(in, c, hysteresisDb, open, out, count);
}

void expandDownDecibels(const float* in, const DetectorControls& c, float hysteresisDb, bool& open,
                        float* out, std::size_t count) {
    expandDown<false>(in, c, hysteresisDb, open, out, count);
}

void expandUpDecibels(const float* in, const DetectorControls& c, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto distance = hn::Sub(hn::LoadU(d, in + i), hn::LoadU(d, c.threshold + i));
        const auto bent = soft(d, distance, hn::LoadU(d, c.knee + i));
        const auto slope = hn::Sub(hn::LoadU(d, c.ratio + i), hn::Set(d, 1.0f));
        hn::StoreU(withinLimit(d, hn::Mul(bent, slope), hn::LoadU(d, c.limit + i)), d, out + i);
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

VANTA_KERNEL(limitAmplitude);
VANTA_KERNEL(limitAmplitudeSteady);
VANTA_KERNEL(limitDecibels);
VANTA_KERNEL(compressAmplitudeHard);
VANTA_KERNEL(compressAmplitudeHardSteady);
VANTA_KERNEL(compressAmplitude);
VANTA_KERNEL(compressDecibels);
VANTA_KERNEL(clipAmplitude);
VANTA_KERNEL(expandDownAmplitude);
VANTA_KERNEL(expandDownDecibels);
VANTA_KERNEL(expandUpDecibels);

}  // namespace vanta::kernel
#endif
