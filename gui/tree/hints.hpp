#pragma once

#include <memory>
#include <string>

#include "gui/tree/timer.hpp"

namespace vanta::gui {

class EventRelay;

/// The help text of what the pointer is over: it comes after a rest, then follows from control to control at
/// once, until the pointer leaves them.
class Hints {
public:
    static constexpr int kDelayMs = 1500;

    explicit Hints(EventRelay& relay) : relay_(relay) {}
    Hints(const Hints&) = delete;
    Hints& operator=(const Hints&) = delete;

    /// An empty text takes away the one that is shown.
    void show(UserInterface& ui, const std::string& text);
    void hide();
    /// A control with a hint is left. Within a pointer move the hint stays up until it is known whether the
    /// control that the pointer has come to has one too.
    void leave();

    void beginMove() { moving_ = true; }
    void endMove();
    /// Gives the timer back before the interface deletes what is left.
    void shutDown() { timer_.reset(); }

    bool enabled = true;

private:
    void elapsed(void* sender);

    EventRelay& relay_;
    std::unique_ptr<Timer> timer_;  ///< made on first use
    std::string current_;
    bool moving_ = false;
    bool left_ = false;
};

}  // namespace vanta::gui
