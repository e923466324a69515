#include "kernel/fir_kernels.hpp"

#include <algorithm>
#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernel/fir_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// The sum over the branch of a half-band filter at consecutive places. Taps come as pairs from the outside
// in, `kStride` floats apart: the symmetry halves the multiplications. Each place sums in the same order
// whatever the width of the vector, so all lanes, and the tail, round alike.
template <std::size_t kStride>
struct BranchSum {
    const float* taps;
    std::size_t pairs;

    template <class D, class Emit>
    HWY_INLINE void one(D d, const float* x, Emit&& emit) const {
        const float* far = x + 2 * pairs - 1;
        auto sum = hn::Zero(d);
        for (std::size_t i = 0; i < pairs; ++i) {
            sum = hn::MulAdd(hn::Add(hn::LoadU(d, x + i), hn::LoadU(d, far - i)),
                             hn::Set(d, taps[i * kStride]), sum);
        }
        emit(std::size_t{0}, sum);
    }

    // Four vectors at once share the loaded tap and hide the latency of the sums.
    template <class D, class Emit>
    HWY_INLINE void four(D d, const float* x, Emit&& emit) const {
        const std::size_t n = hn::Lanes(d);
        const float* far = x + 2 * pairs - 1;
        auto sum0 = hn::Zero(d), sum1 = sum0, sum2 = sum0, sum3 = sum0;
        for (std::size_t i = 0; i < pairs; ++i) {
            const auto tap = hn::Set(d, taps[i * kStride]);
            const float* a = x + i;
            const float* b = far - i;
            sum0 = hn::MulAdd(hn::Add(hn::LoadU(d, a), hn::LoadU(d, b)), tap, sum0);
            sum1 = hn::MulAdd(hn::Add(hn::LoadU(d, a + n), hn::LoadU(d, b + n)), tap, sum1);
            sum2 = hn::MulAdd(hn::Add(hn::LoadU(d, a + 2 * n), hn::LoadU(d, b + 2 * n)), tap, sum2);
            sum3 = hn::MulAdd(hn::Add(hn::LoadU(d, a + 3 * n), hn::LoadU(d, b + 3 * n)), tap, sum3);
        }
        emit(std::size_t{0}, sum0);
        emit(n, sum1);
        emit(2 * n, sum2);
        emit(3 * n, sum3);
    }

    // Calls finish(tag, i, sum) for the sums at x + i, i from 0 to count - 1.
    template <class Finish>
    HWY_INLINE void overAll(const float* x, std::size_t count, Finish&& finish) const {
        const hn::ScalableTag<float> wide;
        const hn::CappedTag<float, 1> single;
        const std::size_t lanes = hn::Lanes(wide);
        std::size_t i = 0;
        for (; i + 4 * lanes <= count; i += 4 * lanes) {
            four(wide, x + i, [&](std::size_t at, auto sum) { finish(wide, i + at, sum); });
        }
        for (; i + lanes <= count; i += lanes) {
            one(wide, x + i, [&](std::size_t at, auto sum) { finish(wide, i + at, sum); });
        }
        for (; i < count; ++i) {
            one(single, x + i, [&](std::size_t at, auto sum) { finish(single, i + at, sum); });
        }
    }
};

void interpolateHalfBand(const float* window, const float* branch, std::size_t tapCount, float* out,
                         std::size_t count) {
    const float* centre = window + tapCount / 2 - 1;
    const BranchSum<1> sums{branch, tapCount / 2};
    sums.overAll(window, count, [&](auto d, std::size_t i, auto sum) {
        hn::StoreInterleaved2(hn::LoadU(d, centre + i), sum, d, out + 2 * i);
    });
}

#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR

// Without vectors the compiler makes less of the sums the more is done with them in place.
void peaksOfHalfBand(const float* window, const float* branch, std::size_t tapCount, float* out,
                     std::size_t count) {
    constexpr std::size_t kTile = 128;
    float pairs[2 * kTile];
    for (std::size_t done = 0; done < count; done += kTile) {
        const std::size_t piece = std::min(kTile, count - done);
        interpolateHalfBand(window + done, branch, tapCount, pairs, piece);
        for (std::size_t i = 0; i < piece; ++i) {
            out[done + i] = std::max(std::abs(pairs[2 * i]), std::abs(pairs[2 * i + 1]));
        }
    }
}

#else

void peaksOfHalfBand(const float* window, const float* branch, std::size_t tapCount, float* out,
                     std::size_t count) {
    const float* centre = window + tapCount / 2 - 1;
    const BranchSum<1> sums{branch, tapCount / 2};
    sums.overAll(window, count, [&](auto d, std::size_t i, auto sum) {
        hn::StoreU(hn::Max(hn::Abs(hn::LoadU(d, centre + i)), hn::Abs(sum)), d, out + i);
    });
}

#endif

