#include "gui/opengl/frame_rhythm.hpp"

#include <algorithm>
#include <cmath>

namespace vanta::gui {
namespace {

constexpr double kShortestWaitMs = 5.0;
constexpr double kLongestWaitMs = 100.0;

}  // namespace

FrameRhythm FrameRhythm::of(int framesPerSecond, double refreshMs) {
    const double wanted = 1000.0 / std::max(framesPerSecond, 1);
    if (!(refreshMs > 1.0) || refreshMs > 1000.0) return {wanted, 0};
    // Not quite one refresh more: frames come rather too often than too seldom.
    return {refreshMs, std::max(0, static_cast<int>(std::ceil(wanted / refreshMs - 1.5)))};
}

int FrameRhythm::waitAfter(double workMs) const {
    return static_cast<int>(std::clamp(periodMs - workMs, kShortestWaitMs, kLongestWaitMs));
}

}  // namespace vanta::gui
