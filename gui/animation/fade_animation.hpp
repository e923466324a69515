#pragma once

#include "gui/animation/animated_control.hpp"
#include "gui/animation/animation.hpp"

namespace vanta::gui {

/// Takes a control's opacity from where it is to `target`. The control has an animator.
class FadeAnimation final : public Animation {
public:
    FadeAnimation(AnimatedControl& control, int target)
        : Animation(*control.animator(), &control, &control.alpha),
          control_(control),
          start_(control.alpha),
          target_(target) {}

protected:
    void apply(float t) override {
        // A fade that has nothing to change must not ask for painting.
        control_.alpha =
            static_cast<int>(static_cast<float>(target_ - start_) * t + static_cast<float>(start_));
    }

private:
    AnimatedControl& control_;
    int start_;
    int target_;
};

}  // namespace vanta::gui
