#include "kernel/pixel_rows.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernel/pixel_rows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "kernel/vector_loop.hpp"

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

constexpr std::uint32_t kOpacity = 0xFF000000u;

// The bytes of a pixel lie in two vectors, in the halves of each lane, so that products keep all their bits:
// blue and red in one, green and opacity in the other.
template <typename D, typename V>
HWY_INLINE V evenBytes(D d, V pixels) {
    return hn::And(pixels, hn::Set(d, 0x00FF00FFu));
}
template <typename D, typename V>
HWY_INLINE V oddBytes(D d, V pixels) {
    return evenBytes(d, hn::ShiftRight<8>(pixels));
}
template <typename V>
HWY_INLINE V joinBytes(V even, V odd) {
    return hn::Or(even, hn::ShiftLeft<8>(odd));
}
/// The same factor in both halves of each lane.
template <typename V>
HWY_INLINE V inBothHalves(V factor) {
    return hn::Or(factor, hn::ShiftLeft<16>(factor));
}

#if HWY_TARGET == HWY_SCALAR
/// Each half divided by 255, rounded; exact up to 255 * 255.
template <typename D, typename V>
HWY_INLINE V by255(D d, V halves) {
    const auto t = hn::Add(halves, hn::Set(d, 0x00800080u));
    return oddBytes(d, hn::Add(t, oddBytes(d, t)));
}
/// Each half times a factor that is the same in both.
template <typename D, typename V>
HWY_INLINE V multiplyHalves(D d, V halves, V factor) {
    return hn::Mul(halves, hn::And(factor, hn::Set(d, 0xFFFFu)));
}
template <typename D, typename V>
HWY_INLINE V addHalves(D d, V a, V b) {
    const auto sum = hn::Add(a, b);
    const auto over = hn::And(hn::ShiftRight<8>(sum), hn::Set(d, 0x00010001u));
    return evenBytes(d, hn::Or(sum, hn::Sub(hn::ShiftLeft<8>(over), over)));
}
/// The sum of each byte, at most 255.
template <typename D, typename V>
HWY_INLINE V addBytes(D d, V a, V b) {
    return joinBytes(addHalves(d, evenBytes(d, a), evenBytes(d, b)),
                     addHalves(d, oddBytes(d, a), oddBytes(d, b)));
}
#else
/// The same in one product: (t + (t >> 8)) >> 8 is t * 257 >> 16.
template <typename D, typename V>
HWY_INLINE V by255(D d, V halves) {
    const hn::Repartition<std::uint16_t, D> lanes;
    const auto t = hn::Add(hn::BitCast(lanes, halves), hn::Set(lanes, std::uint16_t{128}));
    return hn::BitCast(d, hn::MulHigh(t, hn::Set(lanes, std::uint16_t{257})));
}
template <typename D, typename V>
HWY_INLINE V multiplyHalves(D d, V halves, V factor) {
    const hn::Repartition<std::uint16_t, D> lanes;
    return hn::BitCast(d, hn::Mul(hn::BitCast(lanes, halves), hn::BitCast(lanes, factor)));
}
template <typename D, typename V>
HWY_INLINE V addBytes(D d, V a, V b) {
    const hn::Repartition<std::uint8_t, D> bytes;
    return hn::BitCast(d, hn::SaturatedAdd(hn::BitCast(bytes, a), hn::BitCast(bytes, b)));
}
#endif

/// Each byte times the factor of its pixel.
template <typename D, typename V>
HWY_INLINE V scaled(D d, V pixels, V factor) {
    return joinBytes(by255(d, multiplyHalves(d, evenBytes(d, pixels), factor)),
                     by255(d, multiplyHalves(d, oddBytes(d, pixels), factor)));
}

template <typename D, typename V>
HWY_INLINE V over(D d, V source, V target) {
    const auto kept = scaled(d, target, inBothHalves(hn::ShiftRight<24>(source)));
    // Rounding may leave a colour a step above its opacity: the sum must not wrap around.
    return addBytes(d, kept, hn::AndNot(hn::Set(d, kOpacity), source));
}

/// A pixel with its colours and its opacity times the factor.
template <typename D, typename V>
HWY_INLINE V faded(D d, V pixels, V factor) {
    const auto invert = hn::Set(d, kOpacity);
    return hn::Xor(scaled(d, hn::Xor(pixels, invert), factor), invert);
}

/// Large pictures are transparent for long stretches, where the target need not even be fetched.
template <typename D, typename V>
HWY_INLINE bool isTransparent(D d, V pixels) {
    return hn::AllTrue(d, hn::Eq(pixels, hn::Set(d, kOpacity)));
}

void blendRow(const std::uint32_t* source, std::uint32_t* target, std::size_t count) {
    vectorLoop<std::uint32_t>(count, [&](auto d, std::size_t i) {
        const auto pixels = hn::LoadU(d, source + i);
        if (isTransparent(d, pixels)) return;
        hn::StoreU(over(d, pixels, hn::LoadU(d, target + i)), d, target + i);
    });
}

