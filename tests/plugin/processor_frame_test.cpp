#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <thread>
#include <vector>

#include "plugin/parameters/prop_plugin_parameter.hpp"
#include "plugin/processor/generic_plugin_processor.hpp"
#include "wave/delay.hpp"

namespace vanta {
namespace {

constexpr float kRate = 48000.0f;

/// Doubles its input after a delay of `latency` samples; a parameter sets a gain on top.
class Doubler final : public GenericPluginProcessor {
public:
    class DoublerChannel final : public Channel {
    public:
        explicit DoublerChannel(Doubler& owner, int delaySamples)
            : Channel(owner), doubler(owner), delay(owner.environment()), node(owner) {
            delay.source = &mainInput();
            delay.setMaxDelay(delaySamples);
            delay.setDelay(delaySamples);
            node.source = &delay;
            output = &node;
        }

    private:
        class Node final : public wave::Filter {
        public:
            explicit Node(Doubler& owner) : Filter(owner.environment()), processor(owner) {
                makeResettable();
            }
            void reset() override { ++processor.resets; }

        protected:
            void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                         int) override {
                processor.blocks.push_back(samples);
                for (int i = 0; i < samples; ++i) (*out)[i] = 2.0f * in[i] + processor.offset;
            }

        private:
            Doubler& processor;
        };
        Doubler& doubler;
        wave::DelayFilter delay;
        Node node;
    };

    explicit Doubler(int latencySamples = 0, ChannelLayout layout = kMonoLayout)
        : GenericPluginProcessor(layout), level(*this, "Level"), bypassSwitch(*this, "Bypass") {
        initialize();
        level.addListener(listener);
        bypassParameter = &bypassSwitch;
        sideChainAvailable = true;
        for (int c = 0; c < channelCount(layout); ++c) {
            chans.push_back(std::make_unique<DoublerChannel>(*this, latencySamples));
        }
        setLatency(latencySamples);
        setSampleRate(kRate);
        applyAllParameters();
    }
    ~Doubler() override { environment().setDestroying(); }

    std::vector<float> play(const std::vector<float>& in, int blockSize) {
        std::vector<float> out(in.size());
        for (std::size_t at = 0; at < in.size(); at += static_cast<std::size_t>(blockSize)) {
            const int n = std::min(blockSize, static_cast<int>(in.size() - at));
            const float* inputs[] = {in.data() + at};
            float* outputs[] = {out.data() + at};
            processBlock(inputs, 1, outputs, 1, n);
        }
        return out;
    }

    struct Listener final : ValueAssignable<float> {
        explicit Listener(Doubler& owner) : processor(owner) {}
        void assign(float value, void*) override { processor.offset = value; }
        Doubler& processor;
    };

