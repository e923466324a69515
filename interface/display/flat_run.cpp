#include "interface/display/flat_run.hpp"

#include <algorithm>
#include <cmath>

namespace vanta::interface {
namespace {

constexpr float kTolerance = 0.1f;

float limited(float position, FlatRun::Limits limits) {
    return std::clamp(position, limits.low, std::max(limits.low, limits.high));
}

}  // namespace

void FlatRun::reset(float position, Limits limits) {
    position_ = limited(position, limits);
    columns_ = kMost;
}

void FlatRun::extend(std::span<const float> positions, Limits limits) {
    const float last = limited(positions.back(), limits);
    for (std::size_t i = positions.size() - 1; i-- > 0;) {
        if (std::abs(limited(positions[i], limits) - last) > kTolerance) {
            columns_ = 0;
            return;
        }
    }
    const auto count = static_cast<int>(positions.size());
    if (std::abs(last - position_) <= kTolerance) {
        columns_ = std::min(columns_ + count, kMost);
    } else {
        position_ = last;
        columns_ = count;
    }
}

}  // namespace vanta::interface
