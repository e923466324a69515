// Replaces the operators of new and delete, so that it counts what readers take from the heap.

#include <gtest/gtest.h>
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <string>

#include "tests/fuzz/fuzz_targets.hpp"
#include "tests/plugin/mutations.hpp"

namespace {

std::atomic<std::size_t> live{0};
std::atomic<std::size_t> peak{0};

void* counted(void* block) {
    if (!block) throw std::bad_alloc();
    const std::size_t now = live += ::malloc_usable_size(block);
    for (std::size_t high = peak; now > high && !peak.compare_exchange_weak(high, now);) continue;
    return block;
}

void release(void* block) noexcept {
    if (block) live -= ::malloc_usable_size(block);
    std::free(block);
}

}  // namespace

void* operator new(std::size_t size) {
    return counted(std::malloc(size ? size : 1));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    const auto step = static_cast<std::size_t>(alignment);
    return counted(std::aligned_alloc(step, (size + step) / step * step));
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    release(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    release(block);
}

namespace vanta {
namespace {

/// The most heap that reading `bytes` holds at a time.
std::size_t heapFor(const fuzz::Target& target, const std::string& bytes) {
    const std::size_t before = live;
    peak = before;
    target.run(bytes);
    return peak - before;
}

void expectBoundedHeap(const fuzz::Target& target, const std::string& sample) {
    target.run(sample);  // what is set up once
    const std::size_t sound = heapFor(target, sample);
    const auto use = [&](const std::string& bytes) {
        const std::size_t taken = heapFor(target, bytes);
        ASSERT_LE(taken, sound + bytes.size() + 2048) << testing::PrintToString(bytes);
    };
    test::forMutations(sample, 200, use);
    // Two thousand million of whatever is counted here.
    for (std::size_t at = 0; at + 4 <= std::min<std::size_t>(sample.size(), 512); ++at) {
        std::string hostile = sample;
        use(hostile.replace(at, 4, std::string("\xFF\xFF\xFF\x7F", 4)));
    }
}

TEST(HostileFiles, TakeNoMoreMemoryThanSoundOnesAndTheirOwnSize) {
    for (const fuzz::Target& target : fuzz::targets()) {
        SCOPED_TRACE(target.name);
        for (const std::string& sample : target.samples()) expectBoundedHeap(target, sample);
    }
}

}  // namespace
}  // namespace vanta
