#pragma once

#include <atomic>
#include <cstdint>
#include <thread>

#include "foundation/lock_free_fifo.hpp"
#include "foundation/notify_event.hpp"
#include "foundation/realtime.hpp"

namespace vanta {

/// Moves work onto the thread that made the queue, as events of two numbers.
class AsyncEventQueue {
public:
    AsyncEventQueue() = default;
    AsyncEventQueue(const AsyncEventQueue&) = delete;
    AsyncEventQueue& operator=(const AsyncEventQueue&) = delete;

    virtual ~AsyncEventQueue() = default;
    /// From any thread, the audio thread included. Returns at once; events arrive in order.
    VANTA_REALTIME virtual void post(int kind, int value) = 0;

    NotifyEvent event;  ///< raised on the owner thread for each post, with the queue as sender
    int value = 0;      ///< valid while `event` is being raised
    int kind = 0;       ///< likewise
};

/// For threads without a message loop: the owner thread calls `pump` now and then.
class PumpedEventQueue final : public AsyncEventQueue {
public:
    static constexpr std::uint32_t kDefaultCapacity = 4096;

    /// Belongs to the calling thread.
    explicit PumpedEventQueue(std::uint32_t capacity = kDefaultCapacity);

    /// Neither blocks nor allocates. Where nobody pumps and the queue fills up, further events are dropped
    /// and counted.
    VANTA_REALTIME void post(int kind, int value) override;

    /// Delivers what stood in the queue at the start and returns how many events that were. What handlers
    /// post meanwhile waits for the next call. On any thread but the owner it does nothing and returns 0.
    int pump();

    std::uint32_t droppedEvents() const { return dropped_.load(std::memory_order_relaxed); }

private:
    LockFreeFifo events_;
    std::atomic<std::uint32_t> dropped_{0};
    std::thread::id owner_;
};

}  // namespace vanta
