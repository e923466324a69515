#include "wave/environment.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "wave/delay.hpp"
#include "wave/multi_producer.hpp"
#include "wave/producer.hpp"
#include "wave/router.hpp"
#include "wave/volume_filter.hpp"

namespace vanta::wave {
namespace {

/// Counts its runs and plays a ramp that goes on from block to block.
class Ramp final : public Source {
public:
    explicit Ramp(Environment& owner) : Source(owner) { makeResettable(); }
    void reset() override { ++resets; }

    int runs = 0;
    int resets = 0;
    int lastFlags = -1;
    float next = 1.0f;

protected:
    void produce(BasicBlock<float>* block, int samples, int flags) override {
        ++runs;
        lastFlags = flags;
        for (int i = 0; i < samples; ++i) block->data()[i] = next++;
    }
};

/// Two outputs from one run; the second hands on a foreign block.
class Pair final : public MultiProducer {
public:
    Pair(Environment& owner, Producer& passed) : MultiProducer(owner, 2), source(passed) {}
    int runs = 0;

protected:
    void produce(std::span<BasicBlock<float>* const> blocks, int samples, int) override {
        ++runs;
        source.pull(samples);
        std::fill(blocks[0]->data(), blocks[0]->data() + samples, 7.0f);
        publishOutput(1, source.current(), source.blockFlags());
    }

private:
    Producer& source;
};

void step(Environment& environment, Producer& end, int samples) {
    environment.advanceTick();
    end.pull(samples);
    environment.run(samples, 0);
}

TEST(Environment, ComputesANodeOncePerTickHoweverManyReadIt) {
    Environment environment(64);
    Ramp ramp(environment);
    Forwarder a(environment);
    Forwarder b(environment);
    a.source = b.source = &ramp;
    environment.advanceTick();
    EXPECT_EQ(a.pullData(64), b.pullData(64)) << "a node that changes nothing must not copy";
    EXPECT_EQ(ramp.runs, 1);
    environment.advanceTick();
    a.pull(64);
    EXPECT_EQ(ramp.runs, 2);
}

TEST(Environment, RunsSinksThatNobodyPulledAndFrontNodesAlways) {
    Environment environment(64);
    Ramp front(environment);
    Ramp pulled(environment);
    Ramp left(environment);
    front.setScheduled(Environment::kFrontGroup);
    pulled.setScheduled(Environment::kBackGroup);
    left.setScheduled(Environment::kBackGroup);
    environment.advanceTick();
    front.pull(32);
    pulled.pull(32);
    environment.run(32, 0);
    EXPECT_EQ(front.runs, 2);
    EXPECT_EQ(front.lastFlags, Environment::kFrontRun);
    EXPECT_EQ(pulled.runs, 1);
    EXPECT_EQ(left.runs, 1);
    EXPECT_EQ(left.lastFlags, Environment::kBackRun);

    left.setActive(false);
    environment.advanceTick();
    environment.run(32, 0);
    EXPECT_EQ(left.runs, 1) << "an inactive node rests";
    left.setActive(true);
    EXPECT_EQ(left.resets, 1) << "and starts clean";

    environment.run(32, Environment::kPositionOnly);
    EXPECT_EQ(environment.position(), 96) << "time passes while nothing is computed";
}

TEST(Environment, ResetsReachTheNodesAndChildrenThatTheirModeNames) {
    Environment root(64);
    SubEnvironment child(root);
    Ramp here(root);
    Ramp there(child);
    root.run(64, 0);
    root.resetGraph(ResetMode::MarkDiscontinuity);
    EXPECT_EQ(here.resets + there.resets, 0);
    EXPECT_EQ(child.discontinuityPosition(), 64);
    root.resetGraph(ResetMode::ResetActiveLocal);
    EXPECT_EQ(here.resets, 1);
    EXPECT_EQ(there.resets, 0);
    here.setActive(false);
    root.resetGraph(ResetMode::ResetActive);
    EXPECT_EQ(here.resets, 1);
    EXPECT_EQ(there.resets, 1);
    root.resetGraph(ResetMode::ResetAll);
    EXPECT_EQ(here.resets, 2);
}

TEST(Environment, AFactorChangesRateBlocksAndPositionsOfTheChild) {
    Environment root(64);
    SubEnvironment child(root);
    Ramp node(child);
    root.setSampleRate(48000.0f);
    const int resets = node.resets;
    child.setFactor(4);
    EXPECT_EQ(child.sampleRate(), 192000.0f);
    EXPECT_EQ(child.maxBlockSize(), 256);
    EXPECT_GT(node.resets, resets);
    root.run(10, 0);
    EXPECT_EQ(child.position(), 40);
    const int again = node.resets;
    child.setFactor(4);
    EXPECT_EQ(node.resets, again) << "the same factor changes nothing";
}

TEST(Environment, DelaysByWholeSamplesAndEmptiesItselfAfterAGap) {
    Environment environment(64);
    Ramp ramp(environment);
    DelayFilter delay(environment, -1.0f);
    delay.source = &ramp;
    delay.setMaxDelay(100);
    delay.setDelay(70);
    std::vector<float> out;
    for (const int n : {64, 1, 33, 64, 20}) {
        step(environment, delay, n);
        out.insert(out.end(), delay.current().data(), delay.current().data() + n);
    }
    for (int i = 0; i < 182; ++i) {
        EXPECT_EQ(out[static_cast<std::size_t>(i)], i < 70 ? -1.0f : static_cast<float>(i - 69)) << i;
    }
    environment.advanceTick();
    environment.run(64, Environment::kPositionOnly);
    step(environment, delay, 64);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(delay.current().data()[i], -1.0f) << "no stale signal after a gap";
    delay.setDelay(0);
    step(environment, delay, 64);
    EXPECT_EQ(delay.current().data(), ramp.current().data());
}

TEST(Environment, ADelayHandsOnAConstantOnlyOnceItFillsTheWholeDelay) {
    Environment environment(64);
    FloatParameterSource value(environment, 3.0f);
    DelayFilter delay(environment);
    delay.source = &value;
    delay.setMaxDelay(100);
    delay.setDelay(100);
    step(environment, delay, 64);
    EXPECT_EQ(delay.current().data()[63], 0.0f);
    step(environment, delay, 64);
    EXPECT_FALSE(delay.isConstant());
    EXPECT_EQ(delay.current().data()[35], 0.0f);
    EXPECT_EQ(delay.current().data()[36], 3.0f);
    step(environment, delay, 64);
    EXPECT_TRUE(delay.isConstant());
    value.parameter().setValue(1.0f, 0.0f);
    step(environment, delay, 64);
    EXPECT_FALSE(delay.isConstant());
    EXPECT_EQ(delay.current().data()[63], 3.0f) << "the change has yet to arrive";
}

TEST(Environment, AMultiProducerRunsOnceForAllOutputs) {
    Environment environment(16);
    Ramp ramp(environment);
    Pair pair(environment, ramp);
    environment.advanceTick();
    const float* passed = pair.output(1).pullData(16);
    EXPECT_EQ(passed, ramp.current().data());
    EXPECT_EQ(pair.output(0).pullData(16)[5], 7.0f);
    EXPECT_EQ(pair.runs, 1);
}

TEST(Environment, VolumePublishesInsteadOfComputingAtUnityAndAtZero) {
    Environment environment(16);
    Ramp ramp(environment);
    VolumeFilter volume(environment);
    volume.source = &ramp;
    environment.advanceTick();
    const float* passed = volume.pullData(16);
    EXPECT_EQ(passed, ramp.current().data());
    volume.gain.parameter().setValue(0.0f, 0.0f);
    environment.advanceTick();
    EXPECT_EQ(volume.pullData(16), environment.silentBlock().data());
    EXPECT_TRUE(volume.isConstant());
}

TEST(Environment, RouterFadesBetweenInputsAndThenRestsOnOne) {
    Environment environment(64);
    environment.setSampleRate(48000.0f);
    FloatParameterSource low(environment, 1.0f);
    FloatParameterSource high(environment, 1.0f);
    high.parameter().setRange(0.0f, 2.0f);
    high.parameter().setValue(2.0f, 0.0f);
    Router router(environment, 2);
    router.selected = 1;
    router.setInput(0, low);
    router.setInput(1, high);
    step(environment, router, 64);
    EXPECT_EQ(router.current().data(), high.current().data())
        << "what is set before the first block needs no fade";

    router.selected = 0;
    float last = 2.0f;
    for (int block = 0; block < 16; ++block) {
        step(environment, router, 64);
        if (block == 7) router.selected = 1;  // reverses from where it stands
        for (int i = 0; i < 64; ++i) {
            const float now = router.current().data()[i];
            ASSERT_NEAR(now, last, 1.5f / 960.0f);
            last = now;
        }
    }
    for (int block = 0; block < 8; ++block) step(environment, router, 64);
    EXPECT_EQ(router.current().data(), high.current().data());
}

TEST(Environment, TheDoorLetsNothingInThatIsNotFinite) {
    Environment environment(8);
    Input input(environment);
    const float host[] = {1.0f, NAN, INFINITY, -INFINITY, 3e6f, -3e6f, 0.1f, -0.0f};
    input.setBuffer(host, 7);
    environment.advanceTick();
    const float* in = input.pullData(8);
    const float expected[] = {1.0f, 0.0f, 0.0f, 0.0f, 1048576.0f, -1048576.0f, 0.1f, 0.0f};
    for (int i = 0; i < 8; ++i) EXPECT_EQ(in[i], expected[i]) << i;
}

}  // namespace
}  // namespace vanta::wave
