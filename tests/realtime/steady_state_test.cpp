#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "tests/support/limiter_rig.hpp"
#include "tests/support/realtime_trap.hpp"

namespace vanta::test {
namespace {

constexpr int kLargestBlock = 8192;
constexpr int kController = 20;  // the first of a few that move parameters

/// A limiter with loud noise to play.
class Stream {
public:
    explicit Stream(const LimiterSetup& setup) : rig(setup), random(21) {
        const int channels = channelCount(setup.layout);
        for (int c = 0; c < channels; ++c) {
            in.push_back(whiteNoise(static_cast<std::uint64_t>(c), kLargestBlock, 0.8));
        }
        out.assign(in.size(), Signal(kLargestBlock));
    }

    VantaProcessor& limiter() { return rig.limiter(); }
    void play(int samples) { rig.processBlock(in, {}, out, 0, static_cast<std::size_t>(samples)); }
    void playSilence(int samples) {
        rig.processBlock(silence, {}, out, 0, static_cast<std::size_t>(samples));
    }

    /// A few changes of what a host may automate, as from its own thread.
    void automate() {
        for (int i = random.between(1, 4); i > 0; --i) {
            AbstractPluginParameter& parameter = *limiter().parameterAt(random.between(0, 30));
            if (!parameter.automatable) continue;
            const auto normal = static_cast<float>(0.5 + 0.5 * random.bipolar());
            parameter.setValue(parameter.denormalize(normal), 0);
        }
    }
    /// Controllers at places of the block to come, also beyond its end, and messages that mean nothing.
    void queueMidi(int samples) {
        for (int i = random.between(0, 6); i > 0; --i) {
            const auto value = static_cast<std::uint8_t>(random.between(0, 127));
            const auto number = static_cast<std::uint8_t>(kController + random.between(0, 3));
            limiter().queueMidi(random.between(0, samples + 10), 0xB0, number, value);
            limiter().queueMidi(random.between(0, samples),
                                static_cast<std::uint8_t>(random.between(0x80, 0xFF)), value, number);
        }
    }
    void mapControllers() {
        VantaProcessor& p = limiter();
        const AbstractPluginParameter* targets[] = {&p.gain, &p.attack, &p.channelLinkRelease, &p.bypass};
        for (int i = 0; i < 4; ++i) p.setControllerTarget(kController + i, targets[i]->index());
    }

    int randomBlock() { return random.between(1, random.between(1, 3) == 1 ? kLargestBlock : 600); }

private:
    LimiterRig rig;
    Random random;
    Channels in;
    Channels out;
    Channels silence = Channels(kMaxChannels, Signal(kLargestBlock, 0.0f));
};

LimiterSetup busy(Style style, int oversamplingIndex, bool truePeak) {
    LimiterSetup setup;
    setup.style = style;
    setup.oversamplingIndex = oversamplingIndex;
    setup.truePeak = truePeak;
    setup.gainDb = 15.0f;
    return setup;
}

class SteadyState : public testing::TestWithParam<Style> {
protected:
    /// Plays once what is to be watched, then again under the trap.
    template <typename Play>
    void expectQuiet(const LimiterSetup& setup, Play&& play) {
        SCOPED_TRACE(describe(setup));
        Stream stream(setup);
        stream.mapControllers();
        for (int i = 0; i < 3; ++i) stream.play(1000);
        RealtimeTrap trap;
        play(stream);
        EXPECT_EQ(trap.total(), 0) << trap.report();
    }
};

INSTANTIATE_TEST_SUITE_P(Styles, SteadyState, testing::ValuesIn(kStyles),
                         [](const auto& instance) { return nameOf(instance.param); });

TEST_P(SteadyState, ofAnyBlockSizeLeavesTheSystemAlone) {
    for (const int index : {0, 1}) {
        for (const bool truePeak : {false, true}) {
            expectQuiet(busy(GetParam(), index, truePeak), [](Stream& stream) {
                for (const int size : {1, 2, 3, 7, 64, 255, 256, 257, 1000, 4096, kLargestBlock})
                    stream.play(size);
                for (int i = 0; i < 10; ++i) stream.play(stream.randomBlock());
                stream.playSilence(kLargestBlock);
                stream.play(500);
            });
        }
    }
}

TEST_P(SteadyState, withAutomationAndMidiLeavesTheSystemAlone) {
    for (const int index : {0, 1}) {
        expectQuiet(busy(GetParam(), index, index == 1), [](Stream& stream) {
            for (int i = 0; i < 150; ++i) {
                const int samples = stream.randomBlock() / 4 + 1;
                stream.automate();
                stream.queueMidi(samples);
                stream.play(samples);
            }
        });
    }
}

TEST_P(SteadyState, withEverythingOnLeavesTheSystemAlone) {
    LimiterSetup setup = busy(GetParam(), 2, true);
    setup.layout = 6;  // 5.1
    setup.further = [](VantaProcessor& limiter) {
        limiter.dithering.setValue(1, 0);
        limiter.filterDcOffset.setMapped(true);
        limiter.sideChainTriggering.setMapped(true);
        limiter.unityGain.setMapped(true);
        limiter.channelLinkCenter.setMapped(true);
        limiter.channelLinkLfe.setMapped(true);
        limiter.channelLinkTransients.setValue(0.8f, 0);
    };
    expectQuiet(setup, [](Stream& stream) {
        for (int i = 0; i < 12; ++i) stream.play(stream.randomBlock() / 3 + 1);
    });
}

TEST(RealtimeSettings, ofMetersAndBypassStandOnNothingElse) {
    Stream stream(busy(Style::Modern, 0, false));
    for (int i = 0; i < 3; ++i) stream.play(1000);
    RealtimeTrap trap;
    for (int i = 0; i < 60; ++i) {
        VantaProcessor& limiter = stream.limiter();
        limiter.setBypassed(i % 20 >= 10, 0);
        limiter.meterScale.setValue(static_cast<float>(i % 7), 0);
        limiter.truePeakMetering.setMapped(i % 3 == 0);
        limiter.loudnessRecording.setMapped(i % 4 != 0);
        limiter.requestDiscontinuity();
        stream.play(700);
    }
    EXPECT_EQ(trap.total(), 0) << trap.report();
}

TEST(RealtimeSettings, thatChangeTheLatencySettleWithinOneBlock) {
    // Delays are sized anew in the block that takes up the setting, and never after it.
    Stream stream(busy(Style::Transparent, 0, false));
    stream.play(512);
    for (const Style style : kStyles) {
        for (const int index : {1, 0}) {
            stream.limiter().style.setMapped(style);
            stream.limiter().oversampling.setValue(static_cast<float>(index), 0);
            stream.limiter().truePeakLimiting.setMapped(index == 1);
            stream.play(256);
            RealtimeTrap trap;
            for (int i = 0; i < 10; ++i) stream.play(stream.randomBlock() / 8 + 1);
            EXPECT_EQ(trap.total(), 0) << nameOf(style) << "\n" << trap.report();
        }
    }
}

}  // namespace
}  // namespace vanta::test
