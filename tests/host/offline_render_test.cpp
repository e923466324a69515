#include "host/offline/render.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "foundation/numbers.hpp"
#include "tests/support/memory_audio.hpp"

namespace vanta::test {
namespace {

using Channels = std::vector<Signal>;

struct RenderSetup {
    double rate = 48000;
    int block = 512;
    std::int64_t tail = 0;
    ChannelLayout layout = kStereoLayout;
    const Channels* sideChain = nullptr;
    std::uint32_t seed = 1;
};

struct Outcome {
    Channels channels;
    RenderResult result;
};

Outcome limited(const Channels& input, const LimiterSettings& settings, const RenderSetup& setup = {}) {
    MemoryReader reader(input);
    MemoryReader side(setup.sideChain ? *setup.sideChain : Channels());
    MemoryWriter writer;
    const RenderResult result = render({.settings = settings,
                                        .input = reader,
                                        .output = writer,
                                        .sideChain = setup.sideChain ? &side : nullptr,
                                        .layout = setup.layout,
                                        .sampleRate = setup.rate,
                                        .blockSamples = setup.block,
                                        .tailSamples = setup.tail,
                                        .ditherSeed = setup.seed,
                                        .progress = {}});
    return {std::move(writer.written), result};
}

std::size_t peakPosition(const Signal& signal) {
    const auto largest = std::ranges::max_element(signal, {}, [](float s) { return std::abs(s); });
    return static_cast<std::size_t>(largest - signal.begin());
}

TEST(OfflineRender, TheOutputIsAlignedWithTheInputAndAsLong) {
    constexpr std::size_t kLength = 12347;
    constexpr std::size_t kFirst = 3001;
    const Signal left = impulse(kLength, kFirst, 0.25);
    const Signal right = impulse(kLength, kLength - 1, 0.25);  // the very last sample
    for (int setup = 0; setup < kStyleCount * 3 * 2; ++setup) {
        SCOPED_TRACE(setup);
        LimiterSettings settings;
        settings.style.setValue(static_cast<float>(setup % kStyleCount), 0);
        settings.oversampling.setValue(static_cast<float>(setup / kStyleCount % 3), 0);
        settings.truePeakLimiting.setMapped(setup >= kStyleCount * 3);
        const Outcome out = limited({left, right}, settings);
        ASSERT_EQ(out.channels.size(), 2u);
        ASSERT_EQ(out.channels[0].size(), kLength);
        EXPECT_EQ(peakPosition(out.channels[0]), kFirst);
        EXPECT_EQ(peakPosition(out.channels[1]), kLength - 1);
    }
}

TEST(OfflineRender, SettingsHoldFromTheFirstSampleOn) {
    LimiterSettings settings;
    settings.outputLevel.setValue(-12.0f, 0);
    settings.gain.setValue(6.0f, 0);
    const Signal quiet(20000, 0.1f);
    const Outcome out = limited({quiet, quiet}, settings);
    const double gain = gainFromDb(6.0 - 12.0);
    for (const float sample : out.channels[0]) ASSERT_NEAR(sample, 0.1 * gain, 1e-4);
    EXPECT_NEAR(out.result.largestReductionDb, 0.0, 0.05);
}

TEST(OfflineRender, TellsWhatItDid) {
    LimiterSettings settings;
    settings.truePeakLimiting.setMapped(false);
    settings.gain.setValue(9.0f, 0);
    const Signal tone = sine(997, 48000, 48000, 0.5);
    const Outcome out = limited({tone, tone}, settings);
    EXPECT_TRUE(out.result.complete);
    EXPECT_EQ(out.result.inputFrames, 48000);
    EXPECT_EQ(out.result.outputFrames, 48000);
    EXPECT_EQ(out.result.input.peak, static_cast<float>(peak(tone)));
    EXPECT_EQ(out.result.output.peak, static_cast<float>(peak(out.channels[0])));
    // 9 dB above a tone at -6 dB is 3 dB too much.
    EXPECT_NEAR(out.result.largestReductionDb, 9.0 + dbFromGain(0.5), 0.3);
}

TEST(OfflineRender, TheTailFollowsTheInput) {
    const Signal tone = sine(440, 48000, 5000, 0.5);
    const Outcome out = limited({tone, tone}, LimiterSettings(), {.tail = 1234});
    ASSERT_EQ(out.channels[0].size(), 6234u);
    EXPECT_LT(peak(std::span(out.channels[0]).last(1200)), 1e-6);
    EXPECT_EQ(limited({{}, {}}, LimiterSettings(), {.tail = 10}).channels[0].size(), 10u);
}

TEST(OfflineRender, TheSideChainTurnsTheInputDown) {
    LimiterSettings settings;
    settings.sideChainTriggering.setMapped(true);
    settings.gain.setValue(6.0f, 0);
    const Signal tone = sine(440, 48000, 48000, 0.1);
    Signal burst(24000);
    const Signal loud = sine(300, 48000, 12000, 1.0);
    burst.insert(burst.end(), loud.begin(), loud.end());  // and silence follows where it ends early
    for (const std::size_t width : {std::size_t{1}, std::size_t{2}}) {
        const Channels side(width, burst);
        const Signal out = limited({tone, tone}, settings, {.sideChain = &side}).channels[1];
        EXPECT_NEAR(db(rms(std::span(out).subspan(4000, 8000)) / rms(tone)), 6.0, 0.1) << width;
        EXPECT_LT(db(rms(std::span(out).subspan(26000, 8000)) / rms(tone)), 1.0) << width;
    }
}

TEST(OfflineRender, AStoppedRenderSaysSo) {
    MemoryReader reader(Channels(2, Signal(48000)));
    MemoryWriter writer;
    const LimiterSettings settings;
    const RenderResult result =
        render({.settings = settings, .input = reader, .output = writer, .progress = [](std::int64_t done) {
                    return done < 9000;
                }});
    EXPECT_FALSE(result.complete);
    EXPECT_GE(result.outputFrames, 9000);
    EXPECT_LT(result.outputFrames, 12000);
}

TEST(OfflineRender, RefusesWhatItCannotRun) {
    const LimiterSettings settings;
    const Channels stereo(2, Signal(100));
    const Channels wide(3, Signal(100));
    for (const RenderSetup& setup :
         {RenderSetup{.rate = 7999}, RenderSetup{.rate = 384001}, RenderSetup{.block = 0},
          RenderSetup{.layout = kMonoLayout}, RenderSetup{.sideChain = &wide}}) {
        EXPECT_THROW(limited(stereo, settings, setup), std::invalid_argument);
    }
}

}  // namespace
}  // namespace vanta::test
