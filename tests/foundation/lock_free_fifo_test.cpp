#include "foundation/lock_free_fifo.hpp"

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <deque>
#include <functional>
#include <thread>

#include "foundation/async_event_queue.hpp"
#include "tests/support/realtime_trap.hpp"

namespace vanta::test {
namespace {

using Item = LockFreeFifo::Item;

TEST(LockFreeFifo, BehavesAsAQueueOfItsNodesUnderAnyOrderOfCalls) {
    for (const auto [initial, most, holds] : {std::array{32u, 32u, 32u},
                                              {3u, 40u, 40u},
                                              {1u, 1u, 1u},
                                              {100u, 7u, 7u},
                                              {4u, 0u, 1u},
                                              {4096u, 70000u, 65536u}}) {
        LockFreeFifo fifo(initial, most);
        std::deque<Item> model;
        Item item{};
        const auto push = [&, holds = holds](const Item& pushed) {
            ASSERT_EQ(fifo.push(pushed), model.size() < holds);
            if (model.size() < holds) model.push_back(pushed);
        };
        const auto pop = [&] {
            ASSERT_EQ(fifo.pop(item), !model.empty());
            if (model.empty()) return;  // an empty pop leaves the item alone
            ASSERT_EQ(item, model.front());
            model.pop_front();
        };
        std::uint32_t state = 1;
        for (std::uint32_t i = 0; i < 50000; ++i) {
            state = state * 1664525u + 1013904223u;
            state >> 31 ? push({i, state}) : pop();
            ASSERT_EQ(fifo.sizeEstimate(), model.size());
        }
        // To the brim and to the ground.
        for (std::uint32_t i = 0; i <= holds; ++i) push({i, ~i});
        for (std::uint32_t i = 0; i <= holds; ++i) pop();
        EXPECT_EQ(fifo.sizeEstimate(), 0u);
    }
}

/// Sends `perProducer` numbered items from each producer through a small pool, so that nodes are reused all
/// the time, and checks at each consumer that no producer's items overtake each other.
void runThreads(std::uint32_t producers, std::uint32_t consumers, std::uint32_t perProducer,
                std::uint32_t nodes) {
    LockFreeFifo fifo(2, nodes);
    std::atomic<std::uint32_t> received{0};
    std::vector<std::atomic<std::uint8_t>> seen(std::size_t{producers} * perProducer);
    std::atomic<int> disorders{0};
    std::vector<std::thread> threads;
    for (std::uint32_t p = 0; p < producers; ++p) {
        threads.emplace_back([&, p] {
            for (std::uint32_t i = 0; i < perProducer;) {
                if (fifo.push({p, i})) {
                    ++i;
                } else {
                    std::this_thread::yield();
                }
            }
        });
    }
    for (std::uint32_t c = 0; c < consumers; ++c) {
        threads.emplace_back([&] {
            std::vector<std::int64_t> last(producers, -1);
            while (received.load() < producers * perProducer) {
                Item item{};
                if (!fifo.pop(item)) {
                    std::this_thread::yield();
                    continue;
                }
                if (item.second <= last[item.first]) ++disorders;
                last[item.first] = item.second;
                ++seen[std::size_t{item.first} * perProducer + item.second];
                ++received;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(disorders, 0);
    EXPECT_TRUE(std::all_of(seen.begin(), seen.end(), [](const auto& count) { return count == 1; }));
    EXPECT_EQ(fifo.sizeEstimate(), 0u);
    Item item{};
    EXPECT_FALSE(fifo.pop(item));
    // No node has leaked on the way.
    for (std::uint32_t i = 0; i < nodes; ++i) EXPECT_TRUE(fifo.push({i, i}));
    EXPECT_FALSE(fifo.push({0, 0}));
}

TEST(LockFreeFifo, LosesDoublesAndReordersNothingBetweenThreads) {
    runThreads(1, 1, 100000, 64);
    runThreads(3, 1, 50000, 1);
    runThreads(3, 3, 50000, 5);
    runThreads(2, 4, 50000, 1000);
}

struct Countdown {
    ~Countdown() { --counted; }
    std::atomic<std::uint32_t>& counted;
};

TEST(LockFreeFifo, TellsAReusedNodeFromTheOldOne) {
    // Signals stop the threads in the middle of whatever they do, while the others bring the same few nodes
    // round thousands of times.
    constexpr std::uint32_t kThreads = 4;
    constexpr std::uint32_t kRounds = 1000000;
    const auto oldHandler = std::signal(SIGUSR1, [](int) { usleep(50); });
    std::atomic<std::uint32_t> running{kThreads};
    LockFreeFifo fifo(kThreads, kThreads);
    std::vector<std::atomic<std::uint8_t>> seen(std::size_t{kThreads} * kRounds);
    std::vector<std::thread> threads;
    for (std::uint32_t t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            const Countdown atEnd{running};
            std::array<std::int64_t, kThreads> last;
            last.fill(-1);
            for (std::uint32_t i = 0; i < kRounds; ++i) {
                // There is a node for each thread, and each takes no more than it gave: a queue that is
                // full or empty for long has lost something.
                Item item{};
                int tries = 0;
                while (!fifo.push({t, i}) && ++tries < 1000000) {
                }
                while (!fifo.pop(item) && ++tries < 1000000) {
                }
                if (tries >= 1000000) return;
                if (item.first >= kThreads || item.second >= kRounds) return;
                if (item.second <= last[item.first]) return;
                last[item.first] = item.second;
                ++seen[std::size_t{item.first} * kRounds + item.second];
            }
        });
    }
    while (running > 0) {
        for (std::thread& thread : threads) {
            pthread_kill(thread.native_handle(), SIGUSR1);
            usleep(10);
        }
    }
    for (std::thread& thread : threads) thread.join();
    std::signal(SIGUSR1, oldHandler);
    EXPECT_TRUE(std::all_of(seen.begin(), seen.end(), [](const auto& count) { return count == 1; }));
    EXPECT_EQ(fifo.sizeEstimate(), 0u);
}

// --- PumpedEventQueue ---

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
