#include "gui/animation/animation.hpp"

#include <algorithm>

#include "gui/tree/user_interface.hpp"

namespace vanta::gui {
namespace {

/// A fourth power of a line that starts at 0.4, made to run from 0 to 1.
float eased(float t) {
    constexpr float kStart = 0.4f;
    constexpr float kStartPower = 0.0256f;
    constexpr float kScale = 1.0262725f;
    float f = t * (1.0f - kStart) + kStart;
    f *= f;
    return (f * f - kStartPower) * kScale;
}

}  // namespace

float motionAt(AnimationMotion motion, float t) {
    switch (motion) {
        case AnimationMotion::Smooth:
            return t * t * (3.0f - 2.0f * t);
        case AnimationMotion::EaseIn:
            return eased(t);
        case AnimationMotion::EaseOut:
            return 1.0f - eased(1.0f - t);
        case AnimationMotion::Linear:
            break;
    }
    return t;
}

Animation::Animation(Animator& animator, Control* control, const void* target)
    : animator_(animator), clock_(animator.ui().createClock()) {
    animator_.add(this, control, target);
}

Animation::~Animation() {
    animator_.forget(this);
}

void Animation::animate() {
    const float t = static_cast<float>(clock_->elapsed()) / static_cast<float>(std::max(duration.value(), 1));
    if (t < 1.0f) {
        apply(motionAt(motion, t));
        return;
    }
    apply(1.0f);
    onFinished.raise(this);
    animator_.remove(this);
}

}  // namespace vanta::gui
