#include "kernel/scan.hpp"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernel/scan.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR
// Without vectors Highway asks of each operand of a maximum whether it is a number.
template <class V>
HWY_INLINE V larger(V a, V b) {
    return hn::IfThenElse(hn::Gt(a, b), a, b);
}
template <class V>
HWY_INLINE V smaller(V a, V b) {
    return hn::IfThenElse(hn::Lt(a, b), a, b);
}
#else
template <class V>
HWY_INLINE V larger(V a, V b) {
    return hn::Max(a, b);
}
template <class V>
HWY_INLINE V smaller(V a, V b) {
    return hn::Min(a, b);
}
#endif

/// `read` loads a vector, `choose` keeps the more extreme of two, `merge` reduces the lanes of one.
template <typename Read, typename Choose, typename Merge>
HWY_INLINE float reduce(const float* samples, std::size_t count, Read read, Choose choose, Merge merge) {
    const hn::ScalableTag<float> wide;
    const hn::CappedTag<float, 1> single;
    const std::size_t lanes = hn::Lanes(wide);
    std::size_t i = 0;
    float result = hn::GetLane(read(single, samples));
    if (count >= lanes) {
        auto found = read(wide, samples);
        i = lanes;
        if (count >= 4 * lanes) {
            // Each choice waits for the one before it: four of them go on side by side.
            auto second = read(wide, samples + lanes), third = read(wide, samples + 2 * lanes),
                 fourth = read(wide, samples + 3 * lanes);
            for (i = 4 * lanes; i + 4 * lanes <= count; i += 4 * lanes) {
                found = choose(found, read(wide, samples + i));
                second = choose(second, read(wide, samples + i + lanes));
                third = choose(third, read(wide, samples + i + 2 * lanes));
                fourth = choose(fourth, read(wide, samples + i + 3 * lanes));
            }
            found = choose(choose(found, second), choose(third, fourth));
        }
        for (; i + lanes <= count; i += lanes) found = choose(found, read(wide, samples + i));
        result = hn::GetLane(merge(wide, found));
    }
    for (; i < count; ++i) {
        result = hn::GetLane(choose(hn::Set(single, result), read(single, samples + i)));
    }
    return result;
}

float highestMagnitude(const float* samples, std::size_t count) {
    return reduce(
        samples, count, [](auto d, const float* at) { return hn::Abs(hn::LoadU(d, at)); },
        [](auto a, auto b) { return larger(a, b); }, [](auto d, auto v) { return hn::MaxOfLanes(d, v); });
}

float lowestMagnitude(const float* samples, std::size_t count) {
    return reduce(
        samples, count, [](auto d, const float* at) { return hn::Abs(hn::LoadU(d, at)); },
        [](auto a, auto b) { return smaller(a, b); }, [](auto d, auto v) { return hn::MinOfLanes(d, v); });
}

float highest(const float* samples, std::size_t count) {
    return reduce(
        samples, count, [](auto d, const float* at) { return hn::LoadU(d, at); },
        [](auto a, auto b) { return larger(a, b); }, [](auto d, auto v) { return hn::MaxOfLanes(d, v); });
}

float lowest(const float* samples, std::size_t count) {
    return reduce(
        samples, count, [](auto d, const float* at) { return hn::LoadU(d, at); },
        [](auto a, auto b) { return smaller(a, b); }, [](auto d, auto v) { return hn::MinOfLanes(d, v); });
}

template <typename Read>
HWY_INLINE void highestOfGroups(const float* samples, std::size_t count, float* out, Read read) {
    for (std::size_t done = 0; done < count; done += kScanGroup) {
        *out++ = reduce(
            samples + done, std::min(kScanGroup, count - done), read,
            [](auto a, auto b) { return larger(a, b); }, [](auto d, auto v) { return hn::MaxOfLanes(d, v); });
    }
}

void highestMagnitudeOfGroups(const float* samples, std::size_t count, float* out) {
    highestOfGroups(samples, count, out, [](auto d, const float* at) { return hn::Abs(hn::LoadU(d, at)); });
}

void sharpestBendOfGroups(const float* samples, std::size_t count, float* out) {
    highestOfGroups(samples, count, out, [](auto d, const float* at) {
        const auto middle = hn::LoadU(d, at - 1);
        const auto after = hn::Sub(hn::LoadU(d, at), middle);
        return hn::Abs(hn::Sub(after, hn::Sub(middle, hn::LoadU(d, at - 2))));
    });
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

VANTA_KERNEL(highestMagnitude);
VANTA_KERNEL(lowestMagnitude);
VANTA_KERNEL(highest);
VANTA_KERNEL(lowest);
VANTA_KERNEL(highestMagnitudeOfGroups);
VANTA_KERNEL(sharpestBendOfGroups);

}  // namespace vanta::kernel
#endif
