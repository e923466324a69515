#include <gtest/gtest.h>

#include "tests/fuzz/fuzz_targets.hpp"
#include "tests/plugin/mutations.hpp"

namespace vanta::test {
namespace {

TEST(MutatedInputs, AreSurvivedByEveryReader) {
    for (const fuzz::Target& target : fuzz::targets()) {
        SCOPED_TRACE(target.name);
        target.run("");
        for (const std::string& sample : target.samples()) {
            ASSERT_FALSE(sample.empty());
            target.run(sample);
            forMutations(sample, 300, target.run);
        }
    }
}

}  // namespace
}  // namespace vanta::test
