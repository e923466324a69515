#include "gui/animation/animated_control.hpp"

#include "gui/animation/animator.hpp"
#include "gui/animation/fade_animation.hpp"

namespace vanta::gui {

AnimatedControl::AnimatedControl(UserInterface& interface, Animator* animatedBy) : Control(interface) {
    setAnimator(animatedBy);
}

AnimatedControl::~AnimatedControl() {
    if (animator_) animator_->removeAll(this);
}

void AnimatedControl::setAnimator(Animator* animator) {
    if (animator == animator_) return;
    if (animator_) {
        animator_->removeAll(this);
        unlink(*this, *animator_);
    }
    animator_ = animator;
    if (animator_) link(*this, *animator_);
}

void AnimatedControl::linkRemoved(Component* other) {
    if (other == static_cast<Component*>(animator_)) animator_ = nullptr;
    Control::linkRemoved(other);
}

void AnimatedControl::fadeTo(int target, int durationMs) {
    if (!animator_) {
        alpha = target;
    } else if (alpha == target) {
        animator_->cancel(&alpha);
    } else {
        auto* fade = new FadeAnimation(*this, target);
        if (durationMs > 0) fade->duration = durationMs;
    }
}

}  // namespace vanta::gui
