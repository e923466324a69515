#include "foundation/updated_object.hpp"

#include <algorithm>

namespace vanta {

UpdateNotification::UpdateNotification(UpdatedObject& owner, NotifyEvent& raisedEvent, void* eventSender)
    : event_(&raisedEvent), object_(&owner), sender_(eventSender) {
    owner.notifications_.push_back(this);
}

void UpdateNotification::signal() {
    pending_ = true;
    object_->requestUpdate();
}

void UpdatedObject::requestUpdate() {
    if (updateState_ == State::Running) return;
    if (updateBlocks_) {
        updateState_ = State::Due;
    } else {
        runUpdate();
    }
}

void UpdatedObject::endUpdate() {
    if (--updateBlocks_ == 0 && updateState_ == State::Due) runUpdate();
}

void UpdatedObject::runUpdate() {
    updateState_ = State::Running;
    update();
    // One further pass takes what handlers have signalled behind the loop's back; no more than one, so
    // that two handlers that signal each other cannot hold the thread.
    if (hasPending()) update();
    updateState_ = State::Idle;
}

void UpdatedObject::update() {
    for (std::size_t i = 0; i < notifications_.size(); ++i) {
        UpdateNotification& notification = *notifications_[i];
        if (!notification.pending_) continue;
        notification.event_->raise(notification.sender_);
        // Cleared last: what a handler signals of its own event is part of this delivery.
        notification.pending_ = false;
    }
}

bool UpdatedObject::hasPending() const {
    return std::any_of(notifications_.begin(), notifications_.end(), [](auto* n) { return n->pending_; });
}

EventForwarder::EventForwarder(EventForwarderList& forwarderList,
                               std::unique_ptr<NotifyEvent::Handler> callback)
    : handler_(std::move(callback)), list_(&forwarderList) {}

void EventForwarder::trigger(void* triggeredBy) {
    if (!pending_) {
        sender_ = triggeredBy;
        pending_ = true;
        list_->queue_.push_back(this);
    } else if (triggeredBy != sender_) {
        sender_ = nullptr;
    }
    list_->requestUpdate();
}

void EventForwarderList::add(std::unique_ptr<EventForwarder> forwarder) {
    forwarders_.push_back(std::move(forwarder));
    // A forwarder stands in the queue at most once while it is pending, and once more when it is
    // triggered again by a later entry of a running delivery.
    queue_.reserve(2 * forwarders_.size());
}

void EventForwarderList::update() {
    const std::size_t count = queue_.size();
    for (std::size_t i = 0; i < count; ++i) {
        EventForwarder& forwarder = *queue_[i];
        forwarder.handler_->invoke(forwarder.sender_);
        forwarder.pending_ = false;
    }
    queue_.erase(queue_.begin(), queue_.begin() + static_cast<std::ptrdiff_t>(count));
    UpdatedObject::update();
}

}  // namespace vanta
