#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>

#include "tests/support/limiter_rig.hpp"
#include "tests/support/realtime_trap.hpp"

namespace vanta::test {
namespace {

constexpr int kLargestBlock = 8192;
constexpr int kController = 20;  // the first of a few that move parameters

/// A limiter with loud noise to play.
class Stream {
public:
    explicit Stream(const LimiterSetup& setup) : rig_(setup), random_(21) {
        const int channels = channelCount(setup.layout);
        for (int c = 0; c < channels; ++c) {
            in_.push_back(whiteNoise(static_cast<std::uint64_t>(c), kLargestBlock, 0.8));
        }
        out_.assign(in_.size(), Signal(kLargestBlock));
    }

    VantaProcessor& limiter() { return rig_.limiter(); }
    void play(int samples) { rig_.processBlock(in_, {}, out_, 0, static_cast<std::size_t>(samples)); }
    void playSilence(int samples) {
        rig_.processBlock(silence_, {}, out_, 0, static_cast<std::size_t>(samples));
    }

    /// A few changes of what a host may automate, as from its own thread.
    void automate() {
        for (int i = random_.between(1, 4); i > 0; --i) {
            AbstractPluginParameter& parameter = *limiter().parameterAt(random_.between(0, 30));
            if (!parameter.automatable) continue;
            const auto normal = static_cast<float>(0.5 + 0.5 * random_.bipolar());
            parameter.setValue(parameter.denormalize(normal), 0);
        }
    }
    /// Controllers at places of the block to come, also beyond its end, and messages that mean nothing.
    void queueMidi(int samples) {
        for (int i = random_.between(0, 6); i > 0; --i) {
            const auto value = static_cast<std::uint8_t>(random_.between(0, 127));
            const auto number = static_cast<std::uint8_t>(kController + random_.between(0, 3));
            limiter().queueMidi(random_.between(0, samples + 10), 0xB0, number, value);
            limiter().queueMidi(random_.between(0, samples),
                                static_cast<std::uint8_t>(random_.between(0x80, 0xFF)), value, number);
        }
    }
    void mapControllers() {
        VantaProcessor& p = limiter();
        const AbstractPluginParameter* targets[] = {&p.gain, &p.attack, &p.channelLinkRelease, &p.bypass};
        for (int i = 0; i < 4; ++i) p.setControllerTarget(kController + i, targets[i]->index());
    }

    /// What stands beside the audio: bypass, meters, and breaks of the stream.
    void switchAround(int round) {
        limiter().setBypassed(round % 20 >= 10, 0);
        limiter().meterScale.setValue(static_cast<float>(round % 7), 0);
        limiter().truePeakMetering.setMapped(round % 3 == 0);
        limiter().loudnessRecording.setMapped(round % 4 != 0);
        if (round % 5 == 0) limiter().requestDiscontinuity();
    }

    int randomBlock() { return random_.between(1, random_.between(1, 3) == 1 ? kLargestBlock : 600); }

private:
    LimiterRig rig_;
    Random random_;
    Channels in_;
    Channels out_;
    Channels silence_ = Channels(kMaxChannels, Signal(kLargestBlock, 0.0f));
};

LimiterSetup busy(Style style, int oversamplingIndex, bool truePeak) {
    return {.style = style, .oversamplingIndex = oversamplingIndex, .truePeak = truePeak, .gainDb = 15.0f};
}

LimiterSetup withEverythingOn(Style style) {
    LimiterSetup setup = busy(style, 2, true);
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
    return setup;
}

class SteadyState : public testing::TestWithParam<Style> {};

INSTANTIATE_TEST_SUITE_P(Styles, SteadyState, testing::ValuesIn(kStyles),
                         [](const auto& instance) { return nameOf(instance.param); });

TEST_P(SteadyState, OfAnyBlockSizeWithAllThatAHostMayMoveLeavesTheSystemAlone) {
    for (const auto& setup : {busy(GetParam(), 0, false), busy(GetParam(), 0, true),
                              busy(GetParam(), 1, true), withEverythingOn(GetParam())}) {
        SCOPED_TRACE(describe(setup));
        Stream stream(setup);
        stream.mapControllers();
        for (int i = 0; i < 3; ++i) stream.play(1000);
        RealtimeTrap trap;
        for (const int size : {1, 2, 3, 7, 64, 255, 256, 257, 1000, 4096, kLargestBlock}) stream.play(size);
        stream.playSilence(kLargestBlock);
        for (int i = 0; i < 100; ++i) {
            const int samples = stream.randomBlock() / 4 + 1;
            stream.automate();
            stream.queueMidi(samples);
            stream.switchAround(i);
            stream.play(samples);
        }
        EXPECT_EQ(trap.total(), 0) << trap.report();
    }
}

TEST(RealtimeSettings, ThatChangeTheLatencyStandOnNothingElseBypassedOrNot) {
    // Oversampling is left out: it rebuilds the converters in the block that takes it up.
    for (const double rate : {44100.0, 96000.0}) {
        LimiterSetup setup = busy(Style::Transparent, 1, false);
        setup.rate = rate;
        Stream stream(setup);
        stream.play(512);
        RealtimeTrap trap;
        std::set<int> latencies;
        for (const auto& [bypassed, truePeak] :
             {std::pair(true, true), {true, false}, {false, true}, {false, false}}) {
            stream.limiter().setBypassed(bypassed, 0);
            stream.play(kLargestBlock);  // to the end of the fade
            for (const Style style : kStyles) {
                stream.limiter().style.setMapped(style);
                stream.limiter().truePeakLimiting.setMapped(truePeak);
                stream.play(700);
                latencies.insert(stream.limiter().latency());
            }
        }
        {
            const RealtimeScope realtime;
            stream.limiter().reset();
        }
        EXPECT_EQ(trap.total(), 0) << rate << "\n" << trap.report();
        EXPECT_GE(latencies.size(), 6u) << "nothing was put to the test";
    }
}

TEST(RealtimeSettings, ThatChangeTheLatencySettleWithinOneBlock) {
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
