#include "kernel/allpass_kernels.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernel/allpass_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR
/// Both branches one after the other, where a vector has one lane.
struct Both {
    float branch[2];
};
HWY_INLINE Both load(const float* from) {
    return {{from[0], from[1]}};
}
HWY_INLINE Both both(float value) {
    return {{value, value}};
}
HWY_INLINE void store(Both y, float* to) {
    to[0] = y.branch[0];
    to[1] = y.branch[1];
}
HWY_INLINE Both allpass(Both c, Both x, Both x1, Both y1) {
    const auto step = [&](int i) {
        return c.branch[i] * x.branch[i] + x1.branch[i] - c.branch[i] * y1.branch[i];
    };
    return {{step(0), step(1)}};
}
HWY_INLINE Both firstOf(Both a, Both b) {
    return {{a.branch[0], b.branch[1]}};
}
#else
/// The branches in two lanes.
using TwoLanes = hn::FixedTag<float, 2>;
using Both = hn::Vec<TwoLanes>;

HWY_INLINE Both load(const float* from) {
    return hn::LoadU(TwoLanes(), from);
}
HWY_INLINE Both both(float value) {
    return hn::Set(TwoLanes(), value);
}
HWY_INLINE void store(Both y, float* to) {
    hn::StoreU(y, TwoLanes(), to);
}
/// Only the last product waits for the sample before.
HWY_INLINE Both allpass(Both c, Both x, Both x1, Both y1) {
    return hn::NegMulAdd(c, y1, hn::MulAdd(c, x, x1));
}
HWY_INLINE Both firstOf(Both a, Both b) {
    return hn::IfThenElse(hn::FirstN(TwoLanes(), 1), a, b);
}
#endif

/// One all-pass of each branch, with its state in registers.
struct Allpass {
    HWY_INLINE explicit Allpass(const AllpassPair& pair)
        : c(load(pair.coefficient)), x1(load(pair.x1)), y1(load(pair.y1)) {}
    HWY_INLINE void keep(AllpassPair& pair) const {
        store(x1, pair.x1);
        store(y1, pair.y1);
    }
    HWY_INLINE Both step(Both x) {
        y1 = allpass(c, x, x1, y1);
        x1 = x;
        return y1;
    }

    Both c, x1, y1;
};

/// Calls next(i) for what enters both branches, and sink(i, y) with what leaves them.
template <int kPairs, bool kLast, typename Next, typename Sink>
HWY_INLINE void runBranches(AllpassBranches& branches, std::size_t count, Next next, Sink sink) {
    // Those beyond the count are never stepped.
    Allpass first(branches.pairs[0]), second(branches.pairs[1]), third(branches.pairs[2]);
    Allpass last(branches.last);
    for (std::size_t i = 0; i < count; ++i) {
        Both y = next(i);
        if constexpr (kPairs > 0) y = first.step(y);
        if constexpr (kPairs > 1) y = second.step(y);
        if constexpr (kPairs > 2) y = third.step(y);
        if constexpr (kLast) y = firstOf(last.step(y), y);
        sink(i, y);
    }
    first.keep(branches.pairs[0]);
    second.keep(branches.pairs[1]);
    third.keep(branches.pairs[2]);
    last.keep(branches.last);
}

template <typename Next, typename Sink>
HWY_INLINE void runAny(AllpassBranches& branches, std::size_t count, Next next, Sink sink) {
    switch (2 * branches.pairCount + (branches.hasLast ? 1 : 0)) {
        case 1:
            return runBranches<0, true>(branches, count, next, sink);
        case 2:
            return runBranches<1, false>(branches, count, next, sink);
        case 3:
            return runBranches<1, true>(branches, count, next, sink);
        case 4:
            return runBranches<2, false>(branches, count, next, sink);
        case 5:
            return runBranches<2, true>(branches, count, next, sink);
        case 6:
            return runBranches<3, false>(branches, count, next, sink);
        case 7:
            return runBranches<3, true>(branches, count, next, sink);
        default:
            return runBranches<0, false>(branches, count, next, sink);
    }
}

void splitBranches(const float* in, AllpassBranches& branches, float* out, std::size_t count) {
    runAny(
        branches, count, [&](std::size_t i) { return both(in[i]); },
        [&](std::size_t i, Both y) { store(y, out + 2 * i); });
}

void mergeBranches(const float* in, AllpassBranches& branches, float* out, std::size_t count) {
    float carried = branches.carried;
    const auto next = [&](std::size_t i) {
        const float halves[2] = {0.5f * in[2 * i], 0.5f * carried};
        carried = in[2 * i + 1];
        return load(halves);
    };
    const auto sink = [&](std::size_t i, Both y) {
        float halves[2];
        store(y, halves);
        out[i] = halves[0] + halves[1];
    };
    runAny(branches, count, next, sink);
    branches.carried = carried;
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

VANTA_KERNEL(splitBranches);
VANTA_KERNEL(mergeBranches);

}  // namespace vanta::kernel
#endif
