#include "tests/support/realtime_trap.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <thread>

#include "foundation/realtime.hpp"

namespace vanta::test {
namespace {

using Kind = RealtimeTrap::Kind;

/// Keeps the optimiser from dropping a block that nobody reads.
void* escape(void* block) {
    asm volatile("" : : "g"(block) : "memory");
    return block;
}

#ifdef __SANITIZE_THREAD__
constexpr int kAlignedPair = 1;  // ThreadSanitizer reports the free only
#else
constexpr int kAlignedPair = 2;
#endif

struct Case {
    const char* name;
    Kind kind;
    int atLeast;
    std::function<void()> run;
};

std::mutex mutex;
std::shared_mutex sharedMutex;
std::condition_variable condition;

const std::vector<Case>& cases() {
    static const int null = open("/dev/null", O_WRONLY);
    static const std::vector<Case> all{
        {"malloc and free", Kind::Allocation, 2, [] { std::free(escape(std::malloc(100))); }},
        {"calloc", Kind::Allocation, 2, [] { std::free(escape(std::calloc(10, 10))); }},
        {"realloc", Kind::Allocation, 3,
         [] { std::free(escape(std::realloc(escape(std::malloc(8)), 5000))); }},
        {"aligned_alloc", Kind::Allocation, kAlignedPair,
         [] { std::free(escape(std::aligned_alloc(64, 128))); }},
        {"new and delete", Kind::Allocation, 2,
         [] { delete static_cast<int*>(escape(std::make_unique<int>(1).release())); }},
        {"growth of a vector", Kind::Allocation, 2,
         [] {
             std::vector<float> grown(1000);
             escape(grown.data());
         }},
        {"mutex", Kind::Lock, 1, [] { const std::lock_guard lock(mutex); }},
        {"try_lock", Kind::Lock, 1, [] { const std::unique_lock lock(mutex, std::try_to_lock); }},
        {"shared lock", Kind::Lock, 1, [] { const std::shared_lock lock(sharedMutex); }},
        {"condition variable", Kind::Lock, 1, [] { condition.notify_one(); }},
        {"write()", Kind::SystemCall, 1, [] { EXPECT_EQ(write(null, "x", 1), 1); }},
        {"getppid()", Kind::SystemCall, 1, [] { EXPECT_GT(getppid(), 0); }},
        {"sleep", Kind::SystemCall, 1, [] { usleep(1); }},
    };
    return all;
}

bool isSeen(Kind kind) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return kind == Kind::Allocation;
#else
    static_cast<void>(kind);
    return true;
#endif
}

TEST(RealtimeTrap, CatchesEachKindInsideAScope) {
    for (const Case& c : cases()) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(RealtimeTrap::catches(c.kind), isSeen(c.kind));
        if (!isSeen(c.kind)) continue;
        RealtimeTrap trap;
        {
            const RealtimeScope scope;
            c.run();
        }
        EXPECT_GE(trap.count(c.kind), c.atLeast);
        EXPECT_FALSE(trap.report().empty());
    }
}

TEST(RealtimeTrap, CountsNothingOutsideAScopeOrInInnocentWork) {
    RealtimeTrap trap;
    for (const Case& c : cases()) c.run();
    double sum = 0.0;
    {
        const RealtimeScope scope;
        for (int i = 1; i < 1000; ++i) sum += 1.0 / i;
    }
    for (const Case& c : cases()) c.run();
    EXPECT_EQ(trap.total(), 0) << trap.report() << sum;
}

TEST(RealtimeTrap, SystemCallsStillWorkWhileTheyAreWatched) {
    if (!isSeen(Kind::SystemCall)) return;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    char got[6] = {};
    ssize_t written = 0;
    ssize_t read = 0;
    int refused = 0;
    RealtimeTrap trap;
    {
        const RealtimeScope scope;
        const RealtimeScope nested;
        written = write(ends[1], "hello", 5);
        read = ::read(ends[0], got, 5);
        refused = close(-1) == -1 ? errno : 0;
    }
    EXPECT_EQ(written, 5);
    EXPECT_EQ(read, 5);
    EXPECT_STREQ(got, "hello");
    EXPECT_EQ(refused, EBADF);
    EXPECT_EQ(trap.count(Kind::SystemCall), 3) << trap.report();
    close(ends[0]);
    close(ends[1]);
}

TEST(RealtimeTrap, AThreadCanBeStartedInsideAScope) {
    if (!isSeen(Kind::SystemCall)) return;
    RealtimeTrap trap;
    int ran = 0;
    {
        const RealtimeScope scope;
        std::thread([&ran] { ran = 1; }).join();
    }
    EXPECT_EQ(ran, 1);
    EXPECT_GT(trap.count(Kind::SystemCall), 0);
    EXPECT_GT(trap.count(Kind::Allocation), 0);
}

TEST(RealtimeTrap, WatchesOtherThreadsToo) {
    RealtimeTrap trap;
    std::thread other([] {
        const RealtimeTrap::ThreadWatch watch;
        const RealtimeScope scope;
        getppid();
        std::free(escape(std::malloc(100)));
    });
    other.join();
    EXPECT_EQ(trap.count(Kind::SystemCall), isSeen(Kind::SystemCall) ? 1 : 0);
    EXPECT_EQ(trap.count(Kind::Allocation), 2);
    trap.clear();
    EXPECT_EQ(trap.total(), 0);
    EXPECT_TRUE(trap.report().empty());
}

}  // namespace
}  // namespace vanta::test
