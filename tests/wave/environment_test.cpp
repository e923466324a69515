#include "wave/environment.hpp"

#include <gtest/gtest.h>
#include <cmath>
#include <vector>

#include "tests/support/element_rig.hpp"
#include "wave/delay.hpp"
#include "wave/float_parameter.hpp"
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
    Ramp kept(root);
    kept.keepThroughResets();
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
    EXPECT_EQ(kept.resets, 0);
    root.resetGraph(ResetMode::ResetAll);
    EXPECT_EQ(here.resets, 2);
    EXPECT_EQ(kept.resets, 1);
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

// --- FloatParameter ---

class FloatParameterTest : public testing::Test {
protected:
    FloatParameterTest() { environment.setSampleRate(48000.0f); }

    std::vector<float> play(int samples) { return runElement(environment, source, evenBlocks(samples, 256)); }
    /// Samples until the value stands still.
    int rampLength(float target) {
        source.parameter().setValue(target, -1.0f);
        const auto out = play(10000);
        int length = 0;
        while (out[static_cast<std::size_t>(length)] != target) ++length;
        return length;
    }

    wave::Environment environment{256};
    wave::FloatParameterSource source{environment, 0.0f};
};

TEST_F(FloatParameterTest, SmallChangesTakeLongerThanLargeOnes) {
    play(256);
    EXPECT_EQ(rampLength(0.5f), 960);
    EXPECT_EQ(rampLength(0.65f), 2520);
    EXPECT_NEAR(rampLength(0.651f), 0.149 * 48000, 60);
}

TEST_F(FloatParameterTest, ASecondChangeStartsFromTheValueReached) {
    play(256);
    source.parameter().setValue(1.0f, 20.0f);
    const float reached = play(480).back();
    source.parameter().setValue(0.0f, 20.0f);
    const auto back = play(2000);
    EXPECT_NEAR(back.front(), reached, 2.0f / 960.0f);
    EXPECT_EQ(back.back(), 0.0f);
}

TEST_F(FloatParameterTest, ADiscontinuityEndsTheRamp) {
    play(256);
    source.parameter().setValue(1.0f, 100.0f);
    play(100);
    environment.resetGraph(wave::ResetMode::MarkDiscontinuity);
    EXPECT_EQ(play(1)[0], 1.0f);
}

TEST_F(FloatParameterTest, ARampDoesNotWaitForItsReader) {
    play(256);
    source.parameter().setValue(1.0f, 20.0f);
    play(10);
    for (int i = 0; i < 3; ++i) {
        environment.advanceTick();
        environment.run(256, wave::Environment::kPositionOnly);
    }
    EXPECT_NEAR(play(1)[0], (10.0f + 768.0f) / 960.0f, 1e-5f);
    for (int i = 0; i < 3; ++i) environment.run(1 << 30, wave::Environment::kPositionOnly);
    EXPECT_EQ(play(1)[0], 1.0f);
}

TEST_F(FloatParameterTest, ACyclicValueTakesTheShorterWay) {
    source.parameter().setRange(-360.0f, 360.0f);
    source.parameter().period = 360.0f;
    source.parameter().setValue(350.0f, 0.0f);
    play(256);
    source.parameter().setValue(10.0f, 20.0f);
    const auto out = play(2000);
    EXPECT_NEAR(out.front(), -10.0f, 0.1f);
    EXPECT_EQ(out.back(), 10.0f);
}

TEST_F(FloatParameterTest, JumpsWhileNobodyListensButNeitherToNaNNorBeyondItsRange) {
    for (const auto& [value, played] : {std::pair(0.7f, 0.7f), {NAN, 0.7f}, {9.0f, 1.0f}}) {
        source.parameter().setValue(value, value == 0.7f ? -1.0f : 0.0f);
        EXPECT_EQ(play(1)[0], played);
    }
}

TEST_F(FloatParameterTest, ABusFollowsItsSourceAndComesBack) {
    wave::FloatParameterBus bus(environment, 0.25f, 0.0f, 1.0f);
    wave::FloatParameterSource loud(environment, 5.0f);
    bus.setSource(&loud);
    bus.assign(0.5f, nullptr);
    environment.advanceTick();
    EXPECT_EQ(bus.pullData(1)[0], 5.0f) << "a producer is not limited to the bus's own range";
    bus.setSource(nullptr);
    EXPECT_EQ(bus.pullData(1)[0], 0.5f);
}

