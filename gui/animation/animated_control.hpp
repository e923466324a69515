#pragma once

#include "gui/tree/control.hpp"

namespace vanta::gui {

class Animator;

/// A control whose properties can be animated, at once where there is no animator.
class AnimatedControl : public Control {
public:
    explicit AnimatedControl(UserInterface& interface, Animator* animatedBy = nullptr);
    ~AnimatedControl() override;

    Animator* animator() const { return animator_; }
    void setAnimator(Animator* animator);
    /// A duration of 0 or less is the usual one.
    void fadeTo(int target, int durationMs = 0);

    void linkRemoved(Component* other) override;

private:
    Animator* animator_ = nullptr;
};

}  // namespace vanta::gui
