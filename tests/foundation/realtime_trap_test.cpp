#include "tests/support/realtime_trap.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <cstdlib>
#include <functional>
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
        {"malloc", Kind::Allocation, 2, [] { std::free(escape(std::malloc(100))); }},
        {"calloc", Kind::Allocation, 2, [] { std::free(escape(std::calloc(10, 10))); }},
        {"realloc", Kind::Allocation, 3,
         [] { std::free(escape(std::realloc(escape(std::malloc(8)), 5000))); }},
        {"aligned_alloc", Kind::Allocation, kAlignedPair,
         [] { std::free(escape(std::aligned_alloc(64, 128))); }},
        {"a vector", Kind::Allocation, 2, [] { escape(std::vector<float>(1000).data()); }},
        {"mutex", Kind::Lock, 1, [] { const std::lock_guard lock(mutex); }},
        {"try_lock", Kind::Lock, 1, [] { const std::unique_lock lock(mutex, std::try_to_lock); }},
        {"shared lock", Kind::Lock, 1, [] { const std::shared_lock lock(sharedMutex); }},
        {"condition variable", Kind::Lock, 1, [] { condition.notify_one(); }},
        {"write()", Kind::SystemCall, 1, [] { EXPECT_EQ(write(null, "x", 1), 1); }},
        {"a call that fails", Kind::SystemCall, 1, [] { EXPECT_TRUE(close(-1) == -1 && errno == EBADF); }},
        {"sleep", Kind::SystemCall, 1, [] { usleep(1); }},
    };
    return all;
}

bool isSeen(Kind kind) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return kind == Kind::Allocation;
#else
    return kind >= Kind::Allocation;
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
        EXPECT_NE(trap.report().find("addr2line"), std::string::npos);
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

TEST(RealtimeTrap, WatchesOtherThreadsToo) {
    RealtimeTrap trap;
    std::thread other([] {
        std::free(escape(std::malloc(100)));  // lets the allocator set itself up for this thread
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
