#pragma once

#include <cmath>

#include "gui/animation/animated_control.hpp"
#include "gui/animation/animation.hpp"

namespace vanta::gui {

inline int interpolated(int from, int to, float t) {
    return static_cast<int>(std::lround(static_cast<double>(from) + (static_cast<double>(to) - from) * t));
}
inline float interpolated(float from, float to, float t) {
    return from + (to - from) * t;
}
inline Rect interpolated(const Rect& from, const Rect& to, float t) {
    return {interpolated(from.left, to.left, t), interpolated(from.top, to.top, t),
            interpolated(from.right, to.right, t), interpolated(from.bottom, to.bottom, t)};
}

/// Takes a value, or the property that holds one, from where it is to `end`. Each step repaints `owner`,
/// whose end is the animation's too; without an owner `cell` outlives the animation or its target is
/// cancelled.
template <typename Value, typename Cell = Value>
class ValueAnimation final : public Animation {
public:
    ValueAnimation(Animator& animator, AnimatedControl* owner, Cell& cell, Value end)
        : Animation(animator, owner, &cell), owner_(owner), cell_(cell), start_(cell), end_(end) {}

protected:
    void apply(float t) override {
        cell_ = interpolated(start_, end_, t);
        if (owner_) owner_->markDirty();
    }

private:
    AnimatedControl* owner_;
    Cell& cell_;
    Value start_;
    Value end_;
};

}  // namespace vanta::gui
