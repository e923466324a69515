#pragma once

#include "gui/animation/animated_control.hpp"

namespace vanta::gui {

/// Fades a control between its normal and its active look.
class RolloverManager {
public:
    static constexpr int kOnMs = 100;
    static constexpr int kOffMs = 300;

    explicit RolloverManager(AnimatedControl& control) : control_(control) {}

    void setActive(bool active);
    bool isActive() const { return active_; }
    /// 0 for the normal look to 255 for the active one.
    int mix() const { return mix_; }
    /// The opacity of a look that rests at `restAlpha` (0 to 255).
    int alpha() const { return (255 - restAlpha) * mix_ / 255 + restAlpha; }

    int restAlpha = 255;

private:
    AnimatedControl& control_;
    bool active_ = false;
    int mix_ = 0;
};

}  // namespace vanta::gui
