#pragma once

#include <memory>

#include "foundation/interval_timer.hpp"

namespace vanta::gui {

/// Keeps the press that closes a popup menu from opening it again.
class MenuGuard {
public:
    /// A press or hover within this many milliseconds of a menu's end belongs to it.
    static constexpr int kJustClosedMs = 199;

    explicit MenuGuard(std::unique_ptr<IntervalTimer> clock) : clock_(std::move(clock)) {}

    void opened() {
        state_ = State::Open;
        ++openings_;
    }
    void closed() {
        state_ = State::JustClosed;
        clock_->reset();
    }
    bool isOpen() const { return state_ == State::Open; }
    bool justClosed() {
        if (state_ == State::JustClosed && clock_->elapsed() > kJustClosedMs) state_ = State::None;
        return state_ == State::JustClosed;
    }

    /// The pointer moves over the window again: a menu that is still thought open has gone.
    void moveRouted() {
        if (isOpen()) closed();
    }
    /// How many menus have been opened, for `pressRouted`.
    int openings() const { return openings_; }
    /// A press has had its effect; the next one counts again, unless this one has opened a menu.
    void pressRouted(int openingsBefore) {
        if (openings_ == openingsBefore) state_ = State::None;
    }

private:
    enum class State { None, Open, JustClosed };

    State state_ = State::None;
    int openings_ = 0;
    std::unique_ptr<IntervalTimer> clock_;
};

}  // namespace vanta::gui
