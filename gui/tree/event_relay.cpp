#include "gui/tree/event_relay.hpp"

#include <algorithm>

#include "gui/tree/component.hpp"

namespace vanta::gui {

bool EventRelay::post(int key, int value) {
    const auto first = static_cast<std::uint32_t>(key);
    if (!isOpen() || first == kDeferredMark) return false;
    return queue_.push({first, static_cast<std::uint32_t>(value)});
}

void EventRelay::wake() {
    const std::lock_guard lock(mutex_);
    if (wake_) wake_();
}

void EventRelay::postDeferred(Component& target, int argument) {
    const std::lock_guard lock(mutex_);
    if (!isOpen()) return;
    deferred_.push_back({&target, argument});
    queue_.push({kDeferredMark, 0});
    if (wake_) wake_();
}

void EventRelay::cancelDeferred(const Component& target) {
    const std::lock_guard lock(mutex_);
    std::erase_if(deferred_, [&](const DeferredCall& call) { return call.target == &target; });
}

void EventRelay::drain() {
    LockFreeFifo::Item item;
    while (isOpen() && queue_.pop(item)) {
        if (item.first == kDeferredMark) {
            runDeferred();
        } else {
            tellEvent(static_cast<int>(item.first), static_cast<int>(item.second));
        }
    }
    // The mark of a call is lost when the queue was full.
    runDeferred();
}

void EventRelay::close() {
    const std::lock_guard lock(mutex_);
    open_.store(false, std::memory_order_release);
    deferred_.clear();
    wake_ = nullptr;
}

void EventRelay::removeListener(const InterfaceListener& listener) {
    std::erase(listeners_, &listener);
}

void EventRelay::tellHint(const std::string& text) {
    for (std::size_t i = 0; i < listeners_.size(); ++i) listeners_[i]->hintChanged(text);
}

void EventRelay::tellEvent(int key, int value) {
    for (std::size_t i = listeners_.size(); i-- > 0 && isOpen();) {
        if (i < listeners_.size()) listeners_[i]->interfaceEvent(key, value);
    }
}

void EventRelay::runDeferred() {
    DeferredCall call{};
    while (isOpen() && takeDeferred(call)) call.target->deferredCall(call.argument);
}

bool EventRelay::takeDeferred(DeferredCall& call) {
    const std::lock_guard lock(mutex_);
    if (deferred_.empty()) return false;
    call = deferred_.front();
    deferred_.pop_front();
    return true;
}

}  // namespace vanta::gui