// The branch meets every second sample only. They are brought side by side first, a piece that stays in the
// nearest cache at a time.
void decimateHalfBand(const float* window, const float* taps, std::size_t tapCount, float* scratch,
                      float* out, std::size_t count) {
    const hn::ScalableTag<float> wide;
    const std::size_t lanes = hn::Lanes(wide);
    const std::size_t tile = decimatorScratch(0);
    const std::size_t centre = tapCount / 2;
    const BranchSum<2> sums{taps + 1, centre / 2};
    for (std::size_t done = 0; done < count; done += tile) {
        const std::size_t piece = std::min(tile, count - done);
        const float* x = window + 2 * done;
        const std::size_t odd = piece + centre - 1;
        std::size_t i = 0;
        for (; i + lanes <= odd; i += lanes) {
            auto a = hn::Zero(wide), b = a;
            hn::LoadInterleaved2(wide, x + 2 * i, a, b);
            hn::StoreU(b, wide, scratch + i);
        }
        for (; i < odd; ++i) scratch[i] = x[2 * i + 1];
        sums.overAll(scratch, piece, [&](auto d, std::size_t j, auto sum) {
            auto middle = hn::Zero(d), unused = middle;
            hn::LoadInterleaved2(d, x + centre + 2 * j, middle, unused);
            hn::StoreU(hn::MulAdd(middle, hn::Set(d, taps[centre]), sum), d, out + done + j);
        });
    }
}

/// What is kept of a group: `load` prepares a sample, the call chooses between the earlier and the later one.
struct First {
    template <class V>
    static HWY_INLINE V load(V x) {
        return x;
    }
    template <class V>
    HWY_INLINE V operator()(V first, V) const {
        return first;
    }
};

struct LargestMagnitude {
    template <class V>
    static HWY_INLINE V load(V x) {
        return hn::Abs(x);
    }
    template <class V>
    HWY_INLINE V operator()(V a, V b) const {
        return hn::Max(a, b);
    }
};

struct Smallest {
    template <class V>
    static HWY_INLINE V load(V x) {
        return x;
    }
    template <class V>
    HWY_INLINE V operator()(V a, V b) const {
        return hn::Min(a, b);
    }
};

#if HWY_TARGET != HWY_SCALAR
// A vector with one result for each group of kFactor samples: a tree of neighbours, folded from two halves.
template <std::size_t kFactor, class Choice, class D>
HWY_INLINE hn::VFromD<D> foldGroups(D d, const float* in) {
    if constexpr (kFactor == 1) {
        return Choice::load(hn::LoadU(d, in));
    } else {
        const auto low = foldGroups<kFactor / 2, Choice>(d, in);
        const auto high = foldGroups<kFactor / 2, Choice>(d, in + kFactor / 2 * hn::Lanes(d));
        return Choice()(hn::ConcatEven(d, high, low), hn::ConcatOdd(d, high, low));
    }
}
#endif

// One group, in the same order.
template <std::size_t kFactor, class Choice, class D>
HWY_INLINE hn::VFromD<D> foldGroup(D single, const float* in) {
    if constexpr (kFactor == 1) {
        return Choice::load(hn::LoadU(single, in));
    } else {
        return Choice()(foldGroup<kFactor / 2, Choice>(single, in),
                        foldGroup<kFactor / 2, Choice>(single, in + kFactor / 2));
    }
}

template <std::size_t kFactor, class Choice>
HWY_INLINE void overGroups(const float* in, float* out, std::size_t count) {
    const hn::CappedTag<float, 1> single;
    std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
    const hn::ScalableTag<float> wide;
    const std::size_t lanes = hn::Lanes(wide);
    for (; i + lanes <= count; i += lanes) {
        hn::StoreU(foldGroups<kFactor, Choice>(wide, in + i * kFactor), wide, out + i);
    }
#endif
    for (; i < count; ++i) {
        hn::StoreU(foldGroup<kFactor, Choice>(single, in + i * kFactor), single, out + i);
    }
}

template <class Choice, std::size_t kFactor = 32>
HWY_INLINE void chooseOfGroups(const float* in, std::size_t factor, float* out, std::size_t count) {
    if constexpr (kFactor > 1) {
        if (factor < kFactor) return chooseOfGroups<Choice, kFactor / 2>(in, factor, out, count);
    }
    overGroups<kFactor, Choice>(in, out, count);
}

void firstOfGroups(const float* in, std::size_t factor, float* out, std::size_t count) {
    chooseOfGroups<First>(in, factor, out, count);
}

void largestMagnitudeOfGroups(const float* in, std::size_t factor, float* out, std::size_t count) {
    chooseOfGroups<LargestMagnitude>(in, factor, out, count);
}

void smallestOfGroups(const float* in, std::size_t factor, float* out, std::size_t count) {
    chooseOfGroups<Smallest>(in, factor, out, count);
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

VANTA_KERNEL(interpolateHalfBand);
VANTA_KERNEL(peaksOfHalfBand);
VANTA_KERNEL(decimateHalfBand);
VANTA_KERNEL(firstOfGroups);
VANTA_KERNEL(largestMagnitudeOfGroups);
VANTA_KERNEL(smallestOfGroups);

}  // namespace vanta::kernel
#endif
