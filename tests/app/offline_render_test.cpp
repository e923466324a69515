#include "host/offline/render.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/numbers.hpp"
#include "tests/support/signals.hpp"

namespace vanta {
namespace {

using test::Signal;
using Channels = std::vector<Signal>;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

class MemoryReader final : public AudioReader {
public:
    explicit MemoryReader(Channels audio) : channels(std::move(audio)) {}
    int channelCount() const override { return static_cast<int>(channels.size()); }
    std::size_t read(std::span<float* const> to, std::size_t frames) override {
        const std::size_t count = std::min(frames, channels[0].size() - position);
        for (std::size_t c = 0; c < to.size(); ++c) {
            std::copy_n(channels[c].begin() + static_cast<std::ptrdiff_t>(position), count, to[c]);
        }
        position += count;
        return count;
    }

private:
    Channels channels;
    std::size_t position = 0;
};

class MemoryWriter final : public AudioWriter {
public:
    void write(std::span<const float* const> from, std::size_t frames) override {
        channels.resize(from.size());
        for (std::size_t c = 0; c < from.size(); ++c) {
            channels[c].insert(channels[c].end(), from[c], from[c] + frames);
        }
    }
    Channels channels;
};

struct Setup {
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

Outcome limited(const Channels& input, const LimiterSettings& settings, const Setup& setup = {}) {
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
                                        .proceed = {}});
    return {std::move(writer.channels), result};
}

std::size_t peakPosition(const Signal& signal) {
    const auto largest = std::ranges::max_element(signal, {}, [](float s) { return std::abs(s); });
    return static_cast<std::size_t>(largest - signal.begin());
}

TEST(OfflineRender, TheOutputIsAlignedWithTheInputAndAsLong) {
    constexpr std::size_t kLength = 12347;
    constexpr std::size_t kFirst = 3001;
    for (int style = 0; style < 8; ++style) {
        for (const int oversampling : {0, 1, 3}) {
            for (const bool truePeak : {false, true}) {
                LimiterSettings settings;
                settings.style.setValue(static_cast<float>(style), 0);
                settings.oversampling.setValue(static_cast<float>(oversampling), 0);
                settings.truePeakLimiting.setMapped(truePeak);
                const Signal left = test::impulse(kLength, kFirst, 0.25);
                const Signal right = test::impulse(kLength, kLength - 1, 0.25);  // the very last sample
                const Outcome out = limited({left, right}, settings);
                ASSERT_EQ(out.channels.size(), 2u);
                ASSERT_EQ(out.channels[0].size(), kLength);
                EXPECT_EQ(peakPosition(out.channels[0]), kFirst) << style << " " << oversampling << truePeak;
                EXPECT_EQ(peakPosition(out.channels[1]), kLength - 1)
                    << style << " " << oversampling << truePeak;
                // At the base rate nothing touches what needs no limiting.
                if (oversampling == 0) {
                    EXPECT_LT(test::nullDb(out.channels[0], left), -120) << style;
                }
            }
        }
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

TEST(OfflineRender, BlockSizesDoNotShowInTheResult) {
    LimiterSettings settings;
    settings.gain.setValue(12.0f, 0);
    const Signal music = test::pinkNoise(7, 30000, 0.3);
    const Signal other = test::pinkNoise(8, 30000, 0.3);
    const Outcome reference = limited({music, other}, settings);
    for (const int block : {1, 255, 256, 257, 8192}) {
        const Outcome out = limited({music, other}, settings, {.block = block});
        EXPECT_LT(test::nullDb(out.channels[0], reference.channels[0]), -120) << block;
        EXPECT_LT(test::nullDb(out.channels[1], reference.channels[1]), -120) << block;
    }
}

TEST(OfflineRender, TellsWhatItDid) {
    LimiterSettings settings;
    settings.truePeakLimiting.setMapped(false);
    settings.gain.setValue(9.0f, 0);
    settings.outputLevel.setValue(-1.0f, 0);
    const Signal tone = test::sine(997, 48000, 48000, 0.5);
    const Outcome out = limited({tone, tone}, settings);
    EXPECT_EQ(out.result.inputFrames, 48000);
    EXPECT_EQ(out.result.outputFrames, 48000);
    EXPECT_TRUE(out.result.complete);
    EXPECT_NEAR(out.result.input.peak, test::peak(tone), 1e-7);
    EXPECT_EQ(out.result.output.peak, static_cast<float>(test::peak(out.channels[0])));
    EXPECT_LE(dbFromGain(static_cast<double>(out.result.output.peak)), -1.0);
    // 9 dB above a tone at -6 dB is 3 dB too much.
    EXPECT_NEAR(out.result.largestReductionDb, 9.0 + dbFromGain(0.5), 0.3);
    EXPECT_GT(out.result.latencySamples, 0);
}

TEST(OfflineRender, TheTailFollowsTheInput) {
    const Signal tone = test::sine(440, 48000, 5000, 0.5);
    const Outcome out = limited({tone, tone}, LimiterSettings(), {.tail = 1234});
    ASSERT_EQ(out.channels[0].size(), 6234u);
    EXPECT_LT(test::peak(std::span(out.channels[0]).last(1200)), 1e-6);
    EXPECT_EQ(limited({{}, {}}, LimiterSettings(), {.tail = 10}).channels[0].size(), 10u);
}

TEST(OfflineRender, TheSideChainTurnsTheInputDown) {
    LimiterSettings settings;
    settings.sideChainTriggering.setMapped(true);
    settings.gain.setValue(6.0f, 0);
    const Signal tone = test::sine(440, 48000, 48000, 0.1);
    Signal burst(48000);
    const Signal loud = test::sine(300, 48000, 12000, 1.0);
    std::ranges::copy(loud, burst.begin() + 24000);
    for (const std::size_t width : {std::size_t{1}, std::size_t{2}}) {
        const Channels side(width, burst);
        const Outcome out = limited({tone, tone}, settings, {.sideChain = &side});
        const auto part = [&](std::size_t first) {
            return test::rms(std::span(out.channels[1]).subspan(first, 8000));
        };
        EXPECT_NEAR(test::db(part(4000) / test::rms(tone)), 6.0, 0.1) << width;
        EXPECT_LT(test::db(part(26000) / test::rms(tone)), 1.0) << width;
    }
}

TEST(OfflineRender, WhatIsNoNumberCountsAsSilence) {
    Signal dirty = test::sine(440, 48000, 20000, 0.5);
    Signal clean = dirty;
    for (const std::size_t at : {0u, 100u, 5000u, 19999u}) {
        dirty[at] = at % 200 == 0 ? kNan : kInfinity;
        clean[at] = 0.0f;
    }
    LimiterSettings settings;
    settings.gain.setValue(12.0f, 0);
    const Outcome out = limited({dirty, dirty}, settings);
    const Outcome reference = limited({clean, clean}, settings);
    EXPECT_EQ(out.result.input.notFinite, 8);
    EXPECT_EQ(out.result.output.notFinite, 0);
    EXPECT_EQ(out.channels, reference.channels);
}

TEST(OfflineRender, EqualSeedsGiveEqualFilesAndDitheredSamplesStandOnTheGrid) {
    LimiterSettings settings;
    settings.dithering.setValue(1.0f, 0);
    const Signal tone = test::sine(997, 48000, 10000, 0.3);
    const Outcome first = limited({tone, tone}, settings, {.seed = 7});
    EXPECT_EQ(limited({tone, tone}, settings, {.seed = 7}).channels, first.channels);
    EXPECT_NE(limited({tone, tone}, settings, {.seed = 8}).channels, first.channels);
    EXPECT_NE(first.channels[0], first.channels[1]) << "both channels have one noise";
    for (const float sample : first.channels[0]) {
        const double steps = static_cast<double>(sample) * 32768;
        ASSERT_EQ(steps, std::round(steps));
    }
}

TEST(OfflineRender, AStoppedRenderSaysSo) {
    MemoryReader reader(Channels(2, Signal(48000)));
    MemoryWriter writer;
    const LimiterSettings settings;
    const RenderResult result =
        render({.settings = settings, .input = reader, .output = writer, .proceed = [](std::int64_t done) {
                    return done < 9000;
                }});
    EXPECT_FALSE(result.complete);
    EXPECT_GE(result.outputFrames, 9000);
    EXPECT_LT(result.outputFrames, 12000);
}

TEST(OfflineRender, RefusesWhatItCannotRun) {
    const LimiterSettings settings;
    const Channels stereo(2, Signal(100));
    EXPECT_THROW(limited(stereo, settings, {.rate = 7999}), std::invalid_argument);
    EXPECT_THROW(limited(stereo, settings, {.rate = 384001}), std::invalid_argument);
    EXPECT_THROW(limited(stereo, settings, {.block = 0}), std::invalid_argument);
    EXPECT_THROW(limited(stereo, settings, {.layout = kMonoLayout}), std::invalid_argument);
    const Channels wide(3, Signal(100));
    EXPECT_THROW(limited(stereo, settings, {.sideChain = &wide}), std::invalid_argument);
}

}  // namespace
}  // namespace vanta