/// Hands on its input and counts how often it does.
class Counter final : public Filter {
public:
    explicit Counter(Environment& owner) : Filter(owner, OwnBlock::No) {}
    int runs = 0;

protected:
    bool settled() const override { return true; }
    void process(const BasicBlock<float>&, BasicBlock<float>*, int, int) override {
        ++runs;
        publishInput();
    }
};

TEST(Rest, LastsUntilSomethingChangesAndCountsAsBeingHeard) {
    Environment environment(64);
    FloatParameterSource value(environment, 0.0f);
    Counter counter(environment);
    counter.source = &value;
    for (int i = 0; i < 10; ++i) step(environment, counter, 64);
    EXPECT_EQ(counter.runs, 1);

    value.assign(1.0f, nullptr);
    step(environment, counter, 64);
    EXPECT_LT(counter.current()[63], 0.5f) << "what rests is heard: a change must not jump";
    for (int i = 0; i < 100; ++i) step(environment, counter, 64);
    EXPECT_EQ(counter.current()[0], 1.0f);
    EXPECT_LT(counter.runs, 30) << "20 ms of ramp are 14 blocks";

    environment.advanceTick();
    environment.run(64, Environment::kPositionOnly);
    value.assign(0.0f, nullptr);
    step(environment, counter, 64);
    EXPECT_EQ(counter.current()[0], 0.0f) << "a block that nobody pulled is a gap, rest or not";
}

TEST(Rest, IsNoGapForADelay) {
    Environment environment(64);
    Input input(environment);
    DelayFilter delay(environment);
    delay.source = &input;
    delay.setMaxDelay(100);
    delay.setDelay(100);
    std::vector<float> heard;
    const auto play = [&](float value, int blocks) {
        const std::vector<float> block(64, value);
        for (int i = 0; i < blocks; ++i) {
            input.setBuffer(block.data(), 64);
            step(environment, delay, 64);
            heard.insert(heard.end(), delay.current().data(), delay.current().data() + 64);
        }
    };
    play(1.0f, 3);
    play(0.0f, 50);
    EXPECT_TRUE(delay.isResting());
    play(1.0f, 3);
    for (std::size_t i = 0; i < heard.size(); ++i) {
        const bool sounds = i >= 100 && (i < 292 || i >= 53 * 64 + 100);
        ASSERT_EQ(heard[i], sounds ? 1.0f : 0.0f) << i;
    }
}

/// Lets pass what is loud, by the block.
class Door final : public Filter {
public:
    explicit Door(Environment& owner) : Filter(owner) { makeGate(); }

protected:
    bool settled() const override { return true; }
    void process(const BasicBlock<float>& in, BasicBlock<float>*, int, int) override {
        if (in[0] > 0.5f) {
            publishInput();
        } else {
            publishSilence();
        }
    }
};

// Two gates, one behind the other and in another environment: each is asked before anybody relies on it.
TEST(Rest, BehindAGateLastsAsLongAsItIsClosed) {
    Environment environment(64);
    SubEnvironment twice(environment);
    twice.setFactor(2);
    Ramp ramp(twice);
    Door door(twice);
    Counter between(twice);
    DelayFilter delay(twice);
    Door second(twice);
    Counter reader(twice);
    door.source = &ramp;
    between.source = &door;
    delay.source = &between;
    delay.setMaxDelay(100);
    delay.setDelay(100);
    second.source = &delay;
    reader.source = &second;
    const auto play = [&](float first, int blocks) {
        for (int i = 0; i < blocks; ++i) {
            ramp.next = first;
            environment.advanceTick();
            reader.pull(128);
            environment.run(64, 0);
        }
    };
    play(-1000.0f, 20);
    EXPECT_EQ(ramp.runs, 20) << "the gate itself has to look";
    EXPECT_LT(between.runs, 5);
    EXPECT_EQ(reader.runs, 1);
    play(1.0f, 1);
    EXPECT_EQ(reader.current()[0], 0.0f) << "the second gate saw the first sample of the delay alone";
    play(-1000.0f, 1);
    EXPECT_EQ(reader.current()[0], 29.0f) << "no sample was lost by the rest";
    EXPECT_EQ(reader.current()[99], 128.0f);
    EXPECT_EQ(reader.current()[100], 0.0f);
    const int runs = reader.runs;
    play(-1000.0f, 20);
    EXPECT_EQ(reader.runs, runs + 1);
    EXPECT_EQ(reader.current()[0], 0.0f);
}

}  // namespace
}  // namespace vanta::test
