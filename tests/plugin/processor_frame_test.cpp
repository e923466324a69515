#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "plugin/parameters/prop_plugin_parameter.hpp"
#include "plugin/processor/processor_channel.hpp"
#include "wave/delay.hpp"

namespace vanta::test {
namespace {

using testing::ElementsAre;

constexpr float kRate = 48000.0f;

/// Doubles its input after a delay of `latency` samples; a parameter adds an offset. Notes what its channels
/// hear of a side chain.
class Doubler final : public GenericPluginProcessor {
public:
    class Doubling final : public Channel, public wave::Filter {
    public:
        Doubling(Doubler& owner, int delaySamples)
            : Channel(owner), Filter(owner.environment()), owner_(owner), delay_(owner.environment()) {
            delay_.source = &mainInput();
            delay_.setMaxDelay(delaySamples);
            delay_.setDelay(delaySamples);
            source = &delay_;
            output = this;
            makeResettable();
        }
        void reset() override { ++owner_.resets; }

        std::vector<float> side, connectedSide;

    protected:
        void process(const wave::BasicBlock<float>& in, wave::BasicBlock<float>* out, int samples,
                     int) override {
            owner_.blocks.push_back(samples);
            for (int i = 0; i < samples; ++i) (*out)[i] = 2.0f * in[i] + owner_.offset;
            append(side, sideInput().pullData(samples), samples);
            append(connectedSide, connectedSideChain().pullData(samples), samples);
        }

    private:
        static void append(std::vector<float>& to, const float* from, int samples) {
            to.insert(to.end(), from, from + samples);
        }

        Doubler& owner_;
        wave::DelayFilter delay_;
    };

    explicit Doubler(int latencySamples = 0, ChannelLayout layout = kMonoLayout)
        : GenericPluginProcessor(layout) {
        initialize();
        level.addTarget(offset);
        bypassParameter = &bypassSwitch;
        sideChainAvailable = true;
        for (int c = 0; c < channelCount(layout); ++c) {
            chans.push_back(std::make_unique<Doubling>(*this, latencySamples));
        }
        setLatency(latencySamples);
        prepare(kRate);
        applyAllParameters();
    }
    ~Doubler() override { environment().setDestroying(); }

    int largestLatency(float) const override { return 1000; }
    using GenericPluginProcessor::setLatency;

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

    std::vector<int> blocks;
    int resets = 0;
    LimitedProperty<float> offset{nullptr, 0.0f, 1.0f, 0.0f};
    LimFloatPropPluginParameter level{*this, "Level"};
    PropPluginParameter<bool> bypassSwitch{*this, "Bypass"};
    std::vector<std::unique_ptr<Doubling>> chans;
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

std::vector<float> ramp(int count) {
    std::vector<float> out(static_cast<std::size_t>(count));
    std::iota(out.begin(), out.end(), 1.0f);
    return out;
}

TEST(ProcessorFrame, CutsHostBlocksAt256SamplesAndAtMidiEvents) {
    Doubler processor;
    RecordingAdapter adapter;
    processor.setAdapter(&adapter);
    processor.setControllerTarget(7, processor.level.index());
    processor.queueMidi(612, 0xB3, 7, 127);
    processor.queueMidi(9999, 0xB0, 8, 2);
    const auto out = processor.play(std::vector<float>(1000, 0.0f), 1000);
    EXPECT_THAT(processor.blocks, ElementsAre(256, 256, 100, 256, 132));
    EXPECT_EQ(out[611], 0.0f);
    EXPECT_EQ(out[612], 1.0f) << "a controller moves its parameter at its sample";
    EXPECT_THAT(adapter.set, ElementsAre(processor.level.index()));
}

TEST(ProcessorFrame, ProgramChangesCarryTheBankThatTheirChannelSelected) {
    Doubler processor;
    RecordingAdapter adapter;
    processor.setAdapter(&adapter);
    const std::uint8_t messages[][3] = {
        {0xB2, 0, 1}, {0xB2, 32, 2}, {0xC2, 5, 0}, {0xF8, 0, 0}, {0xB2, 123, 0}};
    for (const auto& [status, data1, data2] : messages) processor.queueMidi(0, status, data1, data2);
    processor.play(ones(1), 1);
    EXPECT_THAT(adapter.programs, ElementsAre(130 * 128 + 5));
    EXPECT_THAT(adapter.learned, ElementsAre(-1)) << "bank select and all notes off cannot be learned";
}

TEST(ProcessorFrame, ChangesInABlockArriveTogetherWhenItCloses) {
    Doubler processor;
    processor.beginChange();
    processor.level.setValue(0.25f, 0);
    processor.play(ones(10), 10);
    EXPECT_EQ(processor.offset, 0.0f);
    processor.level.setValue(0.5f, 0);
    processor.endChange();
    const float* in[] = {nullptr};
    float* none[] = {nullptr};
    processor.processBlock(in, 1, none, 1, 0);
    EXPECT_EQ(processor.offset, 0.5f) << "an empty block is enough";
}

TEST(ProcessorFrame, ALatencyThatChangesWhileBypassedMovesTheDrySignalWithoutAGap) {
    Doubler processor(300);
    const int fade = static_cast<int>(kRate / 50);
    const auto in = ramp(12000);
    processor.setBypassed(true, 0);
    int done = 0;
    const auto play = [&](int count) {
        done += count;
        return processor.play({in.begin() + done - count, in.begin() + done}, 777);
    };
    play(3000);
    int before = 300;
    for (const int latency : {1000, 0, 476}) {
        processor.setLatency(latency);
        const int first = done;
        const auto out = play(3000);
        for (int i = 0; i < 3000; ++i) {
            const double share = std::min(i / static_cast<double>(fade), 1.0);
            const double late = before + (latency - before) * share;
            ASSERT_NEAR(out[i], 1.0 + first + i - late, share < 1.0 ? 0.01 : 0.0) << latency;
        }
        before = latency;
    }
}

/// Plays ones; what comes out is 2 as long as it is wet, and gives away the share of the dry signal.
struct BypassFade : testing::Test {
    BypassFade() { run(4000); }
    std::vector<float> run(int count) {
        auto share = processor.play(ones(count), 250);
        for (float& value : share) value = 2.0f - value;
        return share;
    }
    void setBypass(bool on) { processor.bypassSwitch.setMapped(on); }

