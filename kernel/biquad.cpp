#include "kernel/biquad.hpp"

#include <algorithm>
#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernel/biquad.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vanta::kernel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR

// Without vectors there is nothing to gain from more operations.
void biquadGroups(const float* in, const BiquadGroup& filter, BiquadHistory& history, float* out,
                  std::size_t groups) {
    const auto [b0, b1, b2] = filter.forward;
    const double minusA1 = filter.fromLast[0], minusA2 = filter.fromSecondLast[0];
    auto [x1, x2, y1, y2] = history;
    for (std::size_t i = 0; i < groups * BiquadGroup::kLength; ++i) {
        const double x = static_cast<double>(in[i]);
        // The newest output comes last: only two operations wait for it.
        const double y = (b0 * x + b1 * x1 + b2 * x2 + minusA2 * y2) + minusA1 * y1;
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
        out[i] = static_cast<float>(y);
    }
    history = {x1, x2, y1, y2};
}

#else

constexpr std::size_t kGroup = BiquadGroup::kLength;
/// Groups whose feed-forward part is computed ahead of the recursion.
constexpr std::size_t kTile = 16;

using Tag = hn::CappedTag<double, kGroup>;
using Vector = hn::VFromD<Tag>;
constexpr std::size_t kLanes = hn::MaxLanes(Tag());
constexpr std::size_t kVectors = kGroup / kLanes;

template <std::size_t kLane>
HWY_INLINE Vector lane(Vector v) {
    std::int64_t places[kLanes];
    std::fill_n(places, kLanes, kLane);
    return hn::TableLookupLanes(v, hn::SetTableIndices(Tag(), places));
}

/// The feed-forward part, from inputs with two earlier ones in front of them.
HWY_INLINE void drive(const double* inputs, const double* taps, double* driven, std::size_t count) {
    const Tag d;
    const auto b0 = hn::Set(d, taps[0]), b1 = hn::Set(d, taps[1]), b2 = hn::Set(d, taps[2]);
    for (std::size_t i = 0; i < count; i += kLanes) {
        const auto older = hn::Mul(hn::LoadU(d, inputs + i), b2);
        const auto last = hn::MulAdd(hn::LoadU(d, inputs + i + 1), b1, older);
        hn::StoreU(hn::MulAdd(hn::LoadU(d, inputs + i + 2), b0, last), d, driven + i);
    }
}

/// A group as `kVectors` vectors.
struct Group {
    Vector part[kVectors];
};

/// What each f[j] does to its group, from lane j on. Held in registers where there are enough.
struct Response {
    HWY_INLINE explicit Response(const BiquadGroup& filter) {
        const Tag d;
        for (std::size_t j = 0; j < kGroup; ++j) {
            for (std::size_t v = 0; v < kVectors; ++v) {
                column[j].part[v] = hn::LoadU(d, filter.response + kGroup + v * kLanes - j);
            }
        }
    }
    // Two sums side by side: each addition waits for the one before it.
    HWY_INLINE Vector to(std::size_t v, const double* driven) const {
        const Tag d;
        auto even = hn::Mul(hn::Set(d, driven[0]), column[0].part[v]);
        auto odd = hn::Mul(hn::Set(d, driven[1]), column[1].part[v]);
        for (std::size_t j = 2; j < (v + 1) * kLanes; j += 2) {
            even = hn::MulAdd(hn::Set(d, driven[j]), column[j].part[v], even);
            odd = hn::MulAdd(hn::Set(d, driven[j + 1]), column[j + 1].part[v], odd);
        }
        return hn::Add(even, odd);
    }
    Group column[kGroup];
};

void biquadGroups(const float* in, const BiquadGroup& filter, BiquadHistory& history, float* out,
                  std::size_t groups) {
    const Tag d;
    const hn::Rebind<float, Tag> narrow;
    const Response response(filter);
    Group last, secondLast;
    for (std::size_t v = 0; v < kVectors; ++v) {
        last.part[v] = hn::LoadU(d, filter.fromLast + v * kLanes);
        secondLast.part[v] = hn::LoadU(d, filter.fromSecondLast + v * kLanes);
    }
    HWY_ALIGN double inputs[2 + kTile * kGroup];
    HWY_ALIGN double driven[kTile * kGroup];
    inputs[0] = history.x2;
    inputs[1] = history.x1;
    auto y1 = hn::Set(d, history.y1), y2 = hn::Set(d, history.y2);
    while (groups > 0) {
        const std::size_t tile = std::min(groups, kTile);
        const std::size_t count = tile * kGroup;
        for (std::size_t i = 0; i < count; i += kLanes) {
            hn::StoreU(hn::PromoteTo(d, hn::LoadU(narrow, in + i)), d, inputs + 2 + i);
        }
        drive(inputs, filter.forward, driven, count);
        for (std::size_t i = 0; i < count; i += kGroup) {
            auto y = y1;
            for (std::size_t v = 0; v < kVectors; ++v) {
                const auto known = hn::MulAdd(y2, secondLast.part[v], response.to(v, driven + i));
                y = hn::MulAdd(y1, last.part[v], known);
                hn::StoreU(hn::DemoteTo(narrow, y), narrow, out + i + v * kLanes);
            }
            y1 = lane<kLanes - 1>(y);
            y2 = lane<kLanes - 2>(y);
        }
        inputs[0] = inputs[count];
        inputs[1] = inputs[count + 1];
        in += count;
        out += count;
        groups -= tile;
    }
    history = {inputs[1], inputs[0], hn::GetLane(y1), hn::GetLane(y2)};
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace vanta::kernel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vanta::kernel {

VANTA_KERNEL(biquadGroups);

BiquadGroup::BiquadGroup(double b0, double b1, double b2, double a1, double a2) : forward{b0, b1, b2} {
    double* h = response + kLength;
    double before = 0.0;
    h[0] = 1.0;
    for (std::size_t k = 0; k < kLength; ++k) {
        fromLast[k] = -a1 * h[k] - a2 * before;
        fromSecondLast[k] = -a2 * h[k];
        before = h[k];
        // An input far back acts on the next output as one that far back acted on this.
        if (k + 1 < kLength) h[k + 1] = fromLast[k];
    }
}

}  // namespace vanta::kernel
#endif
