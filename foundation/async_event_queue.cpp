#include "foundation/async_event_queue.hpp"

namespace vanta {

PumpedEventQueue::PumpedEventQueue(std::uint32_t capacity)
    : events_(capacity, capacity), owner_(std::this_thread::get_id()) {}

void PumpedEventQueue::post(int postedKind, int postedValue) {
    const LockFreeFifo::Item item{static_cast<std::uint32_t>(postedKind),
                                  static_cast<std::uint32_t>(postedValue)};
    if (!events_.push(item)) dropped_.fetch_add(1, std::memory_order_relaxed);
}

int PumpedEventQueue::pump() {
    if (std::this_thread::get_id() != owner_) return 0;
    // A handler may pump again, as a modal dialog does; its own event must read the same afterwards.
    const int outerKind = kind;
    const int outerValue = value;
    const std::uint32_t standing = events_.sizeEstimate();
    int delivered = 0;
    LockFreeFifo::Item item{};
    for (std::uint32_t i = 0; i < standing && events_.pop(item); ++i) {
        kind = static_cast<int>(item.first);
        value = static_cast<int>(item.second);
        event.raise(this);
        ++delivered;
    }
    kind = outerKind;
    value = outerValue;
    return delivered;
}

}  // namespace vanta