    static constexpr int kFade = static_cast<int>(kRate) / 20;
    static constexpr int kLatency = 476;
    Doubler processor{kLatency};
};

TEST_F(BypassFade, GoesToDryAtOnceAndComesBackWhenTheGraphHasFilledWithSignal) {
    setBypass(true);
    const auto there = run(2 * kFade + 77);
    for (int i = 0; i < 2 * kFade; ++i) ASSERT_NEAR(there[i], std::min(i / double{kFade}, 1.0), 1e-5) << i;
    setBypass(false);
    const auto back = run(kLatency + 2 * kFade);
    for (int i = 0; i < kLatency + 2 * kFade; ++i) {
        ASSERT_NEAR(back[i], std::clamp(1.0 - (i - kLatency) / double{kFade}, 0.0, 1.0), 1e-5) << i;
    }
}

TEST_F(BypassFade, TurnsRoundWhereItStands) {
    setBypass(true);
    auto share = run(kFade / 2);
    for (const auto& [bypassed, count] :
         {std::pair(false, kFade / 4), {true, kFade / 4}, {false, 2 * kFade}}) {
        setBypass(bypassed);  // the graph has never rested, so there is nothing to wait for
        const auto more = run(count);
        EXPECT_LT(bypassed ? share.back() : more.back(), 0.5f);
        share.insert(share.end(), more.begin(), more.end());
    }
    EXPECT_EQ(share.back(), 0.0f);
    // A fade of 50 ms from half way is slower, never faster.
    for (std::size_t i = 1; i < share.size(); ++i)
        ASSERT_LE(std::abs(share[i] - share[i - 1]), 1.001f / kFade) << i;
}

TEST_F(BypassFade, EndsWhenNeitherHostNorParameterAsksForIt) {
    processor.setBypassed(true, 0);
    setBypass(true);
    run(2 * kFade);
    setBypass(false);
    for (const float share : run(3 * kFade)) ASSERT_EQ(share, 1.0f);
    processor.setBypassed(false, 0);
    EXPECT_EQ(run(kLatency + 2 * kFade).back(), 0.0f);
}

TEST(ProcessorFrame, TheGraphRestsWhileTheOutputIsDryAndStartsAfresh) {
    const int fade = static_cast<int>(kRate * 0.05f);
    for (const int latency : {0, 476}) {
        Doubler processor(latency);
        processor.play(ones(2000), 256);
        processor.setBypassed(true, 1);
        processor.play(ones(4000), 100);
        processor.blocks.clear();
        processor.play(ones(1000), 100);
        EXPECT_TRUE(processor.blocks.empty());
        const int resets = processor.resets;
        processor.setBypassed(false, 1);
        EXPECT_GT(processor.resets, resets);
        const auto out = processor.play(ones(latency + fade + 1), 100);
        EXPECT_EQ(out.front(), 1.0f);
        EXPECT_EQ(out.back(), 2.0f);
    }
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
    const auto left = ramp(600), right = ones(600);
    const std::vector<float> side(600, 3.0f), beyond(600, 99.0f), silence(600);
    struct Case {
        const char* what;
        bool inUse;
        int delivered;
        std::vector<float> left, right, connected;
    };
    for (const Case& c : {Case{"in use, narrower than the layout", true, 3, side, side, side},
                          Case{"in use, as wide as the layout", true, 4, side, beyond, side},
                          Case{"delivered, but not in use", false, 3, left, right, silence},
                          Case{"in use, but not delivered", true, 2, left, right, left}}) {
        SCOPED_TRACE(c.what);
        Doubler processor(0, kStereoLayout);
        processor.setSideChainInUse(c.inUse);
        std::vector<float> outL(600), outR(600);
        float* outputs[] = {outL.data(), outR.data()};
        const float* inputs[] = {left.data(), right.data(), side.data(), beyond.data()};
        processor.processBlock(inputs, c.delivered, outputs, 2, 600);
        EXPECT_EQ(processor.chans[0]->side, c.left);
        EXPECT_EQ(processor.chans[1]->side, c.right);
        EXPECT_EQ(processor.chans[0]->connectedSide, c.connected);
        EXPECT_EQ(outR, std::vector<float>(600, 2.0f)) << "the main signal";
    }
}

TEST(ProcessorFrame, TheHostsFloatingPointModeComesBack) {
    Doubler processor;
    const unsigned before = __builtin_ia32_stmxcsr();
    processor.play(std::vector<float>(64, 1e-42f), 64);
    EXPECT_EQ(__builtin_ia32_stmxcsr(), before);
}

}  // namespace
}  // namespace vanta::test
