#include "gui/controls/rollover_manager.hpp"

#include "gui/animation/value_animation.hpp"
#include "gui/tree/user_interface.hpp"

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

RolloverManager::Look RolloverManager::crossfade(const Bitmap& normal, const Bitmap& active,
                                                 const Rect* part) {
    if (mix_ <= 0) return {normal, alpha()};
    if (mix_ >= 255) return {active, alpha()};
    if (normal.isEmpty()) return {active, mix_};
    if (!scratch_) scratch_ = control_.ui().createBitmap();
    scratch_->crossfade(normal, active, mix_, part);
    return {*scratch_, alpha()};
}

}  // namespace vanta::gui
