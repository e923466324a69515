// The engine built to capacity, under wirings that nobody would draw.

#include <gtest/gtest.h>

#include <cmath>

#include <fmt/format.h>

#include "tests/support/engine_rig.hpp"
#include "tests/support/limiter_rig.hpp"
#include "tests/support/random_patch.hpp"
#include "tests/support/realtime_trap.hpp"

namespace vanta::test {
namespace {

constexpr int kSamples = 1500;

std::vector<Signal> programme() {
    Signal left = pinkNoise(1, 2 * kSamples, 0.3), right = sine(220.0, 44100.0, 2 * kSamples, 0.9);
    // What the door of the graph lets in at most, and silence.
    for (int i = 0; i < 40; ++i) left[static_cast<std::size_t>(700 + i)] = i % 2 ? 1048576.0f : -1048576.0f;
    std::fill(right.begin() + 900, right.begin() + 1300, 0.0f);
    return {left, right};
}

TEST(Patches, AreFiniteWhateverTheirWiring) {
    EngineRig rig(DynamicsEngineConfiguration(), programme());
    int silent = 0;
    constexpr int kPatches = 150;
    for (int patch = 1; patch <= kPatches; ++patch) {
        SCOPED_TRACE(fmt::format("patch {}", patch));
        const auto seed = static_cast<unsigned>(patch);
        rig.out.assign(2, {});
        for (VectorSource& signal : rig.signals) signal.rewind();
        // The elements go on with what the patch before has left in them.
        rig.set(randomPatch(rig.layout, seed));
        RealtimeTrap trap;
        rig.run(randomBlocks(kSamples, 256, seed));
        rig.set(kCustom1Position, 0.006f * static_cast<float>(patch));
        rig.run(evenBlocks(kSamples, 1 + patch % 255));
        EXPECT_EQ(trap.total(), 0) << trap.report();
        for (const Signal& channel : rig.out) {
            for (std::size_t i = 0; i < channel.size(); ++i) {
                ASSERT_TRUE(std::isfinite(channel[i])) << channel[i] << " at sample " << i;
            }
        }
        silent += peak(rig.out[0]) == 0.0 ? 1 : 0;
    }
    EXPECT_LT(silent, kPatches / 8) << "patches that are not heard show nothing";
}

TEST(Patches, CannotHarmTheLimiterAroundThem) {
    const EngineLayout layout(patchConfiguration());
    for (const unsigned seed : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 36u}) {
        for (const bool sideChain : {false, true}) {
            SCOPED_TRACE(fmt::format("patch {}{}", seed, sideChain ? ", side chain" : ""));
            const StylePatch patch{"random", randomPatch(layout, seed)};
            LimiterSetup setup;
            setup.oversamplingIndex = static_cast<int>(seed % 3);
            setup.truePeak = seed % 2 == 0;
            setup.gainDb = 6.0f;
            setup.outputLevelDb = -1.0f;
            setup.patch = &patch;
            setup.further = [&](VantaProcessor& limiter) {
                limiter.sideChainTriggering.setMapped(sideChain);
                limiter.auditionLimiting.setMapped(seed % 4 == 3);
            };
            LimiterRig rig(setup);
            if (sideChain) rig.limiter().setSideChainInUse(true);
            const Channels in = {pinkNoise(seed, 30000, 0.3), pinkNoise(seed + 9, 30000, 0.3)};
            for (const Signal& channel : rig.process(in, 300, sideChain ? in : Channels())) {
                for (const float x : channel) ASSERT_TRUE(std::isfinite(x)) << x;
                // A side chain and what is removed may exceed it.
                if (sideChain || seed % 4 == 3) continue;
                ASSERT_LE(db(peak(channel)), -0.999);
            }
        }
    }
}

}  // namespace
}  // namespace vanta::test
