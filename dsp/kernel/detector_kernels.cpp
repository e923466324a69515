#include "dsp/kernel/detector_kernels.hpp"

#include <algorithm>
#include <cstdint>

#include "dsp/kernel/level_math.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/kernel/detector_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "dsp/kernel/vector_loop.hpp"
#include "dsp/kernel/vector_math.hpp"

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

inline constexpr float kNoKneeWithin = 1.1920929e-7f;
inline constexpr float kFloorAmplitude = 1e-9f;
inline constexpr float kLargestFactor = 3.4028234e38f;

/// Level in dB. The floor of -180 dB stands in the amplitude, where it covers silence too.
template <class D, class V>
HWY_INLINE V Decibels(D d, V x) {
    return hn::Mul(Log(d, hn::Max(hn::Abs(x), hn::Set(d, kFloorAmplitude))), hn::Set(d, kLogToDb));
}

/// The distance from the threshold, bent quadratically within half a knee of it.
template <class D, class V>
HWY_INLINE V Soft(D d, V distance, V knee) {
    const auto half = hn::Mul(knee, hn::Set(d, 0.5f));
    const auto inside = hn::And(hn::Gt(knee, hn::Set(d, kNoKneeWithin)), hn::Le(hn::Abs(distance), half));
    const auto part = hn::Div(hn::Add(half, distance), knee);
    return hn::IfThenElse(inside, hn::Mul(hn::Mul(part, part), half), distance);
}

/// 1 - 1 / ratio. A ratio of 0 gives a large number instead of an infinite one, which must not meet a
/// distance of 0.
template <class D, class V>
HWY_INLINE V CompressorFactor(D d, V ratio) {
    const auto one = hn::Set(d, 1.0f);
    const auto largest = hn::Set(d, kLargestFactor);
    const auto factor = hn::Min(hn::Max(hn::Sub(one, hn::Div(one, ratio)), hn::Neg(largest)), largest);
    return hn::IfThenElse(hn::Lt(ratio, hn::Set(d, kInfiniteRatio)), factor, one);
}

template <class D, class V>
HWY_INLINE V Limited(D d, V change, V limit) {
    return hn::Max(hn::Min(change, limit), hn::Zero(d));
}

/// The factor that lowers a signal by so many dB.
template <class D, class V>
HWY_INLINE V Lowering(D d, V decibels) {
    return Exp(d, hn::Mul(decibels, hn::Set(d, -kDbToLogSingle)));
}

/// The gain change of a compressor in dB.
template <class D, class V>
HWY_INLINE V Compression(D d, V level, const DetectorControls& c, std::size_t i) {
    const auto distance = hn::Sub(level, hn::LoadU(d, c.threshold + i));
    const auto bent = Soft(d, distance, hn::LoadU(d, c.knee + i));
    const auto change = hn::Mul(bent, CompressorFactor(d, hn::LoadU(d, c.ratio + i)));
    return Limited(d, change, hn::LoadU(d, c.limit + i));
}

void LimitAmplitudeConstantImpl(const float* in, float ceiling, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto top = hn::Set(d, ceiling);
        const auto level = hn::Max(top, hn::Abs(hn::LoadU(d, in + i)));
        hn::StoreU(hn::Sub(hn::Set(d, 1.0f), hn::Div(top, level)), d, out + i);
    });
}

void LimitAmplitudeImpl(const float* in, const float* threshold, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto wanted = Exp(d, hn::Mul(hn::LoadU(d, threshold + i), hn::Set(d, kDbToLogSingle)));
        const auto top = hn::Max(wanted, hn::Set(d, 1e-10f));
        const auto level = hn::Max(top, hn::Abs(hn::LoadU(d, in + i)));
        hn::StoreU(hn::Sub(hn::Set(d, 1.0f), hn::Div(top, level)), d, out + i);
    });
}

void LimitDecibelsImpl(const float* in, const DetectorControls& c, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto distance = hn::Sub(hn::LoadU(d, in + i), hn::LoadU(d, c.threshold + i));
        hn::StoreU(Limited(d, distance, hn::LoadU(d, c.limit + i)), d, out + i);
    });
}

/// Without knee and limit the level needs no dB: all is a power of the ratio of level and threshold.
template <class D, class V>
HWY_INLINE void CompressHard(D d, const float* in, const float* threshold, V factor, float* out) {
    const auto level = Log(d, hn::Max(hn::Abs(hn::LoadU(d, in)), hn::Set(d, kFloorAmplitude)));
    const auto excess = hn::NegMulAdd(hn::LoadU(d, threshold), hn::Set(d, kDbToLogSingle), level);
    const auto change = hn::Mul(hn::Max(excess, hn::Zero(d)), factor);
    hn::StoreU(hn::Sub(hn::Set(d, 1.0f), Exp(d, hn::Min(hn::Neg(change), hn::Zero(d)))), d, out);
}

void CompressAmplitudeHardImpl(const float* in, const DetectorControls& c, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        CompressHard(d, in + i, c.threshold + i, CompressorFactor(d, hn::LoadU(d, c.ratio + i)), out + i);
    });
}

void CompressAmplitudeHardConstantImpl(const float* in, const float* threshold, float ratio, float* out,
                                       std::size_t count) {
    const hn::CappedTag<float, 1> single;
    const float factor = hn::GetLane(CompressorFactor(single, hn::Set(single, ratio)));
    vectorLoop(count, [&](auto d, std::size_t i) {
        CompressHard(d, in + i, threshold + i, hn::Set(d, factor), out + i);
    });
}

void CompressAmplitudeImpl(const float* in, const DetectorControls& c, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto change = Compression(d, Decibels(d, hn::LoadU(d, in + i)), c, i);
        hn::StoreU(hn::Sub(hn::Set(d, 1.0f), Lowering(d, change)), d, out + i);
    });
}

