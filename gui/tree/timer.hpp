#pragma once

#include "foundation/notify_event.hpp"
#include "gui/tree/component.hpp"

namespace vanta::gui {

/// Raises an event again and again. The platform has the clock; a timer that is locked to frames has none of
/// its own where a render thread draws, and ticks with each frame instead.
class Timer : public Component {
public:
    explicit Timer(UserInterface& interface) : Component(interface) {}
    ~Timer() override;

    /// These may change on any thread that holds the root's lock. On another thread than the interface's the
    /// change takes effect with the next drain of the relay.
    Property<bool> running{this, false};
    /// Milliseconds. A timer at 0 or below stands still.
    Property<int> interval{this, 1000};
    Property<bool> frameLocked{this, false};
    NotifyEvent onTick;

    void propertyChanged(AbstractProperty& property) override;
    void deferredCall(int argument) override;

protected:
    virtual void stopPlatformTimer() = 0;
    virtual void startPlatformTimer() = 0;

private:
    void restart();
};

}  // namespace vanta::gui
