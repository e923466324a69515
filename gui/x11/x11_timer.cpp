#include "gui/x11/x11_timer.hpp"

#include <algorithm>

#include "foundation/interval_timer.hpp"

namespace vanta::gui {

std::int64_t X11Timers::nextDue(std::int64_t otherwise) const {
    return schedule_.empty() ? otherwise : std::min(otherwise, schedule_.begin()->first);
}

X11Timer* X11Timers::due(std::int64_t now) const {
    return schedule_.empty() || schedule_.begin()->first > now ? nullptr : schedule_.begin()->second;
}

void X11Timer::schedule(std::int64_t due) {
    due_ = due;
    timers_.add(*this, due_);
}

void X11Timer::stopPlatformTimer() {
    if (due_ < 0) return;
    timers_.remove(*this, due_);
    due_ = -1;
}

void X11Timer::startPlatformTimer() {
    stopPlatformTimer();
    schedule(SteadyIntervalTimer::monotonicMilliseconds() + interval);
}

void X11Timer::tick(std::int64_t now) {
    const std::int64_t next = due_ + interval;
    stopPlatformTimer();
    schedule(next > now ? next : now + interval);
    onTick.raise(this);
}

}  // namespace vanta::gui
