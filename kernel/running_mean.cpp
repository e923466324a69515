#include "kernel/running_mean.hpp"

#include <algorithm>
#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernel/running_mean.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// What of a sample enters the sum, and what the sum may be.
struct Plain {
    /// Whether a sum waits for more than one addition, and what has entered is counted.
    static constexpr bool kSquares = false;

    template <typename V>
    static HWY_INLINE V entering(V x) {
        return x;
    }
    template <typename V>
    static HWY_INLINE V allowed(V sum) {
        return sum;
    }
    static HWY_INLINE double allowed(double sum) { return sum; }
};

struct Square {
    static constexpr bool kSquares = true;

    template <typename V>
    static HWY_INLINE V entering(V x) {
        return hn::Mul(x, x);
    }
    static HWY_INLINE float entering(float x) { return x * x; }
    template <typename V>
    static HWY_INLINE V allowed(V sum) {
        return hn::Max(sum, hn::Zero(hn::DFromV<V>()));
    }
    static HWY_INLINE double allowed(double sum) { return std::max(sum, 0.0); }
};

/// Sample by sample; where a sum waits for more than one addition, four of them wait together.
template <class Kind>
HWY_INLINE void runSingly(const float* in, const float* leaving, float* stored, RunningSum& sum, double norm,
                          float* out, std::size_t count) {
    double total = sum.window, entered = sum.entered;
    std::size_t i = 0;
    for (; Kind::kSquares && i + 4 <= count; i += 4) {
        double e[4], d[4];
        for (std::size_t k = 0; k < 4; ++k) d[k] = -static_cast<double>(leaving[i + k]);
        for (std::size_t k = 0; k < 4; ++k) {
            stored[i + k] = Kind::entering(in[i + k]);
            e[k] = static_cast<double>(stored[i + k]);
            d[k] += e[k];
        }
        const double d01 = d[0] + d[1];
        const double d012 = d01 + d[2];
        const double d0123 = d01 + (d[2] + d[3]);
        out[i] = static_cast<float>(norm * Kind::allowed(total + d[0]));
        out[i + 1] = static_cast<float>(norm * Kind::allowed(total + d01));
        out[i + 2] = static_cast<float>(norm * Kind::allowed(total + d012));
        total = Kind::allowed(total + d0123);
        out[i + 3] = static_cast<float>(norm * total);
        entered += (e[0] + e[1]) + (e[2] + e[3]);
    }
    for (; i < count; ++i) {
        const double leaves = static_cast<double>(leaving[i]);
        stored[i] = Kind::entering(in[i]);
        total = Kind::allowed(total + (static_cast<double>(stored[i]) - leaves));
        if (Kind::kSquares) entered += static_cast<double>(stored[i]);
        out[i] = static_cast<float>(norm * total);
    }
    sum = {total, entered};
}

#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR

template <class Kind>
HWY_INLINE std::size_t runGroups(const float*, const float*, float*, RunningSum&, double, float*,
                                 std::size_t) {
    return 0;
}

#else

using Tag = hn::CappedTag<double, kMeanGroup>;
using Vector = hn::VFromD<Tag>;
constexpr std::size_t kLanes = hn::MaxLanes(Tag());
constexpr std::size_t kVectors = kMeanGroup / kLanes;

/// Every lane `kDistance` up; zeros come in.
template <std::size_t kDistance>
HWY_INLINE Vector shiftUp(Vector v) {
    const Tag d;
    std::int64_t places[kLanes];
    for (std::size_t i = 0; i < kLanes; ++i)
        places[i] = static_cast<std::int64_t>(i - std::min(i, kDistance));
    const auto moved = hn::TableLookupLanes(v, hn::SetTableIndices(d, places));
    return hn::IfThenElse(hn::FirstN(d, kDistance), hn::Zero(d), moved);
}

/// Each lane and all before it.
HWY_INLINE Vector sumUp(Vector v) {
    v = hn::Add(v, shiftUp<1>(v));
    if constexpr (kLanes > 2) v = hn::Add(v, shiftUp<2>(v));
    if constexpr (kLanes > 4) v = hn::Add(v, shiftUp<4>(v));
    return v;
}

HWY_INLINE Vector spreadLast(Vector v) {
    std::int64_t places[kLanes];
    std::fill_n(places, kLanes, static_cast<std::int64_t>(kLanes - 1));
    return hn::TableLookupLanes(v, hn::SetTableIndices(Tag(), places));
}

template <class Kind>
HWY_INLINE std::size_t runGroups(const float* in, const float* leaving, float* stored, RunningSum& sum,
                                 double norm, float* out, std::size_t count) {
    const Tag d;
    const hn::Rebind<float, Tag> narrow;
    const auto factor = hn::Set(d, norm);
    auto total = hn::Set(d, sum.window), entered = hn::Zero(d);
    std::size_t i = 0;
    for (; i + kMeanGroup <= count; i += kMeanGroup) {
        Vector leaves[kVectors], sums[kVectors];
        for (std::size_t v = 0; v < kVectors; ++v) {
            leaves[v] = hn::PromoteTo(d, hn::LoadU(narrow, leaving + i + v * kLanes));
        }
        for (std::size_t v = 0; v < kVectors; ++v) {
            const auto entering = Kind::entering(hn::LoadU(narrow, in + i + v * kLanes));
            hn::StoreU(entering, narrow, stored + i + v * kLanes);
            const auto enters = hn::PromoteTo(d, entering);
            if (Kind::kSquares) entered = hn::Add(entered, enters);
            sums[v] = sumUp(hn::Sub(enters, leaves[v]));
            if (v > 0) sums[v] = hn::Add(sums[v], spreadLast(sums[v - 1]));
        }
        auto now = total;
        for (std::size_t v = 0; v < kVectors; ++v) {
            now = Kind::allowed(hn::Add(total, sums[v]));
            hn::StoreU(hn::DemoteTo(narrow, hn::Mul(now, factor)), narrow, out + i + v * kLanes);
        }
        total = spreadLast(now);
    }
    sum.window = hn::GetLane(total);
    sum.entered += hn::GetLane(hn::SumOfLanes(d, entered));
    return i;
}

#endif

template <class Kind>
HWY_INLINE void runMean(const float* in, const float* leaving, float* stored, RunningSum& sum, double norm,
                        float* out, std::size_t count) {
    std::size_t i = 0;
    // A group of pairs costs a plain sum more than it saves.
    if (Kind::kSquares || hn::MaxLanes(hn::ScalableTag<float>()) > 4) {
        i = runGroups<Kind>(in, leaving, stored, sum, norm, out, count);
    }
    runSingly<Kind>(in + i, leaving + i, stored + i, sum, norm, out + i, count - i);
}

void runningMean(const float* in, const float* leaving, float* stored, RunningSum& sum, double norm,
                 float* out, std::size_t count) {
    runMean<Plain>(in, leaving, stored, sum, norm, out, count);
}

void runningMeanSquare(const float* in, const float* leaving, float* stored, RunningSum& sum, double norm,
                       float* out, std::size_t count) {
    runMean<Square>(in, leaving, stored, sum, norm, out, count);
}

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

VANTA_KERNEL(runningMean);
VANTA_KERNEL(runningMeanSquare);

}  // namespace vanta::kernel
#endif
