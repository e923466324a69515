#pragma once

#include <cstdint>
#include <set>
#include <utility>

#include "gui/tree/timer.hpp"

namespace vanta::gui {

class X11Timer;

/// The timers that run, by when they are due. Milliseconds of the steady clock.
class X11Timers {
public:
    void add(X11Timer& timer, std::int64_t due) { schedule_.emplace(due, &timer); }
    void remove(X11Timer& timer, std::int64_t due) { schedule_.erase({due, &timer}); }
    /// When the next is due, or `otherwise` if that is sooner.
    std::int64_t nextDue(std::int64_t otherwise) const;
    /// One that is due by now, or null.
    X11Timer* due(std::int64_t now) const;

private:
    std::set<std::pair<std::int64_t, X11Timer*>> schedule_;
};

/// Ticks in the loop of its interface.
class X11Timer final : public Timer {
public:
    X11Timer(UserInterface& interface, X11Timers& timers) : Timer(interface), timers_(timers) {}
    ~X11Timer() override { stopPlatformTimer(); }

    /// It is due: what it has missed is left out. Afterwards it may be gone.
    void tick(std::int64_t now);

protected:
    void stopPlatformTimer() override;
    void startPlatformTimer() override;

private:
    void schedule(std::int64_t due);

    X11Timers& timers_;
    std::int64_t due_ = -1;  ///< -1: stands still
};

}  // namespace vanta::gui
