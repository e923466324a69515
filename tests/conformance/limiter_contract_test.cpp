// What holds for the whole limiter in every style, whatever it is set to.

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <thread>

#include "host/offline/render.hpp"
#include "tests/conformance/program_material.hpp"
#include "tests/support/limiter_rig.hpp"
#include "tests/support/memory_audio.hpp"

namespace vanta::test {
namespace {

constexpr double kEqualDb = -120.0;

std::vector<int> randomSizes(int largest, std::uint64_t seed) {
    Random random(seed);
    std::vector<int> sizes(64);
    for (int& size : sizes) size = random.between(1, largest);
    return sizes;
}

class LimiterContract : public testing::TestWithParam<Style> {
protected:
    LimiterSetup hot(int oversamplingIndex, bool truePeak) const {
        return {.style = GetParam(),
                .oversamplingIndex = oversamplingIndex,
                .truePeak = truePeak,
                .gainDb = 12.0f};
    }
    /// Calls `body(setup)` for two factors with and without true peaks.
    template <typename Body>
    void forEverySetup(Body&& body) const {
        for (const int index : {0, 1}) {
            for (const bool truePeak : {false, true}) {
                const LimiterSetup setup = hot(index, truePeak);
                SCOPED_TRACE(describe(setup));
                body(setup);
            }
        }
    }
};

INSTANTIATE_TEST_SUITE_P(Styles, LimiterContract, testing::ValuesIn(kStyles),
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

TEST_P(LimiterContract, AnySplitIntoBlocksGivesTheSame) {
    const Channels music = loudMusic(0.5);
    // Pauses in which elements come to rest and wake up.
    const Channels pauses = {bursts(200.0, 44100.0, 22000, 900, 6000),
                             bursts(330.0, 44100.0, 22000, 3000, 4000)};
    for (const Channels* in : {&music, &pauses}) {
        forEverySetup([&](const LimiterSetup& setup) {
            const double worst = differenceOfSizes(setup, *in);
            EXPECT_LT(worst, kEqualDb) << "dB";
            report("{:<12} {}x true peak {:<3} {:<6} differs between block sizes by {:.0f} dB\n",
                   nameOf(setup.style), setup.factor(), setup.truePeak ? "on" : "off",
                   in == &music ? "music" : "pauses", worst);
        });
    }
}

TEST_P(LimiterContract, BlocksMayBeEmptyAndInPlace) {
    const Channels music = loudMusic(0.3);
    const Channels reference = LimiterRig(hot(0, false)).process(music, 500);
    Channels inPlace = music;
    LimiterRig rig(hot(0, false));
    for (std::size_t at = 0; at < music[0].size(); at += 500) {
        const std::size_t count = std::min<std::size_t>(500, music[0].size() - at);
        rig.processBlock(inPlace, {}, inPlace, at, 0);
        rig.processBlock(inPlace, {}, inPlace, at, count);
    }
    EXPECT_LT(nullDb(inPlace, reference), kEqualDb);
}

TEST_P(LimiterContract, AResetLeavesNothingBehind) {
    const Channels music = loudMusic(0.4);
    forEverySetup([&](const LimiterSetup& setup) {
        LimiterRig rig(setup);
        LimiterRig fresh(setup);
        rig.process(music);
        rig.limiter().reset();
        fresh.limiter().reset();
        EXPECT_LT(nullDb(rig.process(music), fresh.process(music)), kEqualDb);
    });
}

/// The samples during which a bypass fades: 50 ms, and the sub-block in which that ends.
std::size_t fadeSamples(const LimiterSetup& setup) {
    return static_cast<std::size_t>(std::lround(0.05 * setup.rate)) + GenericPluginProcessor::kMaxSubBlock;
}

TEST_P(LimiterContract, BypassedItIsADelayBitForBit) {
    const std::pair<int, double> rates[] = {{0, 44100.0}, {1, 96000.0}, {3, 8000.0}, {5, 48000.0}};
    for (const auto& [index, rate] : rates) {
        LimiterSetup setup = hot(index, index % 2 == 1);
        setup.rate = rate;
        setup.outputLevelDb = -2.0f;
        setup.further = [](VantaProcessor& limiter) {
            limiter.dithering.setValue(1, 0);
            limiter.filterDcOffset.setMapped(true);
            limiter.unityGain.setMapped(true);
        };
        SCOPED_TRACE(describe(setup));
        LimiterRig rig(setup);
        rig.limiter().bypass.setMapped(true);
        const std::size_t settled = fadeSamples(setup), late = rig.latency();
        const Channels in = {whiteNoise(1, settled + late + 3000, 1.4),
                             whiteNoise(2, settled + late + 3000, 1.4)};
        const Channels out = rig.process(in, 333);
        for (std::size_t c = 0; c < 2; ++c) {
            for (std::size_t i = settled; i < in[c].size(); ++i) {
                ASSERT_EQ(out[c][i], i < late ? 0.0f : in[c][i - late])
                    << "channel " << c << ", sample " << i;
            }
        }
    }
}

TEST_P(LimiterContract, LeavesABypassAsAFreshOneWould) {
    const LimiterSetup setup = hot(0, true);
    LimiterRig rig(setup);
    LimiterRig fresh(setup);
    const Channels before = {whiteNoise(3, 9000, 1.0), whiteNoise(4, 9000, 1.0)};
    const Channels after = {pinkNoise(5, 30000, 0.2), pinkNoise(6, 30000, 0.2)};
    rig.process(before);
    rig.limiter().bypass.setMapped(true);
    rig.process(before);
    rig.limiter().bypass.setMapped(false);
    const std::size_t settled = rig.latency() + fadeSamples(setup);
    EXPECT_LT(nullDb(rig.process(after), fresh.process(after), settled), -130.0);
}

TEST_P(LimiterContract, OfflineItDoesWhatItDoesLive) {
    const Channels music = loudMusic(0.4);
    forEverySetup([&](const LimiterSetup& setup) {
        LimiterSettings settings;
        settings.style.setMapped(setup.style);
        settings.oversampling.setValue(static_cast<float>(setup.oversamplingIndex), 0);
        settings.truePeakLimiting.setMapped(setup.truePeak);
        settings.gain.setValue(setup.gainDb, 0);
        MemoryReader reader(music);
        MemoryWriter writer;
        render({.settings = settings, .input = reader, .output = writer, .progress = {}});
        EXPECT_EQ(writer.written, limited(setup, music, kUsualBlock));
    });
}

// Also while others come and go, and each on a thread of its own.
TEST(Limiters, DoNotHearEachOther) {
    const auto hot = [](Style style, double rate, int index) {
        return LimiterSetup{
            .style = style, .oversamplingIndex = index, .truePeak = index > 0, .gainDb = 14.0f, .rate = rate};
    };
    const LimiterSetup setups[] = {hot(Style::Modern, 44100.0, 0), hot(Style::Dynamic, 96000.0, 1),
                                   hot(Style::Modern, 44100.0, 1), hot(Style::Safe, 48000.0, 0),
                                   hot(Style::Bus, 44100.0, 2)};
    const Channels music = loudMusic(0.4);
    std::vector<Channels> turns(std::size(setups), Channels(2, Signal(music[0].size()))),
        threaded(std::size(setups));
    std::deque<LimiterRig> rigs;
    for (const LimiterSetup& setup : setups) rigs.emplace_back(setup);
    for (std::size_t at = 0; at < music[0].size(); at += 200) {
        const std::size_t count = std::min<std::size_t>(200, music[0].size() - at);
        for (std::size_t i = 0; i < rigs.size(); ++i) rigs[i].processBlock(music, {}, turns[i], at, count);
        if (at % 4000 == 0) LimiterRig(hot(Style::Allround, 88200.0, 1)).process({Signal(300), Signal(300)});
    }
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < rigs.size(); ++i) {
        threads.emplace_back([&, i] { threaded[i] = LimiterRig(setups[i]).process(music, 200); });
    }
    for (std::thread& thread : threads) thread.join();
    for (std::size_t i = 0; i < rigs.size(); ++i) {
        const Channels alone = LimiterRig(setups[i]).process(music, 200);
        EXPECT_EQ(turns[i], alone) << describe(setups[i]);
        EXPECT_EQ(threaded[i], alone) << describe(setups[i]);
    }
}

}  // namespace
}  // namespace vanta::test
