#include "tests/support/allocation_failure.hpp"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <new>

namespace vanta::test {
namespace {

std::atomic<std::ptrdiff_t> live{0};
std::atomic<std::size_t> bytes{0};
std::atomic<std::size_t> mostBytes{0};

struct Countdown {
    bool armed = false;
    std::size_t failing = 0;
    std::size_t count = 0;
};
// Trivial, so that it is there from the first allocation of a thread to the last.
thread_local constinit Countdown countdown;

bool fails() {
    return countdown.armed && countdown.count++ == countdown.failing;
}

void* allocate(std::size_t size, std::size_t alignment) {
    if (fails()) return nullptr;
    const std::size_t whole = (std::max<std::size_t>(size, 1) + alignment - 1) / alignment * alignment;
    void* block = nullptr;
    if (::posix_memalign(&block, std::max(alignment, sizeof(void*)), whole) != 0) return nullptr;
    live.fetch_add(1, std::memory_order_relaxed);
    const std::size_t now = bytes += ::malloc_usable_size(block);
    for (std::size_t most = mostBytes; now > most && !mostBytes.compare_exchange_weak(most, now);) continue;
    return block;
}

void* allocateOrThrow(std::size_t size, std::size_t alignment) {
    if (void* block = allocate(size, alignment)) return block;
    throw std::bad_alloc();
}

void release(void* block) noexcept {
    if (block) live.fetch_sub(1, std::memory_order_relaxed);
    bytes -= ::malloc_usable_size(block);
    std::free(block);
}

/// Where a spread over every `stride`-th allocation begins.
std::size_t offsetOf(std::size_t stride) {
    if (const char* given = std::getenv("VANTA_ALLOCATION_OFFSET"))
        return std::strtoul(given, nullptr, 10) % stride;
    return static_cast<std::size_t>(std::chrono::steady_clock::now().time_since_epoch().count()) % stride;
}

}  // namespace

AllocationFailure::AllocationFailure(std::size_t failing) {
    countdown = {true, failing, 0};
}

AllocationFailure::~AllocationFailure() {
    countdown.armed = false;
}

std::size_t AllocationFailure::count() {
    return countdown.count;
}

std::ptrdiff_t liveAllocations() {
    return live.load();
}

std::size_t mostBytesHeld(const std::function<void()>& work) {
    const std::size_t before = bytes;
    mostBytes = before;
    work();
    return mostBytes - before;
}

void failEachAllocation(const std::function<void()>& work, const std::function<void()>& check,
                        std::size_t mostRuns) {
    std::size_t total = 0;
    work();  // what is made once for the whole process
    check();
    {
        const AllocationFailure counting;
        work();
        total = AllocationFailure::count();
    }
    check();
    ASSERT_GT(total, 0u) << "nothing to fail";
    const std::size_t stride = (total + mostRuns - 1) / mostRuns;
    const std::size_t offset = offsetOf(stride);
    std::cerr << total << " allocations, every " << stride << ". from VANTA_ALLOCATION_OFFSET=" << offset
              << "\n";
    const auto run = [&](std::size_t failing) {
        try {
            const AllocationFailure armed(failing);
            work();
        } catch (const std::bad_alloc&) {
        }
        check();
        return liveAllocations();
    };
    std::ptrdiff_t before = run(AllocationFailure::kNone);
    for (std::size_t failing = offset; failing < total; failing += stride) {
        std::ptrdiff_t after = run(failing);
        // Once, a string may have kept its room or given it up; a leak repeats itself.
        if (after != before) after = run(failing) - (after - before);
        ASSERT_EQ(after, before) << "a leak when allocation " << failing << " fails";
        before = liveAllocations();
        ASSERT_FALSE(testing::Test::HasFailure())
            << "when allocation " << failing << " of " << total << " fails";
    }
}

}  // namespace vanta::test

// All of them: what a sanitizer replaced alone would not fit the others.
// NOLINTBEGIN(bugprone-macro-parentheses): parameter lists come with parentheses of their own.
#define VANTA_TEST_NEW(arguments, specification, result) \
    void* operator new arguments specification {         \
        return result;                                   \
    }                                                    \
    void* operator new[] arguments specification {       \
        return result;                                   \
    }
#define VANTA_TEST_DELETE(arguments)            \
    void operator delete arguments noexcept {   \
        vanta::test::release(block);            \
    }                                           \
    void operator delete[] arguments noexcept { \
        vanta::test::release(block);            \
    }

// NOLINTEND(bugprone-macro-parentheses)

VANTA_TEST_NEW((std::size_t n), , vanta::test::allocateOrThrow(n, alignof(std::max_align_t)))
VANTA_TEST_NEW((std::size_t n, std::align_val_t a), ,
               vanta::test::allocateOrThrow(n, static_cast<std::size_t>(a)))
VANTA_TEST_NEW((std::size_t n, const std::nothrow_t&), noexcept,
               vanta::test::allocate(n, alignof(std::max_align_t)))
VANTA_TEST_DELETE((void* block))
VANTA_TEST_DELETE((void* block, std::size_t))
VANTA_TEST_DELETE((void* block, std::align_val_t))
VANTA_TEST_DELETE((void* block, std::size_t, std::align_val_t))
VANTA_TEST_DELETE((void* block, const std::nothrow_t&))
