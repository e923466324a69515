#include "wave/environment.hpp"

#include <gtest/gtest.h>

#include "wave/delay.hpp"
#include "wave/float_parameter_source.hpp"
#include "wave/producer.hpp"
#include "wave/router.hpp"

namespace vanta::test {
using namespace wave;
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

TEST(Environment, DelaysByWholeSamplesAfterWhatItIsFilledWith) {
    Environment environment(64);
    Ramp ramp(environment);
    DelayFilter delay(environment, -1.0f);
    delay.source = &ramp;
    delay.setMaxDelay(100);
    delay.setDelay(70);
    for (int i = 0; i < 182; ++i) {
        step(environment, delay, 1);
        EXPECT_EQ(delay.current().data()[0], i < 70 ? -1.0f : static_cast<float>(i - 69)) << i;
    }
    delay.setDelay(0);
    step(environment, delay, 64);
    EXPECT_EQ(delay.current().data(), ramp.current().data());
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

}  // namespace
}  // namespace vanta::test
