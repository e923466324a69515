#include <gtest/gtest.h>

#include <algorithm>

#include "tests/conformance/program_material.hpp"
#include "tests/support/limiter_rig.hpp"

namespace vanta::test {
namespace {

constexpr double kEqualDb = -120.0;

std::vector<int> randomSizes(int largest, std::uint64_t seed) {
    Random random(seed);
    std::vector<int> sizes(64);
    for (int& size : sizes) size = random.between(1, largest);
    return sizes;
}

class Blocks : public testing::TestWithParam<Style> {};

INSTANTIATE_TEST_SUITE_P(Styles, Blocks, testing::ValuesIn(kStyles),
                         [](const auto& instance) { return nameOf(instance.param); });

/// The largest difference from blocks of 256 samples over all ways to cut a signal, in dB.
double differenceOfSizes(const LimiterSetup& setup, const Channels& in) {
    const Channels reference = LimiterRig(setup).process(in, 256);
    double worst = -400.0;
    const auto compare = [&](const Channels& signals, std::span<const int> sizes) {
        const Channels out = LimiterRig(setup).process(signals, sizes);
        for (std::size_t c = 0; c < out.size(); ++c) {
            worst = std::max(worst, nullDb(std::span(out[c]), std::span(reference[c]).first(out[c].size())));
        }
    };
    for (const int size : {7, 64, 1000, 8192}) compare(in, std::span(&size, 1));
    for (const int largest : {40, 1500})
        compare(in, randomSizes(largest, static_cast<std::uint64_t>(largest)));
    // One sample at a time is dear: the beginning tells.
    constexpr std::size_t kBeginning = 9000;
    const int one = 1;
    Channels beginning = in;
    for (Signal& signal : beginning) signal.resize(std::min(signal.size(), kBeginning));
    compare(beginning, std::span(&one, 1));
    return worst;
}

TEST_P(Blocks, ofAnySizeGiveTheSameOutput) {
    const Channels music = loudMusic(0.5);
    // Pauses in which elements come to rest and wake up.
    const Channels pauses = {bursts(200.0, 44100.0, 22000, 900, 6000),
                             bursts(330.0, 44100.0, 22000, 3000, 4000)};
    for (const Channels* in : {&music, &pauses}) {
        for (const int index : {0, 1}) {
            for (const bool truePeak : {false, true}) {
                LimiterSetup setup;
                setup.style = GetParam();
                setup.oversamplingIndex = index;
                setup.truePeak = truePeak;
                setup.gainDb = 12.0f;
                const double worst = differenceOfSizes(setup, *in);
                EXPECT_LT(worst, kEqualDb) << describe(setup);
                report("{:<12} {}x true peak {:<3} {:<6} differs between block sizes by {:.0f} dB\n",
                       nameOf(setup.style), setup.factor(), truePeak ? "on" : "off",
                       in == &music ? "music" : "pauses", worst);
            }
        }
    }
}

TEST_P(Blocks, afterAResetStartAsAFreshLimiter) {
    LimiterSetup setup;
    setup.style = GetParam();
    setup.truePeak = true;
    setup.gainDb = 12.0f;
    const Channels music = loudMusic(0.4);
    LimiterRig rig(setup);
    LimiterRig fresh(setup);
    rig.process(music);
    rig.limiter().reset();
    fresh.limiter().reset();
    EXPECT_LT(nullDb(rig.process(music), fresh.process(music)), kEqualDb);
}

TEST_P(Blocks, mayBeEmptyAndInPlace) {
    LimiterSetup setup;
    setup.style = GetParam();
    setup.gainDb = 12.0f;
    const Channels music = loudMusic(0.3);
    const Channels reference = LimiterRig(setup).process(music, 500);

    Channels inPlace = music;
    LimiterRig rig(setup);
    for (std::size_t at = 0; at < music[0].size(); at += 500) {
        const std::size_t count = std::min<std::size_t>(500, music[0].size() - at);
        rig.processBlock(inPlace, {}, inPlace, at, 0);
        rig.processBlock(inPlace, {}, inPlace, at, count);
    }
    EXPECT_LT(nullDb(inPlace, reference), kEqualDb);
}

}  // namespace
}  // namespace vanta::test
