#include "gui/tree/user_interface.hpp"

#include <algorithm>

#include "gui/graphics/bitmap.hpp"
#include "gui/tree/modifiers.hpp"
#include "gui/tree/root_control.hpp"
#include "gui/tree/timer.hpp"

namespace vanta::gui {

UserInterface::UserInterface(SteadyIntervalTimer::Clock clock)
    : clock_(clock),
      relay_(std::make_shared<EventRelay>([this] { wake(); })),
      hints_(*relay_),
      menuGuard_(createClock()) {}

UserInterface::~UserInterface() {
    shutDown();
}

void UserInterface::shutDown() {
    if (destroying_) return;
    destroying_ = true;
    relay_->close();
    hints_.shutDown();
    // Each nulls its entry, and those of what it owns.
    for (std::size_t i = 0; i < components_.size(); ++i) delete components_[i];
    // The scale that it follows may be the derived class's.
    backdrop_.reset();
}

std::unique_ptr<IntervalTimer> UserInterface::createClock() const {
    return std::make_unique<SteadyIntervalTimer>(clock_);
}

std::string UserInterface::modifierName(int modifierBit) const {
    switch (modifierBit) {
        case modifier::kShift:
            return "Shift";
        case modifier::kAlt:
            return "Alt";
        case modifier::kCtrl:
            return "Ctrl";
        default:
            return {};
    }
}

void UserInterface::refresh() {
    // Grown pixels belong to one scale.
    if (backdrop_) loadBackdrop(backdropName_);
    rootControl().refreshTree();
    onRefresh.raise(this);
    rootControl().resized();
}

void UserInterface::drainRelay() {
    const std::shared_ptr<EventRelay> shared = relay_;
    shared->drain();
}

void UserInterface::tickFrameTimers() {
    tickingFrames_ = true;
    for (std::size_t i = 0; i < frameTimers_.size(); ++i) {
        // One that was stopped on this thread leaves the list with the next drain.
        if (Timer* timer = frameTimers_[i]; timer && timer->running) timer->onTick.raise(timer);
    }
    tickingFrames_ = false;
    std::erase(frameTimers_, nullptr);
}

void UserInterface::removeFrameTimer(Timer& timer) {
    if (tickingFrames_) {
        std::replace(frameTimers_.begin(), frameTimers_.end(), &timer, static_cast<Timer*>(nullptr));
    } else {
        std::erase(frameTimers_, &timer);
    }
}

void UserInterface::propertyChanged(AbstractProperty& property) {
    if (&property != &accelerated) return;
    // Timers that ticked with the frames need a clock when frames end, and the other way round.
    for (std::size_t i = 0; i < components_.size(); ++i) {
        auto* timer = dynamic_cast<Timer*>(components_[i]);
        if (timer && timer->frameLocked) timer->deferredCall(0);
    }
}

void UserInterface::forget(Component& component) {
    relay_->cancelDeferred(component);
    if (destroying_) {
        std::replace(components_.begin(), components_.end(), &component, static_cast<Component*>(nullptr));
    } else {
        std::erase(components_, &component);
    }
}

}  // namespace vanta::gui
