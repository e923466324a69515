#include "kernel/sliding_maximum.hpp"

#include <algorithm>
#include <cstdint>
#include <limits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernel/sliding_maximum.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "kernel/vector_loop.hpp"

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Two doublings in one pass: in every place the largest of four that lie `span` apart.
HWY_INLINE void quadruple(const float* in, std::size_t span, float* out, std::size_t count) {
    vectorLoop(count, [&](auto d, std::size_t i) {
        const auto near = hn::Max(hn::LoadU(d, in + i), hn::LoadU(d, in + i + span));
        const auto far = hn::Max(hn::LoadU(d, in + i + 2 * span), hn::LoadU(d, in + i + 3 * span));
        hn::StoreU(hn::Max(near, far), d, out + i);
    });
}

// What is read lies at or ahead of what is written, so a pass may write over its input.
void slidingMaximum(const float* window, std::size_t hold, float* scratch, float* out, std::size_t count) {
    const std::size_t length = hold + 1;
    const float* from = window;
    std::size_t span = 1;
    for (; 4 * span <= length; span *= 4) {
        quadruple(from, span, scratch, count + length - 4 * span);
        from = scratch;
    }
    // The window is one to four spans long: spans that overlap cover it.
    const std::size_t last = length - span;
    if (last > span) {
        const std::size_t second = std::min(span, last), third = last > 2 * span ? 2 * span : second;
        vectorLoop(count, [&](auto d, std::size_t i) {
            const auto near = hn::Max(hn::LoadU(d, from + i), hn::LoadU(d, from + i + second));
            const auto far = hn::Max(hn::LoadU(d, from + i + third), hn::LoadU(d, from + i + last));
            hn::StoreU(hn::Max(near, far), d, out + i);
        });
    } else {
        vectorLoop(count, [&](auto d, std::size_t i) {
            hn::StoreU(hn::Max(hn::LoadU(d, from + i), hn::LoadU(d, from + i + last)), d, out + i);
        });
    }
}

/// The largest of each lane and of all lanes before it, or behind it where `kBackward`. By doubling (Hillis
/// and Steele, "Data parallel algorithms", 1986); where a vector ends, its last lane stands in, which changes
/// no maximum.
template <bool kBackward>
class LaneScan {
    using D = hn::ScalableTag<float>;
    using V = hn::VFromD<D>;

public:
    HWY_INLINE LaneScan()
        : one_(away(1)),
          two_(away(2)),
          four_(away(4)),
          eight_(away(8)),
          all_(lanesAt([](std::size_t) { return kBackward ? 0 : kLast; })) {}

    HWY_INLINE V operator()(V v) const {
        v = hn::Max(v, hn::TableLookupLanes(v, one_));
        v = hn::Max(v, hn::TableLookupLanes(v, two_));
        if (hn::Lanes(D()) > 4) v = hn::Max(v, hn::TableLookupLanes(v, four_));
        if (hn::Lanes(D()) > 8) v = hn::Max(v, hn::TableLookupLanes(v, eight_));
        return v;
    }
    /// The lane that knows all others, in every lane.
    HWY_INLINE V spread(V v) const { return hn::TableLookupLanes(v, all_); }

private:
    static constexpr std::size_t kLast = hn::MaxLanes(D()) - 1;

    template <typename Place>
    static HWY_INLINE auto lanesAt(Place&& placeOf) {
        std::int32_t places[kLast + 1];
        for (std::size_t i = 0; i <= kLast; ++i) places[i] = static_cast<std::int32_t>(placeOf(i));
        return hn::SetTableIndices(D(), places);
    }
    static HWY_INLINE auto away(std::size_t distance) {
        return lanesAt([=](std::size_t i) {
            return kBackward ? std::min(i + distance, kLast) : i - std::min(i, distance);
        });
    }

    using Places = decltype(away(0));
    Places one_, two_, four_, eight_, all_;
};

void maximumOfRest(const float* in, float* out, std::size_t count) {
    const hn::ScalableTag<float> d;
    const std::size_t lanes = hn::Lanes(d);
    const LaneScan<true> scan;
    std::size_t i = count;
    auto largest = hn::Set(d, std::numeric_limits<float>::lowest());
    for (; i >= lanes; i -= lanes) {
        const auto known = hn::Max(scan(hn::LoadU(d, in + i - lanes)), largest);
        hn::StoreU(known, d, out + i - lanes);
        largest = scan.spread(known);
    }
    float last = hn::GetLane(largest);
    while (i-- > 0) out[i] = last = std::max(last, in[i]);
}

void maximumSoFar(const float* in, const float* rest, float& highest, float* out, std::size_t count) {
    const hn::ScalableTag<float> d;
    const std::size_t lanes = hn::Lanes(d);
    const LaneScan<false> scan;
    std::size_t i = 0;
    auto largest = hn::Set(d, highest);
    for (; i + lanes <= count; i += lanes) {
        const auto behind = hn::LoadU(d, rest + i);
        const auto known = hn::Max(scan(hn::LoadU(d, in + i)), largest);
        hn::StoreU(hn::Max(known, behind), d, out + i);
        largest = scan.spread(known);
    }
    float last = hn::GetLane(largest);
    for (; i < count; ++i) {
        last = std::max(last, in[i]);
        out[i] = std::max(last, rest[i]);
    }
    highest = last;
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

VANTA_KERNEL(slidingMaximum);
VANTA_KERNEL(maximumOfRest);
VANTA_KERNEL(maximumSoFar);

}  // namespace vanta::kernel
#endif
