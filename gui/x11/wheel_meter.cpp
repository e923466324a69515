#include "gui/x11/wheel_meter.hpp"

#include <algorithm>

namespace vanta::gui {

float WheelMeter::Axis::amount(float clicks, std::int64_t time) {
    if (clicks == 0.0f) return 0.0f;
    const std::int64_t interval = std::clamp(time - last, kLeastInterval, kGreatestInterval);
    last = time;
    return static_cast<float>(kLeastInterval) / static_cast<float>(interval) * 0.1f * clicks;
}

Control::WheelMove WheelMeter::measure(Point clicks, std::int64_t time) {
    return {{horizontal_.amount(clicks.x, time), vertical_.amount(clicks.y, time)},
            {clicks.x * kPixelsPerClick, clicks.y * kPixelsPerClick}};
}

}  // namespace vanta::gui
