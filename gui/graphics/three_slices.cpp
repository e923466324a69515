#include "gui/graphics/three_slices.hpp"

#include <algorithm>
#include <cmath>

#include "gui/graphics/geometry.hpp"

namespace vanta::gui {

ThreeSlices::ThreeSlices(float sourceLength, float targetLength, float crossLength, float minimumEnd,
                         float scale)
    : sourceLength_(sourceLength),
      targetLength_(targetLength),
      isStretched_(std::abs(sourceLength - targetLength) > kLayoutTolerance) {
    const float end = std::max(std::min(sourceLength / 3.0f, crossLength), minimumEnd);
    end_ = std::floor(std::min(end, targetLength * 0.5f) * scale) / scale;
    tile_ = std::max(sourceLength - 2.0f * end_, 1.0f);
}

float ThreeSlices::sourceOf(float target) const {
    if (!isStretched_ || target < end_) return target;
    if (target >= targetLength_ - end_) return sourceLength_ - (targetLength_ - target);
    return end_ + std::fmod(target - end_, tile_);
}

}  // namespace vanta::gui
