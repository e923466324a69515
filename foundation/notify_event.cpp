#include "foundation/notify_event.hpp"

#include <algorithm>

namespace vanta {

NotifyEvent::~NotifyEvent() {
    handler_.reset();
    for (auto& further : handlers_) further.reset();
}

void NotifyEvent::setHandler(std::unique_ptr<Handler> primary) {
    std::swap(handler_, primary);
    if (raising_ && primary) removed_.push_back(std::move(primary));
}

void NotifyEvent::addHandler(std::unique_ptr<Handler> further) {
    handlers_.push_back(std::move(further));
}

void NotifyEvent::removeHandler(const HandlerKey& key) {
    for (std::size_t i = handlers_.size(); i-- > 0;) {
        if (!handlers_[i] || !handlers_[i]->equals(key)) continue;
        if (raising_) {
            // The entry may be the one that runs: it is only emptied here, so that places keep standing.
            removed_.push_back(std::move(handlers_[i]));
        } else {
            handlers_.erase(handlers_.begin() + static_cast<std::ptrdiff_t>(i));
        }
        return;
    }
}

void NotifyEvent::raise(void* sender) {
    ++raising_;
    if (Handler* primary = handler_.get()) primary->invoke(sender);
    for (std::size_t i = handlers_.size(); i-- > 0;) {
        if (handlers_[i]) handlers_[i]->invoke(sender);
    }
    if (--raising_ == 0 && !removed_.empty()) dropRemoved();
}

void NotifyEvent::dropRemoved() {
    std::erase(handlers_, nullptr);
    removed_.clear();
}

}  // namespace vanta
