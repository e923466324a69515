#pragma once

#include "gui/animation/animated_control.hpp"
#include "gui/animation/animation.hpp"

namespace vanta::gui {

/// Takes a control's position from where it is to `target`, softly at both ends on top of the motion. The
/// control has an animator.
class MoveAnimation final : public Animation {
public:
    MoveAnimation(AnimatedControl& control, Point target)
        : Animation(*control.animator(), &control, &control.bounds),
          control_(control),
          start_(control.bounds.value().origin()),
          target_(target) {}

    /// How far it has come, of 1.
    float lastT() const { return lastT_; }

protected:
    void apply(float t) override {
        lastT_ = t;
        const float e = motionAt(AnimationMotion::Smooth, t);
        control_.setPosition({(target_.x - start_.x) * e + start_.x, (target_.y - start_.y) * e + start_.y});
    }

private:
    AnimatedControl& control_;
    Point start_;
    Point target_;
    float lastT_ = 0.0f;
};

}  // namespace vanta::gui
