#include "foundation/notify_event.hpp"

#include <algorithm>

namespace vanta {

NotifyEvent::~NotifyEvent() {
    handler.reset();
    for (auto& further : handlers) further.reset();
}

void NotifyEvent::setHandler(std::unique_ptr<Handler> primary) {
    std::swap(handler, primary);
    if (raising && primary) removed.push_back(std::move(primary));
}

void NotifyEvent::addHandler(std::unique_ptr<Handler> further) {
    handlers.push_back(std::move(further));
}

void NotifyEvent::removeHandler(const HandlerKey& key) {
    for (std::size_t i = handlers.size(); i-- > 0;) {
        if (!handlers[i] || !handlers[i]->equals(key)) continue;
        if (raising) {
            // The entry may be the one that runs: it is only emptied here, so that places keep standing.
            removed.push_back(std::move(handlers[i]));
        } else {
            handlers.erase(handlers.begin() + static_cast<std::ptrdiff_t>(i));
        }
        return;
    }
}

void NotifyEvent::raise(void* sender) {
    ++raising;
    if (Handler* primary = handler.get()) primary->invoke(sender);
    for (std::size_t i = handlers.size(); i-- > 0;) {
        if (handlers[i]) handlers[i]->invoke(sender);
    }
    if (--raising == 0 && !removed.empty()) dropRemoved();
}

void NotifyEvent::dropRemoved() {
    std::erase(handlers, nullptr);
    removed.clear();
}

}  // namespace vanta
