#include "foundation/updated_object.hpp"

#include <algorithm>

namespace vanta {

UpdateNotification::UpdateNotification(UpdatedObject& owner, NotifyEvent& raisedEvent, void* eventSender)
    : event(&raisedEvent), object(&owner), sender(eventSender) {
    owner.notifications.push_back(this);
}

void UpdateNotification::signal() {
    pending = true;
    object->requestUpdate();
}

void UpdatedObject::requestUpdate() {
    if (updateState == State::Running) return;
    if (updateBlocks) {
        updateState = State::Due;
    } else {
        runUpdate();
    }
}

void UpdatedObject::endUpdate() {
    if (--updateBlocks == 0 && updateState == State::Due) runUpdate();
}

void UpdatedObject::runUpdate() {
    updateState = State::Running;
    update();
    // One further pass takes what handlers have signalled behind the loop's back; no more than one, so
    // that two handlers that signal each other cannot hold the thread.
    if (hasPending()) update();
    updateState = State::Idle;
}

void UpdatedObject::update() {
    for (std::size_t i = 0; i < notifications.size(); ++i) {
        UpdateNotification& notification = *notifications[i];
        if (!notification.pending) continue;
        notification.event->raise(notification.sender);
        // Cleared last: what a handler signals of its own event is part of this delivery.
        notification.pending = false;
    }
}

bool UpdatedObject::hasPending() const {
    return std::any_of(notifications.begin(), notifications.end(), [](auto* n) { return n->pending; });
}

EventForwarder::EventForwarder(EventForwarderList& forwarderList,
                               std::unique_ptr<NotifyEvent::Handler> callback)
    : handler(std::move(callback)), list(&forwarderList) {}

void EventForwarder::trigger(void* triggeredBy) {
    if (!pending) {
        sender = triggeredBy;
        pending = true;
        list->queue.push_back(this);
    } else if (triggeredBy != sender) {
        sender = nullptr;
    }
    list->requestUpdate();
}

void EventForwarderList::add(std::unique_ptr<EventForwarder> forwarder) {
    forwarders.push_back(std::move(forwarder));
    // A forwarder stands in the queue once at the most while it is pending, and once more when it is
    // triggered again by a later entry of a running delivery.
    queue.reserve(2 * forwarders.size());
}

void EventForwarderList::update() {
    const std::size_t count = queue.size();
    for (std::size_t i = 0; i < count; ++i) {
        EventForwarder& forwarder = *queue[i];
        forwarder.handler->invoke(forwarder.sender);
        forwarder.pending = false;
    }
    queue.erase(queue.begin(), queue.begin() + static_cast<std::ptrdiff_t>(count));
    UpdatedObject::update();
}

}  // namespace vanta
