#include "gui/controls/rollover_manager.hpp"

#include "gui/animation/value_animation.hpp"

namespace vanta::gui {

void RolloverManager::setActive(bool active) {
    if (active == active_) return;
    active_ = active;
    const int target = active ? 255 : 0;
    if (Animator* animator = control_.animator()) {
        auto* fade = new ValueAnimation<int>(*animator, &control_, mix_, target);
        fade->duration = active ? kOnMs : kOffMs;
    } else {
        mix_ = target;
        control_.markDirty();
    }
}

}  // namespace vanta::gui
