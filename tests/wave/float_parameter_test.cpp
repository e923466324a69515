#include "wave/float_parameter.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/support/element_rig.hpp"
#include "wave/float_parameter_source.hpp"

namespace vanta::test {
namespace {

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

TEST_F(FloatParameterTest, JumpsWhileNobodyListens) {
    source.parameter().setValue(0.7f, -1.0f);
    EXPECT_EQ(play(1)[0], 0.7f);
}

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

TEST_F(FloatParameterTest, IgnoresNaNAndKeepsToItsRange) {
    source.parameter().setValue(NAN, 0.0f);
    EXPECT_EQ(play(1)[0], 0.0f);
    source.parameter().setValue(9.0f, 0.0f);
    EXPECT_EQ(play(1)[0], 1.0f);
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

}  // namespace
}  // namespace vanta::test
