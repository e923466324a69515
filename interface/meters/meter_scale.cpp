#include "interface/meters/meter_scale.hpp"

#include <array>
#include <cstddef>

namespace vanta::interface {
namespace {

constexpr std::size_t kPointCount = 5;
using Points = std::array<float, kPointCount>;

/// The places at which a scale changes its slope, from its lower end up; straight and equal above the last.
struct Squeeze {
    Points levels;
    Points positions;
};

constexpr Squeeze kSqueeze16{{-40.0f, -19.0f, -11.0f, -7.0f, -5.0f}, {-9.0f, -8.0f, -7.0f, -6.0f, -5.0f}};
constexpr Squeeze kSqueeze32{{-60.0f, -38.0f, -22.0f, -14.0f, -10.0f},
                             {-18.0f, -16.0f, -14.0f, -12.0f, -10.0f}};
constexpr Squeeze kSqueeze48{{-72.0f, -57.0f, -33.0f, -21.0f, -15.0f},
                             {-27.0f, -24.0f, -21.0f, -18.0f, -15.0f}};

float mapped(const Points& from, const Points& to, float value) {
    if (!(value > from.front())) return to.front();
    if (value >= from.back()) return value;
    std::size_t i = 1;
    while (value > from[i]) ++i;
    return to[i - 1] + (value - from[i - 1]) * (to[i] - to[i - 1]) / (from[i] - from[i - 1]);
}

template <const Squeeze& squeeze>
constexpr LevelCurve kSqueezed{[](float level) { return mapped(squeeze.levels, squeeze.positions, level); },
                               [](float shown) { return mapped(squeeze.positions, squeeze.levels, shown); }};

}  // namespace

float referenceOf(MeterScale scale) {
    switch (scale) {
        case MeterScale::K12:
            return 12.0f;
        case MeterScale::K14:
            return 14.0f;
        case MeterScale::K20:
            return 20.0f;
        default:
            return 0.0f;
    }
}

float rangeOf(MeterScale scale) {
    switch (scale) {
        case MeterScale::Db16:
            return 16.0f;
        case MeterScale::Db32:
            return 32.0f;
        case MeterScale::Db48:
            return 48.0f;
        default:
            return 46.0f;
    }
}

LevelCurve curveOf(MeterScale scale) {
    switch (scale) {
        case MeterScale::Db16:
            return kSqueezed<kSqueeze16>;
        case MeterScale::Db32:
            return kSqueezed<kSqueeze32>;
        case MeterScale::Db48:
            return kSqueezed<kSqueeze48>;
        default:
            return kStraightCurve;
    }
}

const std::vector<float>& stepsOf(MeterScale scale) {
    static const std::vector<float> kThrees{3.0f, 6.0f, 12.0f};
    static const std::vector<float> kTwos{2.0f, 4.0f, 8.0f, 16.0f};
    return scale == MeterScale::Db48 || scale == MeterScale::Loudness ? kThrees : kTwos;
}

}  // namespace vanta::interface
