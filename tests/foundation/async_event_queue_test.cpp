#include "foundation/async_event_queue.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "tests/support/realtime_trap.hpp"

namespace vanta {
namespace {

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
    std::vector<std::pair<int, int>> events;
    std::function<void()> then;
};

using Events = std::vector<std::pair<int, int>>;

TEST(PumpedEventQueue, DeliversInOrderOnlyWhenPumped) {
    PumpedEventQueue queue;
    Listener listener(queue);
    queue.post(1, -5);
    queue.post(-2, 7);
    EXPECT_TRUE(listener.events.empty());
    EXPECT_EQ(queue.pump(), 2);
    EXPECT_EQ(listener.events, (Events{{1, -5}, {-2, 7}}));
    EXPECT_EQ(queue.pump(), 0);
}

TEST(PumpedEventQueue, APostFromAHandlerWaitsForTheNextPump) {
    PumpedEventQueue queue;
    Listener listener(queue);
    listener.then = [&] { queue.post(2, 0); };
    queue.post(1, 0);
    EXPECT_EQ(queue.pump(), 1);
    listener.then = nullptr;
    EXPECT_EQ(queue.pump(), 1);
    EXPECT_EQ(listener.events, (Events{{1, 0}, {2, 0}}));
}

TEST(PumpedEventQueue, AHandlerThatPumpsKeepsItsOwnEvent) {
    PumpedEventQueue queue;
    Listener listener(queue);
    int kindAfterwards = 0;
    listener.then = [&] {
        listener.then = nullptr;
        queue.pump();
        kindAfterwards = queue.kind;
    };
    queue.post(1, 0);
    queue.post(2, 0);
    queue.pump();
    EXPECT_EQ(kindAfterwards, 1);
    EXPECT_EQ(listener.events, (Events{{1, 0}, {2, 0}}));
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

TEST(PumpedEventQueue, TakesPostsFromManyThreadsWhileItPumps) {
    constexpr int kPosts = 20000;
    PumpedEventQueue queue(65536);
    Listener listener(queue);
    std::vector<std::thread> threads;
    for (int kind = 0; kind < 3; ++kind) {
        threads.emplace_back([&queue, kind] {
            for (int i = 0; i < kPosts; ++i) queue.post(kind, i);
        });
    }
    while (listener.events.size() < 3 * kPosts) queue.pump();
    for (std::thread& thread : threads) thread.join();
    std::array<int, 3> next{};
    for (const auto& [kind, value] : listener.events) ASSERT_EQ(value, next[std::size_t(kind)]++);
    EXPECT_EQ(next, (std::array{kPosts, kPosts, kPosts}));
}

TEST(PumpedEventQueue, PostsFromTheAudioThread) {
    PumpedEventQueue queue(10);
    test::RealtimeTrap trap;
    {
        const RealtimeScope scope;
        for (int i = 0; i < 20; ++i) queue.post(i, i);
    }
    EXPECT_EQ(trap.total(), 0) << trap.report();
}

}  // namespace
}  // namespace vanta
