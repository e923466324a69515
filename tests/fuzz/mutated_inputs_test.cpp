#include <gtest/gtest.h>

#include "tests/fuzz/fuzz_targets.hpp"
#include "tests/plugin/mutations.hpp"

namespace vanta {
namespace {

TEST(MutatedInputs, AreSurvivedByEveryReader) {
    for (const fuzz::Target& target : fuzz::targets()) {
        SCOPED_TRACE(target.name);
        const std::string sample = target.sample();
        ASSERT_FALSE(sample.empty());
        target.run(sample);
        target.run("");
        test::forMutations(sample, 300, target.run);
    }
}

}  // namespace
}  // namespace vanta
