#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "foundation/lock_free_fifo.hpp"

namespace vanta::gui {

class Component;

/// Hears what an interface is told. All calls on the interface's thread.
class InterfaceListener {
public:
    virtual ~InterfaceListener() = default;
    /// A pair of words that some thread has posted.
    virtual void interfaceEvent(int key, int value) = 0;
    /// The help text to show, empty for none.
    virtual void hintChanged(const std::string& text) = 0;
};

/// The way by which other threads reach an interface. Whoever posts shares it with the interface and may keep
/// it for longer: once the interface has gone, nothing arrives any more.
class EventRelay {
public:
    /// The key that stands for a deferred call among the events; nobody else can post it.
    static constexpr std::uint32_t kDeferredMark = 0xFFFF0000u;

    /// `wake` makes the interface call `drain` soon. It is called on any thread but the audio thread's.
    explicit EventRelay(std::function<void()> wake) : wake_(std::move(wake)) {}
    EventRelay(const EventRelay&) = delete;
    EventRelay& operator=(const EventRelay&) = delete;

    /// On any thread, the audio thread included: the pair arrives at the listeners with the next drain. False
    /// if the interface has gone, or has not drained for so long that the pair is lost.
    VANTA_REALTIME bool post(int key, int value);
    /// Asks for a drain now rather than at the next tick. Not on the audio thread.
    void wake();
    /// On any thread but the audio thread's. A call that finds the relay closed is dropped.
    void postDeferred(Component& target, int argument);
    void cancelDeferred(const Component& target);

    /// On the interface's thread: delivers events and deferred calls in the order in which they were posted.
    /// Ends at once when one of them deletes the interface; the caller shares the relay for as long.
    void drain();
    /// The interface goes.
    void close();
    bool isOpen() const { return open_.load(std::memory_order_acquire); }

    /// On the interface's thread. They are told of events from the last to the first, of hints from the
    /// first.
    void addListener(InterfaceListener& listener) { listeners_.push_back(&listener); }
    void removeListener(const InterfaceListener& listener);
    void tellHint(const std::string& text);

private:
    struct DeferredCall {
        Component* target;
        int argument;
    };

    void tellEvent(int key, int value);
    void runDeferred();
    bool takeDeferred(DeferredCall& call);

    LockFreeFifo queue_;
    std::vector<InterfaceListener*> listeners_;
    std::atomic<bool> open_{true};
    std::mutex mutex_;  ///< guards what follows; never taken on the audio thread
    std::deque<DeferredCall> deferred_;
    std::function<void()> wake_;
};

}  // namespace vanta::gui