void CompressDecibelsImpl(const float* in, const DetectorControls& c, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        hn::StoreU(Compression(d, hn::LoadU(d, in + i), c, i), d, out + i);
    });
}

void ClipAmplitudeImpl(const float* in, float slope, float largest, float* out, std::size_t count) {
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
HWY_INLINE M Latch(D d, M set, M clear, bool& flag) {
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
HWY_INLINE void ExpandDown(const float* in, const DetectorControls& c, float hysteresisDb, bool& open,
                           float* out, std::size_t count) {
    bool flag = open;
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto x = hn::LoadU(d, in + i);
        const auto level = kAmplitude ? Decibels(d, x) : x;
        const auto distance = hn::Sub(hn::LoadU(d, c.threshold + i), level);
        const auto isOpen =
            Latch(d, hn::Lt(distance, hn::Zero(d)), hn::Gt(distance, hn::Set(d, hysteresisDb)), flag);
        const auto knee = hn::LoadU(d, c.knee + i);
        const auto bent = Soft(d, hn::NegMulAdd(knee, hn::Set(d, 0.5f), distance), knee);
        const auto slope = hn::Sub(hn::LoadU(d, c.ratio + i), hn::Set(d, 1.0f));
        const auto change = hn::IfThenZeroElse(isOpen, hn::Mul(bent, slope));
        const auto limited = Limited(d, change, hn::LoadU(d, c.limit + i));
        hn::StoreU(kAmplitude ? Lowering(d, limited) : limited, d, out + i);
    });
    open = flag;
}

void ExpandDownAmplitudeImpl(const float* in, const DetectorControls& c, float hysteresisDb, bool& open,
                             float* out, std::size_t count) {
    ExpandDown<true>(in, c, hysteresisDb, open, out, count);
}

void ExpandDownDecibelsImpl(const float* in, const DetectorControls& c, float hysteresisDb, bool& open,
                            float* out, std::size_t count) {
    ExpandDown<false>(in, c, hysteresisDb, open, out, count);
}

void ExpandUpDecibelsImpl(const float* in, const DetectorControls& c, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto distance = hn::Sub(hn::LoadU(d, in + i), hn::LoadU(d, c.threshold + i));
        const auto bent = Soft(d, distance, hn::LoadU(d, c.knee + i));
        const auto slope = hn::Sub(hn::LoadU(d, c.ratio + i), hn::Set(d, 1.0f));
        hn::StoreU(Limited(d, hn::Mul(bent, slope), hn::LoadU(d, c.limit + i)), d, out + i);
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

HWY_EXPORT(LimitAmplitudeConstantImpl);
HWY_EXPORT(LimitAmplitudeImpl);
HWY_EXPORT(LimitDecibelsImpl);
HWY_EXPORT(CompressAmplitudeHardImpl);
HWY_EXPORT(CompressAmplitudeHardConstantImpl);
HWY_EXPORT(CompressAmplitudeImpl);
HWY_EXPORT(CompressDecibelsImpl);
HWY_EXPORT(ClipAmplitudeImpl);
HWY_EXPORT(ExpandDownAmplitudeImpl);
HWY_EXPORT(ExpandDownDecibelsImpl);
HWY_EXPORT(ExpandUpDecibelsImpl);

void limitAmplitude(const float* in, float thresholdDb, float* out, std::size_t count) {
    // Silence counts as 1e-10, and no ceiling is lower, or 0 would be divided by 0.
    const auto ceiling = static_cast<float>(std::max(limitedExp(thresholdDb * 0.11512925465), 1e-10));
    HWY_DYNAMIC_DISPATCH(LimitAmplitudeConstantImpl)(in, ceiling, out, count);
}
void limitAmplitude(const float* in, const float* threshold, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(LimitAmplitudeImpl)(in, threshold, out, count);
}
void limitDecibels(const float* in, const DetectorControls& controls, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(LimitDecibelsImpl)(in, controls, out, count);
}
void compressAmplitudeHard(const float* in, const float* threshold, float ratio, float* out,
                           std::size_t count) {
    HWY_DYNAMIC_DISPATCH(CompressAmplitudeHardConstantImpl)(in, threshold, ratio, out, count);
}
void compressAmplitudeHard(const float* in, const DetectorControls& controls, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(CompressAmplitudeHardImpl)(in, controls, out, count);
}
void compressAmplitude(const float* in, const DetectorControls& controls, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(CompressAmplitudeImpl)(in, controls, out, count);
}
void compressDecibels(const float* in, const DetectorControls& controls, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(CompressDecibelsImpl)(in, controls, out, count);
}
void clipAmplitude(const float* in, float thresholdDb, float limitDb, float* out, std::size_t count) {
    const bool acts = thresholdDb < -1.1920929e-7f;
    const auto slope = static_cast<float>(acts ? limitedExp(-thresholdDb * 0.11512925465) - 1.0 : 0.0);
    const auto largest = static_cast<float>(limitedExp(limitDb * 0.11512925465));
    HWY_DYNAMIC_DISPATCH(ClipAmplitudeImpl)(in, slope, largest, out, count);
}
void expandDownAmplitude(const float* in, const DetectorControls& controls, float hysteresisDb, bool& open,
                         float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(ExpandDownAmplitudeImpl)(in, controls, hysteresisDb, open, out, count);
}
void expandDownDecibels(const float* in, const DetectorControls& controls, float hysteresisDb, bool& open,
                        float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(ExpandDownDecibelsImpl)(in, controls, hysteresisDb, open, out, count);
}
void expandUpDecibels(const float* in, const DetectorControls& controls, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(ExpandUpDecibelsImpl)(in, controls, out, count);
}

}  // namespace vanta::kernel
#endif
