#include <gtest/gtest.h>

#include <string>

#include "tests/fuzz/fuzz_targets.hpp"
#include "tests/plugin/mutations.hpp"
#include "tests/support/allocation_failure.hpp"

namespace vanta::test {
namespace {

void expectBoundedHeap(const fuzz::Target& target, const std::string& sample) {
    target.run(sample);  // what is set up once
    const auto heapFor = [&](const std::string& bytes) { return mostBytesHeld([&] { target.run(bytes); }); };
    const std::size_t sound = heapFor(sample);
    const auto use = [&](const std::string& bytes) {
        ASSERT_LE(heapFor(bytes), sound + bytes.size() * target.largestExpansion + 2048)
            << testing::PrintToString(bytes);
    };
    forMutations(sample, 200, use);
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
}  // namespace vanta::test