    std::vector<int> blocks;
    int resets = 0;
    float offset = 0.0f;
    Listener listener{*this};
    FloatPluginParameter level;
    PropPluginParameter<bool> bypassSwitch;
    std::vector<std::unique_ptr<DoublerChannel>> chans;
};

class RecordingAdapter final : public GenericPluginProcessor::ProcessorAdapter {
public:
    void programChange(int bank, int program) override { programs.push_back(bank * 128 + program); }
    void midiLearnHappened(int controller) override { learned.push_back(controller); }
    void parameterWasSet(int index) override { set.push_back(index); }
    std::vector<int> programs, learned, set;
};

std::vector<float> ones(int count) {
    return std::vector<float>(static_cast<std::size_t>(count), 1.0f);
}

std::vector<float> noise(int count) {
    std::vector<float> out;
    unsigned state = 1;
    for (int i = 0; i < count; ++i) {
        state = state * 1664525u + 1013904223u;
        out.push_back(static_cast<float>(state >> 8) / 8388608.0f - 1.0f);
    }
    return out;
}

TEST(ProcessorFrame, CutsHostBlocksAt256SamplesAndAtMidiEvents) {
    Doubler processor;
    processor.play(ones(1000), 1000);
    EXPECT_EQ(processor.blocks, (std::vector<int>{256, 256, 256, 232}));
    processor.blocks.clear();
    processor.queueMidi(100, 0xB0, 7, 1);
    processor.queueMidi(9999, 0xB0, 7, 2);
    processor.play(ones(300), 300);
    EXPECT_EQ(processor.blocks, (std::vector<int>{100, 200}));
}

TEST(ProcessorFrame, AControllerMovesItsParameterAtItsSample) {
    Doubler processor;
    RecordingAdapter adapter;
    processor.setAdapter(&adapter);
    processor.setControllerTarget(7, processor.level.index());
    processor.queueMidi(100, 0xB3, 7, 127);
    const auto out = processor.play(std::vector<float>(200, 0.0f), 200);
    EXPECT_EQ(out[99], 0.0f);
    EXPECT_EQ(out[100], 1.0f);
    EXPECT_EQ(adapter.set, (std::vector<int>{processor.level.index()}));
    EXPECT_EQ(adapter.learned, (std::vector<int>{7}));
}

TEST(ProcessorFrame, ProgramChangesCarryTheBankThatTheirChannelSelected) {
    Doubler processor;
    RecordingAdapter adapter;
    processor.setAdapter(&adapter);
    processor.queueMidi(0, 0xB2, 0, 1);
    processor.queueMidi(0, 0xB2, 32, 2);
    processor.queueMidi(0, 0xC2, 5, 0);
    processor.queueMidi(0, 0xF8, 0, 0);
    processor.queueMidi(0, 0xB2, 123, 0);
    processor.play(ones(1), 1);
    EXPECT_EQ(adapter.programs, (std::vector<int>{130 * 128 + 5}));
    EXPECT_EQ(adapter.learned, (std::vector<int>{-1})) << "bank select and all notes off cannot be learned";
    processor.play({}, 1);
}

TEST(ProcessorFrame, AnEmptyBlockStillTakesUpParameters) {
    Doubler processor;
    processor.level.setValue(0.5f, 0);
    float* none[] = {nullptr};
    const float* in[] = {nullptr};
    processor.processBlock(in, 1, none, 1, 0);
    EXPECT_EQ(processor.offset, 0.5f);
}

TEST(ProcessorFrame, ChangesInABlockArriveTogetherWhenItCloses) {
    Doubler processor;
    processor.beginChange();
    processor.level.setValue(0.25f, 0);
    processor.play(ones(10), 10);
    EXPECT_EQ(processor.offset, 0.0f);
    processor.level.setValue(0.5f, 0);
    processor.endChange();
    processor.play(ones(10), 10);
    EXPECT_EQ(processor.offset, 0.5f);
}

TEST(ProcessorFrame, AFullQueueLosesNoValue) {
    Doubler processor;
    for (int i = 0; i < 70000; ++i) processor.level.setValue(i % 2 ? 0.3f : 0.6f, 0);
    processor.level.setValue(0.9f, 0);
    processor.play(ones(10), 10);
    processor.play(ones(10), 10);
    EXPECT_EQ(processor.offset, 0.9f);
}

TEST(ProcessorFrame, FullyBypassedOutputIsTheInputDelayedBitForBit) {
    for (const int latency : {0, 1, 300, 1000}) {
        Doubler processor(latency);
        const auto in = noise(8000);
        processor.setBypassed(true, 0);
        const auto out = processor.play(in, 777);
        for (int i = 3000; i < 8000; ++i) {
            ASSERT_EQ(out[static_cast<std::size_t>(i)], in[static_cast<std::size_t>(i - latency)]) << latency;
        }
    }
}

TEST(ProcessorFrame, BypassFadesInAndOutWithoutAStep) {
    const int fade = static_cast<int>(kRate * 0.05f);
    for (const int latency : {0, 476}) {
        Doubler processor(latency);
        processor.play(ones(2000), 256);
        processor.setBypassed(true, 1);
        auto out = processor.play(ones(4000), 100);
        EXPECT_NEAR(out[0], 2.0f, 0.01f);
        EXPECT_GT(out[static_cast<std::size_t>(fade / 2)], 1.4f);
        EXPECT_EQ(out[3000], 1.0f);
        for (std::size_t i = 1; i < out.size(); ++i)
            ASSERT_LE(std::abs(out[i] - out[i - 1]), 1.01f / 2400.0f);

        processor.blocks.clear();
        processor.play(ones(1000), 100);
        EXPECT_TRUE(processor.blocks.empty()) << "the graph rests while the output is dry";

        const int resets = processor.resets;
        processor.setBypassed(false, 1);
        EXPECT_GT(processor.resets, resets);
        out = processor.play(ones(6000), 100);
        for (int i = 0; i < latency; ++i)
            ASSERT_EQ(out[static_cast<std::size_t>(i)], 1.0f) << "held while it fills";
        for (std::size_t i = 1; i < out.size(); ++i)
            ASSERT_LE(std::abs(out[i] - out[i - 1]), 1.01f / 2400.0f);
        EXPECT_EQ(out[static_cast<std::size_t>(latency + fade)], 2.0f);
    }
}

TEST(ProcessorFrame, BypassToggledWithinTheFadeReversesFromWhereItStands) {
    Doubler processor(300);
    processor.play(ones(2000), 256);
    processor.setBypassed(true, 0);
    const float reached = processor.play(ones(1200), 100).back();
    const int resets = processor.resets;
    processor.setBypassed(false, 0);
    const auto out = processor.play(ones(4000), 100);
    EXPECT_NEAR(out[0], reached, 0.01f);
    EXPECT_EQ(out.back(), 2.0f);
    for (std::size_t i = 1; i < out.size(); ++i) ASSERT_LE(std::abs(out[i] - out[i - 1]), 1.01f / 2400.0f);
    EXPECT_EQ(processor.resets, resets) << "a graph that ran all along must not be cut";
}

TEST(ProcessorFrame, HostAndParameterAskForBypassIndependently) {
    Doubler processor;
    processor.setBypassed(true, 0);
    processor.bypassSwitch.setValue(1.0f, 0);
    processor.play(ones(5000), 256);
    processor.setBypassed(false, 0);
    EXPECT_EQ(processor.play(ones(5000), 256).back(), 1.0f);
    processor.bypassSwitch.setValue(0.0f, 0);
    EXPECT_EQ(processor.play(ones(5000), 256).back(), 2.0f);
}

TEST(ProcessorFrame, ResetEndsAFadeAtOnce) {
    Doubler processor(100);
    processor.play(ones(500), 256);
    processor.setBypassed(true, 0);
    processor.play(ones(100), 100);
    processor.reset();
    EXPECT_EQ(processor.play(ones(1000), 256).back(), 1.0f);
}

TEST(ProcessorFrame, LosesNothingOfASideChainAndReadsNothingBeyondIt) {
    Doubler processor(0, kStereoLayout);
    const auto left = noise(64), right = ones(64), side = std::vector<float>(64, 3.0f);
    std::vector<float> outL(64), outR(64);
    float* outputs[] = {outL.data(), outR.data()};
    const float* inputs[] = {left.data(), right.data(), side.data()};
    const auto sideOf = [&](int channel) {
        return processor.channels()[static_cast<std::size_t>(channel)]->sideInput().pullData(64)[5];
    };
    processor.processBlock(inputs, 3, outputs, 2, 64);
    EXPECT_EQ(sideOf(1), 1.0f) << "not in use: the channel's own signal";
    processor.setSideChainInUse(true);
    processor.processBlock(inputs, 3, outputs, 2, 64);
    // The inputs of the last block have been consumed by nobody but this test.
    processor.environment().advanceTick();
    processor.processBlock(inputs, 2, outputs, 2, 64);
    EXPECT_EQ(outR[5], 2.0f);
}

TEST(ProcessorFrame, TheHostsFloatingPointModeComesBack) {
    Doubler processor;
    const unsigned before = __builtin_ia32_stmxcsr();
    processor.play(std::vector<float>(64, 1e-42f), 64);
    EXPECT_EQ(__builtin_ia32_stmxcsr(), before);
}

TEST(ProcessorFrame, ParametersMayBeSetWhileAudioRuns) {
    Doubler processor;
    std::thread host([&] {
        for (int i = 0; i < 20000; ++i) {
            const ChangeBlock block(processor);
            processor.level.setValue(static_cast<float>(i % 100) * 0.01f, 0);
        }
        processor.level.setValue(0.123f, 0);
    });
    const auto in = ones(64);
    for (int i = 0; i < 2000; ++i) processor.play(in, 64);
    host.join();
    processor.play(in, 64);
    EXPECT_EQ(processor.offset, 0.123f);
}

}  // namespace
}  // namespace vanta
