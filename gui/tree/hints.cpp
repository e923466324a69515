#include "gui/tree/hints.hpp"

#include "gui/tree/event_relay.hpp"
#include "gui/tree/user_interface.hpp"

namespace vanta::gui {

void Hints::show(UserInterface& ui, const std::string& text) {
    left_ = false;
    if (!enabled) return;
    if (!timer_) {
        timer_ = ui.createTimer();
        timer_->interval = kDelayMs;
        timer_->onTick.setHandler(this, &Hints::elapsed);
    }
    const bool hadHint = !current_.empty();
    current_ = text;
    if (text.empty()) {
        timer_->running = false;
        if (hadHint) relay_.tellHint({});
    } else if (hadHint && !timer_->running) {
        relay_.tellHint(text);
    } else {
        timer_->running = false;
        timer_->running = true;
    }
}

void Hints::hide() {
    left_ = false;
    if (!timer_ || !enabled) return;
    timer_->running = false;
    if (current_.empty()) return;
    current_.clear();
    relay_.tellHint({});
}

void Hints::leave() {
    if (moving_) {
        left_ = true;
    } else {
        hide();
    }
}

void Hints::endMove() {
    moving_ = false;
    if (left_) hide();
}

void Hints::elapsed(void* /*sender*/) {
    timer_->running = false;
    relay_.tellHint(current_);
}

}  // namespace vanta::gui
