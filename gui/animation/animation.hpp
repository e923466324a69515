#pragma once

#include <memory>

#include "foundation/interval_timer.hpp"
#include "foundation/notify_event.hpp"
#include "foundation/property.hpp"
#include "gui/animation/animator.hpp"

namespace vanta::gui {

enum class AnimationMotion { Linear, Smooth, EaseIn, EaseOut };

/// How far a motion has come after the fraction `t` of its time; 0 at 0 and 1 at 1.
float motionAt(AnimationMotion motion, float t);

/// Takes a value to its end within a time, then deletes itself. Made with `new`, it belongs to the animator,
/// which also ends it when its control goes or when a newer one drives the same target.
class Animation : public AnimatedObject {
public:
    static constexpr int kUsualMs = 200;

    ~Animation() override;
    Animation(const Animation&) = delete;
    Animation& operator=(const Animation&) = delete;

    Property<int> duration{nullptr, kUsualMs};
    Property<AnimationMotion> motion{nullptr, AnimationMotion::Linear};
    /// After the last step. A handler deletes things only by `UserInterface::postDeferred`.
    NotifyEvent onFinished;

    void animate() final;
    void deleteSelf() override { delete this; }

protected:
    Animation(Animator& animator, Control* control, const void* target);
    /// `t` from 0 to 1.
    virtual void apply(float t) = 0;

private:
    Animator& animator_;
    std::unique_ptr<IntervalTimer> clock_;
};

}  // namespace vanta::gui
