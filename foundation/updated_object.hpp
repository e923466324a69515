#pragma once

#include <memory>
#include <vector>

#include "foundation/notify_event.hpp"

namespace vanta {

class UpdatedObject;

/// A member of an UpdatedObject that raises an event during the next update.
class UpdateNotification {
public:
    UpdateNotification(UpdatedObject& owner, NotifyEvent& raisedEvent, void* eventSender);
    UpdateNotification(const UpdateNotification&) = delete;
    UpdateNotification& operator=(const UpdateNotification&) = delete;

    void signal();

private:
    friend class UpdatedObject;
    NotifyEvent* event_;
    bool pending_ = false;
    UpdatedObject* object_;
    void* sender_;
};

/// Turns many small changes into one `update()`. Requests inside an update block wait for its end; a
/// request while `update()` runs does not recurse: what it left pending follows in one further pass.
/// One thread at a time.
class UpdatedObject {
public:
    UpdatedObject() = default;
    UpdatedObject(const UpdatedObject&) = delete;
    UpdatedObject& operator=(const UpdatedObject&) = delete;
    virtual ~UpdatedObject() = default;

    void requestUpdate();
    void beginUpdate() { ++updateBlocks_; }
    void endUpdate();

protected:
    /// Raises what was signalled. Overrides call this and then do their own work.
    virtual void update();
    /// Whether a delivery has left work behind.
    virtual bool hasPending() const;

private:
    friend class UpdateNotification;
    enum class State { Idle, Due, Running };

    void runUpdate();

    std::vector<UpdateNotification*> notifications_;  ///< members of the derived object
    State updateState_ = State::Idle;
    int updateBlocks_ = 0;
};

/// Holds an update block open for a scope.
class UpdateBlock {
public:
    explicit UpdateBlock(UpdatedObject& updated) : object_(updated) { object_.beginUpdate(); }
    ~UpdateBlock() { object_.endUpdate(); }
    UpdateBlock(const UpdateBlock&) = delete;
    UpdateBlock& operator=(const UpdateBlock&) = delete;

private:
    UpdatedObject& object_;
};

class EventForwarderList;

/// One coalescing, deferred callback. Triggered twice before delivery it is called once; by two different
/// senders, with a null sender, meaning several.
class EventForwarder {
public:
    EventForwarder(EventForwarderList& forwarderList, std::unique_ptr<NotifyEvent::Handler> callback);
    virtual ~EventForwarder() = default;
    EventForwarder(const EventForwarder&) = delete;
    EventForwarder& operator=(const EventForwarder&) = delete;

    /// Allocates nothing.
    void trigger(void* sender);

private:
    friend class EventForwarderList;
    std::unique_ptr<NotifyEvent::Handler> handler_;
    bool pending_ = false;
    EventForwarderList* list_;
    void* sender_ = nullptr;
};

/// Delivers triggered forwarders in the order of their triggers, at the end of an update block.
class EventForwarderList : public UpdatedObject {
public:
    /// Takes ownership.
    void add(std::unique_ptr<EventForwarder> forwarder);

protected:
    void update() override;
    bool hasPending() const override { return !queue_.empty() || UpdatedObject::hasPending(); }

private:
    friend class EventForwarder;
    std::vector<std::unique_ptr<EventForwarder>> forwarders_;
    std::vector<EventForwarder*> queue_;
};

}  // namespace vanta