void blendFadedRow(const std::uint32_t* source, std::uint32_t alpha, std::uint32_t* target,
                   std::size_t count) {
    vectorLoop<std::uint32_t>(count, [&](auto d, std::size_t i) {
        const auto factor = inBothHalves(hn::Set(d, alpha));
        const auto pixels = faded(d, hn::LoadU(d, source + i), factor);
        hn::StoreU(over(d, pixels, hn::LoadU(d, target + i)), d, target + i);
    });
}

void blendMaskedRow(const std::uint32_t* source, const std::uint32_t* mask, std::uint32_t alpha,
                    std::uint32_t* target, std::size_t count) {
    vectorLoop<std::uint32_t>(count, [&](auto d, std::size_t i) {
        const auto cover = hn::ShiftRight<24>(hn::Xor(hn::LoadU(d, mask + i), hn::Set(d, kOpacity)));
        const auto factor = by255(d, multiplyHalves(d, inBothHalves(cover), inBothHalves(hn::Set(d, alpha))));
        const auto pixels = faded(d, hn::LoadU(d, source + i), factor);
        hn::StoreU(over(d, pixels, hn::LoadU(d, target + i)), d, target + i);
    });
}

void blendPixel(std::uint32_t pixel, std::uint32_t* target, std::size_t count) {
    vectorLoop<std::uint32_t>(count, [&](auto d, std::size_t i) {
        hn::StoreU(over(d, hn::Set(d, pixel), hn::LoadU(d, target + i)), d, target + i);
    });
}

void mixRows(const std::uint32_t* from, const std::uint32_t* to, std::uint32_t amount, std::uint32_t* target,
             std::size_t count) {
    vectorLoop<std::uint32_t>(count, [&](auto d, std::size_t i) {
        const auto in = inBothHalves(hn::Set(d, amount));
        const auto out = inBothHalves(hn::Set(d, 255 - amount));
        const auto a = hn::LoadU(d, from + i);
        const auto b = hn::LoadU(d, to + i);
        const auto mix = [&](auto x, auto y) {
            return by255(d, hn::Add(multiplyHalves(d, x, out), multiplyHalves(d, y, in)));
        };
        const auto even = mix(evenBytes(d, a), evenBytes(d, b));
        hn::StoreU(joinBytes(even, mix(oddBytes(d, a), oddBytes(d, b))), d, target + i);
    });
}

/// From `a` at weight 0 to `b` at 256.
template <typename D, typename V>
HWY_INLINE V mixed(D d, V a, V b, V weight) {
    const auto in = inBothHalves(weight);
    const auto out = inBothHalves(hn::Sub(hn::Set(d, 256u), weight));
    const auto mix = [&](auto x, auto y) {
        const auto rounding = hn::Set(d, 0x00800080u);
        return oddBytes(d, hn::Add(multiplyHalves(d, x, out), hn::Add(multiplyHalves(d, y, in), rounding)));
    };
    return joinBytes(mix(evenBytes(d, a), evenBytes(d, b)), mix(oddBytes(d, a), oddBytes(d, b)));
}

void rampRows(const PixelRamps& ramps, std::uint32_t from, std::uint32_t to, std::int32_t begin,
              std::int32_t end, std::uint32_t* target, std::size_t stride, std::size_t count) {
    for (std::int32_t y = begin; y < end; ++y, target += stride) {
        vectorLoop<std::uint32_t>(count, [&](auto d, std::size_t i) {
            const hn::RebindToFloat<decltype(d)> real;
            const hn::RebindToSigned<decltype(d)> whole;
            const auto way = hn::Mul(
                hn::Sub(hn::Set(real, static_cast<float>(y) + 0.5f), hn::LoadU(real, ramps.start + i)),
                hn::LoadU(real, ramps.rate + i));
            const auto bounded = hn::Min(hn::Max(way, hn::Zero(real)), hn::Set(real, 256.0f));
            const auto rounded = hn::ConvertTo(whole, hn::Add(bounded, hn::Set(real, 0.5f)));
            const auto color = mixed(d, hn::Set(d, from), hn::Set(d, to), hn::BitCast(d, rounded));
            const auto hasBegun = hn::Not(hn::Lt(hn::Set(whole, y), hn::LoadU(whole, ramps.first + i)));
            const auto old = hn::LoadU(d, target + i);
            hn::StoreU(hn::IfThenElse(hn::RebindMask(d, hasBegun), color, old), d, target + i);
        });
    }
}

void sampleRow(const std::uint32_t* source, const std::int32_t* index, const std::uint32_t* weight,
               std::uint32_t* target, std::size_t count) {
    vectorLoop<std::uint32_t>(count, [&](auto d, std::size_t i) {
        const hn::RebindToSigned<decltype(d)> whole;
        const auto at = hn::LoadU(whole, index + i);
        const auto left = hn::GatherIndex(d, source, at);
        const auto right = hn::GatherIndex(d, source + 1, at);
        hn::StoreU(mixed(d, left, right, hn::LoadU(d, weight + i)), d, target + i);
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

VANTA_KERNEL(blendRow);
VANTA_KERNEL(blendFadedRow);
VANTA_KERNEL(blendMaskedRow);
VANTA_KERNEL(blendPixel);
VANTA_KERNEL(mixRows);
VANTA_KERNEL(rampRows);
VANTA_KERNEL(sampleRow);

}  // namespace vanta::kernel
#endif
