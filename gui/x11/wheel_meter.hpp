#pragma once

#include <cstdint>

#include "gui/tree/control.hpp"

namespace vanta::gui {

/// Makes movements of controls from clicks of a wheel: a fast turn goes further.
class WheelMeter {
public:
    static constexpr float kPixelsPerClick = 25.0f;
    /// Milliseconds between two events, as far as they count.
    static constexpr std::int64_t kLeastInterval = 10;
    static constexpr std::int64_t kGreatestInterval = 500;

    /// `time` in milliseconds.
    Control::WheelMove measure(Point clicks, std::int64_t time);

private:
    struct Axis {
        float amount(float clicks, std::int64_t time);
        std::int64_t last = -kGreatestInterval;
    };
    Axis horizontal_;
    Axis vertical_;
};

}  // namespace vanta::gui
