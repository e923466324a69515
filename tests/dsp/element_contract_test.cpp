// What holds for every element of the block graph, whatever it computes. The elements stand in
// element_table.cpp.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include <fmt/format.h>

#include "tests/dsp/element_table.hpp"
#include "tests/support/realtime_trap.hpp"

namespace vanta::test {
namespace {

class ElementContract : public testing::TestWithParam<Element> {
protected:
    std::unique_ptr<Patch> patch(ConstantFlag flag = ConstantFlag::Never) const {
        auto made = std::make_unique<Patch>(GetParam().feed, flag);
        GetParam().build(*made, GetParam().variant);
        return made;
    }
    const Bounds& bounds() const { return GetParam().bounds; }

    static void expectSame(const Signal& actual, const Signal& expected, double bound) {
        ASSERT_EQ(actual.size(), expected.size());
        for (std::size_t i = 0; i < actual.size(); ++i) {
            if (actual[i] == expected[i]) continue;
            ASSERT_LE(std::abs(double{actual[i]} - double{expected[i]}), bound)
                << "sample " << i << " is " << actual[i] << " instead of " << expected[i];
        }
    }
};

INSTANTIATE_TEST_SUITE_P(Elements, ElementContract, testing::ValuesIn(elements()),
                         [](const auto& instance) { return instance.param.name; });

TEST_P(ElementContract, AnySplitIntoBlocksGivesTheSame) {
    const Signal whole = patch()->runAll();
    for (const int size : {1, 3, 64, 255}) {
        SCOPED_TRACE(fmt::format("blocks of {}", size));
        expectSame(patch()->runAll([&](int total) { return evenBlocks(total, size); }), whole,
                   bounds().split);
    }
    for (const unsigned seed : testSeeds()) {
        SCOPED_TRACE(fmt::format("random blocks, VANTA_SEED={}", seed));
        const auto cut = [&](int total) { return randomBlocks(total, Patch::kBlock, seed); };
        expectSame(patch()->runAll(cut), whole, bounds().split);
    }
}

TEST_P(ElementContract, AResetLeavesNothingBehind) {
    const Signal fresh = patch()->runAll();
    const auto expectFresh = [&](const char* what, auto&& interrupt) {
        SCOPED_TRACE(what);
        const auto used = patch();
        used->dirty();
        interrupt(*used);
        used->rewind();
        expectSame(used->runAll(), fresh, bounds().reset);
    };
    expectFresh("reset", [](Patch& p) { p.environment.resetGraph(wave::ResetMode::ResetActive); });
    expectFresh("reset after what is no number", [](Patch& p) {
        Signal bad(304, std::numeric_limits<float>::quiet_NaN());
        bad.resize(608, std::numeric_limits<float>::infinity());
        p.playInstead(bad);
        for (const int size : evenBlocks(608, 100)) runBlock(p.environment, p.ends, size, [](int) {});
        p.environment.resetGraph(wave::ResetMode::ResetActive);
    });
    expectFresh("another sample rate and back", [](Patch& p) {
        p.environment.setSampleRate(96000.0f);
        p.dirty();
        p.environment.setSampleRate(Patch::kRate);
    });
    {
        // A change that has not arrived has arrived after the reset.
        SCOPED_TRACE("reset in the middle of a change");
        const auto changed = patch(), used = patch();
        used->dirty();
        for (Patch* p : {changed.get(), used.get()}) {
            if (p->midway) p->midway();
        }
        used->run(evenBlocks(304, 100));
        used->environment.resetGraph(wave::ResetMode::ResetActive);
        used->rewind();
        const auto blocks = evenBlocks(9000, Patch::kBlock);
        expectSame(used->run(blocks), changed->run(blocks), bounds().reset);
    }
    if (!bounds().gap) return;
    expectFresh("a missed block", [](Patch& p) {
        p.environment.advanceTick();
        p.environment.run(112, wave::Environment::kPositionOnly);
    });
}

TEST_P(ElementContract, TheFlagOfAConstantBlockChangesNoResult) {
    expectSame(patch(ConstantFlag::WhereTrue)->runAll(), patch()->runAll(), bounds().constant);
}

TEST_P(ElementContract, WhatIsFiniteStaysFinite) {
    const auto expectFinite = [](const Signal& out) {
        for (std::size_t i = 0; i < out.size(); ++i) ASSERT_TRUE(std::isfinite(out[i])) << "sample " << i;
    };
    const auto used = patch();
    expectFinite(used->runAll());
    used->playInstead({});
    const Signal silenced = used->run(evenBlocks(200000, 200));
    expectFinite(silenced);
    for (const float x : silenced) {
        ASSERT_TRUE(x == 0.0f || std::isnormal(x) || bounds().tail) << "a subnormal number, " << x;
    }
    // The largest that the graph lets in.
    Signal loud(1000, 1048576.0f);
    for (std::size_t i = 0; i < loud.size(); i += 3) loud[i] = -loud[i];
    used->playInstead(loud);
    expectFinite(used->run(evenBlocks(2000, 100)));
}

TEST_P(ElementContract, NeitherProcessingNorResettingTouchesTheSystem) {
    const auto used = patch();
    used->dirty();
    const auto cut = randomBlocks(Patch::kSamples, Patch::kBlock, 5);
    RealtimeTrap trap;
    for (std::size_t i = 0; i < cut.size(); ++i) {
        runBlock(used->environment, used->ends, cut[i], [](int) {});
        const RealtimeScope audio;
        if (i == cut.size() / 2 && used->midway) used->midway();
        if (i % 16 == 15) used->environment.resetGraph(wave::ResetMode::ResetActive);
    }
    EXPECT_EQ(trap.total(), 0) << trap.report();
}

}  // namespace
}  // namespace vanta::test
