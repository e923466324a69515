#include "foundation/async_event_queue.hpp"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <thread>

#include "tests/support/realtime_trap.hpp"

namespace vanta::test {
namespace {

using Events = std::vector<std::pair<int, int>>;

/// Notes the events of one queue.
struct Listener {
    explicit Listener(PumpedEventQueue& heard) : queue(heard) {
        queue.event.setHandler(this, &Listener::onEvent);
    }
    void onEvent(void* sender) {
        EXPECT_EQ(sender, static_cast<AsyncEventQueue*>(&queue));
        events.emplace_back(queue.kind, queue.value);
        // Called as a copy, so that a test may replace it from within.
        if (const auto next = then) next();
    }
    PumpedEventQueue& queue;
    Events events;
    std::function<void()> then;
};

TEST(PumpedEventQueue, DeliversInOrderWhatWasThereWhenItWasPumped) {
    PumpedEventQueue queue;
    Listener listener(queue);
    listener.then = [&] { queue.post(3, 0); };
    queue.post(1, -5);
    queue.post(-2, 7);
    EXPECT_TRUE(listener.events.empty());
    EXPECT_EQ(queue.pump(), 2);
    EXPECT_EQ(listener.events, (Events{{1, -5}, {-2, 7}}));
    int kindAfterwards = 0;
    listener.then = [&] {
        listener.then = nullptr;
        queue.pump();
        kindAfterwards = queue.kind;
    };
    queue.post(4, 0);
    queue.pump();
    EXPECT_EQ(listener.events, (Events{{1, -5}, {-2, 7}, {3, 0}, {3, 0}, {4, 0}}));
    EXPECT_EQ(kindAfterwards, 3) << "a handler that pumps keeps its own event";
}

TEST(PumpedEventQueue, DeliversOnItsOwnerThreadAndCountsWhatItDrops) {
    PumpedEventQueue queue(3);
    Listener listener(queue);
    std::thread([&] {
        for (int i = 0; i < 5; ++i) queue.post(i, i);
        EXPECT_EQ(queue.pump(), 0);
    }).join();
    EXPECT_TRUE(listener.events.empty());
    EXPECT_EQ(queue.droppedEvents(), 2u);
    EXPECT_EQ(queue.pump(), 3);
    EXPECT_EQ(listener.events, (Events{{0, 0}, {1, 1}, {2, 2}}));
}

TEST(PumpedEventQueue, TakesPostsFromManyAudioThreadsWhileItPumps) {
    constexpr int kPosts = 20000;
    PumpedEventQueue queue(65536);
    Listener listener(queue);
    RealtimeTrap trap;
    std::vector<std::thread> threads;
    for (int kind = 0; kind < 3; ++kind) {
        threads.emplace_back([&queue, kind] {
            const RealtimeTrap::ThreadWatch watch;
            const RealtimeScope audio;
            for (int i = 0; i < kPosts; ++i) queue.post(kind, i);
        });
    }
    while (listener.events.size() < 3 * kPosts) queue.pump();
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(trap.total(), 0) << trap.report();
    std::array<int, 3> next{};
    for (const auto& [kind, value] : listener.events) ASSERT_EQ(value, next[std::size_t(kind)]++);
}

}  // namespace
}  // namespace vanta::test
