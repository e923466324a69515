// Recursions of the first order, solved for a group of samples at once. Included once per instruction set,
// after hwy/highway.h, hence the guard that toggles with the target. Needs more than one lane.
#if defined(VANTA_AFFINE_SCAN_HPP) == defined(HWY_TARGET_TOGGLE)
#ifdef VANTA_AFFINE_SCAN_HPP
#undef VANTA_AFFINE_SCAN_HPP
#else
#define VANTA_AFFINE_SCAN_HPP
#endif

#include <array>
#include <cstddef>

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {

/// Consecutive samples in two registers of at most 16 lanes: the work of the one fills the waits of the
/// other.
using GroupTag = hwy::HWY_NAMESPACE::CappedTag<float, 16>;
using GroupPart = hwy::HWY_NAMESPACE::Vec<GroupTag>;
using Group = std::array<GroupPart, 2>;
inline constexpr int kPartLanes = static_cast<int>(hwy::HWY_NAMESPACE::MaxLanes(GroupTag()));
inline constexpr std::size_t kGroupSamples = 2 * static_cast<std::size_t>(kPartLanes);

/// Lane i - `places`; what comes into the first lanes is one of the values or 0.
template <int places>
HWY_INLINE GroupPart laneBefore(GroupPart part) {
    namespace hn = hwy::HWY_NAMESPACE;
    const GroupTag d;
    if constexpr (kPartLanes <= 4) {
        return hn::ShiftLeftLanes<places>(d, part);
    } else {
        const hn::RebindToSigned<GroupTag> di;
        const auto from = hn::Max(hn::Sub(hn::Iota(di, 0), hn::Set(di, places)), hn::Zero(di));
        return hn::TableLookupLanes(part, hn::IndicesFromVec(d, from));
    }
}

/// The last lane in all lanes.
HWY_INLINE GroupPart lastLane(GroupPart part) {
    namespace hn = hwy::HWY_NAMESPACE;
    const GroupTag d;
    if constexpr (kPartLanes <= 4) {
        return hn::Broadcast<kPartLanes - 1>(part);
    } else {
        const hn::RebindToSigned<GroupTag> di;
        return hn::TableLookupLanes(part, hn::IndicesFromVec(d, hn::Set(di, kPartLanes - 1)));
    }
}

HWY_INLINE auto lanesFrom(int first) {
    namespace hn = hwy::HWY_NAMESPACE;
    const GroupTag d;
    return hn::Ge(hn::Iota(d, 0), hn::Set(d, static_cast<float>(first)));
}

/// At each sample the value of the sample before it; 0 at the first.
HWY_INLINE Group samplesBefore(const Group& group) {
    namespace hn = hwy::HWY_NAMESPACE;
    const auto inside = lanesFrom(1);
    return {hn::IfThenElseZero(inside, laneBefore<1>(group[0])),
            hn::IfThenElse(inside, laneBefore<1>(group[1]), lastLane(group[0]))};
}

/// One doubling of a scan: a map of `places` samples, x -> slope x + offset, becomes one of twice as many.
template <int places>
HWY_INLINE void doubleMaps(GroupPart& slope, GroupPart& offset) {
    namespace hn = hwy::HWY_NAMESPACE;
    if constexpr (places < kPartLanes) {
        const auto inside = lanesFrom(places);
        offset = hn::MulAdd(hn::IfThenElseZero(inside, slope), laneBefore<places>(offset), offset);
        slope = hn::IfThenElse(inside, hn::Mul(slope, laneBefore<places>(slope)), slope);
    }
}

/// x_i = slope_i x_{i-1} + offset_i for the whole group, from 0 before it. The composition of two affine maps
/// is an affine map, so all compositions from the start come from a parallel prefix scan in log2(lanes)
/// doublings (Blelloch, Prefix Sums and Their Applications, CMU-CS-90-190, 1990; the doubling form is Hillis
/// and Steele's, Data Parallel Algorithms, CACM 29, 1986).
HWY_INLINE Group solveRecursion(Group slope, Group offset) {
    namespace hn = hwy::HWY_NAMESPACE;
    for (std::size_t part = 0; part < 2; ++part) {
        doubleMaps<1>(slope[part], offset[part]);
        doubleMaps<2>(slope[part], offset[part]);
        doubleMaps<4>(slope[part], offset[part]);
        doubleMaps<8>(slope[part], offset[part]);
    }
    return {offset[0], hn::MulAdd(slope[1], lastLane(offset[0]), offset[1])};
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#endif
