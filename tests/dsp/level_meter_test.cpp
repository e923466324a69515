#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

#include "dsp/metering/level_meter.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/realtime_trap.hpp"
#include "tests/support/signals.hpp"
#include "wave/float_parameter_source.hpp"

namespace vanta::test {
namespace {

constexpr float kRate = 48000.0f;
constexpr int kBlock = 200;

/// The wall clock that meters see, in milliseconds.
std::atomic<std::int64_t> wallClock{0};
std::int64_t readClock() {
    return wallClock;
}

/// A meter that hears a level which stands still from block to block.
struct Rig {
    explicit Rig(int largestBlock = kBlock) : environment(largestBlock), level(environment, 0.0f) {
        environment.setSampleRate(kRate);
        environment.setHostBlockSamples(kBlock);
        level.parameter().setRange(-100.0f, 100.0f);
        meter.source = &level;
    }
    void play(float x, int blocks = 1, int samples = kBlock) {
        level.parameter().setValue(x, 0.0f);
        for (int i = 0; i < blocks; ++i) runGraph(environment, {&samples, 1});
    }
    float read(wave::LevelSource::Info info = wave::LevelSource::Current) { return meter.value(info); }
    /// Reads after every `blocks` blocks.
    float watch(float x, int reads, int blocks) {
        for (int i = 0; i < reads; ++i) play(x, blocks), read();
        return read();
    }
    float highest() { return read(wave::LevelSource::Highest); }
    float extreme() { return read(wave::LevelSource::Extreme); }

    wave::Environment environment;
    wave::FloatParameterSource level;
    LevelMeter meter{environment, &readClock};
};

float dbOf(double gain) {
    return static_cast<float>(db(gain));
}

TEST(LevelMeter, FallsAtItsRateHoweverOftenItIsRead) {
    for (const int blocksPerRead : {2, 4, 12}) {  // 120, 60 and 20 Hz
        Rig rig;
        rig.meter.fall = 25.0f;
        rig.play(1.0f);
        EXPECT_NEAR(rig.read(), 0.0f, 1e-5f);
        const float early = rig.watch(0.0f, 96 / blocksPerRead, blocksPerRead);
        const float late = rig.watch(0.0f, 120 / blocksPerRead, blocksPerRead);
        EXPECT_NEAR(early - late, 25.0f * 120 * kBlock / kRate, 1e-3f) << blocksPerRead;
        const float interval = static_cast<float>(blocksPerRead * kBlock) / kRate;
        EXPECT_NEAR(early, -25.0f * (96 * kBlock / kRate - 0.05f), 25.0f * interval) << blocksPerRead;
    }
}

TEST(LevelMeter, LosesNeitherPeakNorTimeWhenItIsReadLate) {
    Rig rig;
    rig.meter.fall = 25.0f;
    for (const float x : {0.1f, -0.8f, 0.3f, 0.2f, 0.0f, 0.7f, 0.1f, 0.1f, 0.0f, 0.0f}) rig.play(x);
    EXPECT_NEAR(rig.read(), dbOf(0.8), 1e-4f);
    rig.play(0.0f, 20);
    EXPECT_NEAR(rig.read(), dbOf(0.8) - 25.0f * 20 * kBlock / kRate, 1e-3f);
}

TEST(LevelMeter, LatchesAPeakBeyondFullScaleUntilItIsReset) {
    Rig rig;
    rig.play(1.0f);
    rig.read();
    rig.play(0.0f, 1200);  // five seconds at a time, each less than a second a read
    rig.watch(0.0f, 10, 200);
    EXPECT_LT(rig.highest(), -10.0f) << "0 dB itself is no clip";

    rig.play(1.06f);
    rig.read();
    rig.watch(0.0f, 20, 200);
    rig.play(0.0f, 400);  // more than a second at once
    EXPECT_NEAR(rig.highest(), dbOf(1.06), 1e-4f);
    EXPECT_NEAR(rig.extreme(), dbOf(1.06), 1e-4f);

    rig.meter.reset();
    EXPECT_NEAR(rig.highest(), dbOf(1.06), 1e-4f) << "a new rate is no reason to forget a clip";

    rig.meter.resetPeak();
    EXPECT_EQ(rig.extreme(), -90.0f);
    rig.play(0.0f, 12);
    EXPECT_NEAR(rig.highest(), dbOf(1.06) - 15.0f * 12 * kBlock / kRate, 1e-3f);
}

TEST(LevelMeter, HoldsALevelThatStayedALittleBelowThePeakInItsTurn) {
    Rig rig;
    const auto playSeconds = [&](float x, double seconds) {
        rig.watch(x, static_cast<int>(std::lround(seconds * 60.0)), 4);
    };
    rig.play(0.9f);
    rig.read();
    playSeconds(0.1f, 1.5);
    playSeconds(0.7f, 0.2);
    playSeconds(0.1f, 0.2);
    EXPECT_NEAR(rig.highest(), dbOf(0.9), 1e-4f);
    playSeconds(0.1f, 0.3);
    EXPECT_NEAR(rig.highest(), dbOf(0.7), 1e-4f) << "the fall ends there";
    playSeconds(0.1f, 1.8);
    EXPECT_NEAR(rig.highest(), dbOf(0.7), 1e-4f) << "held for two seconds of its own";
    playSeconds(0.1f, 0.5);
    EXPECT_LT(rig.highest(), dbOf(0.7) - 3.0f);
    EXPECT_GT(rig.highest(), dbOf(0.1));
}

TEST(LevelMeter, MeasuresGainReductionAsAMinimum) {
    Rig rig;
    rig.meter.detectionMode = wave::LevelSource::Minimum;
    rig.meter.minimum = -72.0f;
    rig.meter.maximum = 0.0f;
    rig.meter.fall = 25.0f;
    EXPECT_EQ(rig.read(), 0.0f);
    rig.play(1.0f, 2);
    rig.play(0.5f);
    rig.play(1.0f, 2);
    EXPECT_NEAR(rig.read(), dbOf(0.5), 1e-4f);
    rig.watch(1.0f, 12, 1);
    rig.play(1.0f, 12);
    EXPECT_NEAR(rig.read(), dbOf(0.5) + 25.0f * 12 * kBlock / kRate, 1e-3f);
    rig.play(1.0f, 200);
    EXPECT_EQ(rig.read(), 0.0f);
    EXPECT_NEAR(rig.extreme(), dbOf(0.5), 1e-4f);
    rig.play(0.0f);
    EXPECT_EQ(rig.read(), -72.0f);
}

TEST(LevelMeter, FallsByWallClockWithoutAudio) {
    Rig rig;
    rig.play(1.0f);
    rig.read();
    wallClock += 99;
    EXPECT_NEAR(rig.read(), 0.0f, 1e-5f) << "a block may still come";
    wallClock += 2;
    EXPECT_NEAR(rig.read(), -150.0f * 0.101f, 0.01f);
    EXPECT_NEAR(rig.read(), -150.0f * 0.101f, 0.01f) << "no time has passed since";
    wallClock += 100;
    EXPECT_NEAR(rig.read(), -150.0f * 0.201f, 0.01f);
    for (int i = 0; i < 1000; ++i) {
        wallClock += 17;
        rig.read();
    }
    EXPECT_EQ(rig.read(), -90.0f);
    EXPECT_EQ(rig.highest(), -90.0f);
    EXPECT_NEAR(rig.extreme(), 0.0f, 1e-5f);
    rig.play(0.5f);
    EXPECT_NEAR(rig.read(), dbOf(0.5), 1e-4f);
    wallClock += 25LL * 24 * 3600 * 1000;  // more milliseconds than an int counts
    EXPECT_EQ(rig.read(), -90.0f);
}

TEST(LevelMeter, WaitsForTwoHostBlocksBeforeItTakesAStreamForStopped) {
    Rig rig;
    rig.environment.setHostBlockSamples(8192);  // 171 ms
    rig.play(1.0f);
    rig.read();
    wallClock += 300;
    EXPECT_NEAR(rig.read(), 0.0f, 1e-5f);
    wallClock += 50;
    EXPECT_LT(rig.read(), -10.0f);
}

TEST(LevelMeter, IsRightInTheMorningWhenItWasNotReadOvernight) {
    constexpr int kHuge = 1 << 20;
    Rig rig(kHuge);
    rig.play(0.9f, 1);
    rig.play(0.25f, 2200, kHuge);  // 13 hours: more samples than an int counts
    EXPECT_NEAR(rig.read(), dbOf(0.9), 1e-4f);
    rig.play(0.25f, 2200, kHuge);
    EXPECT_NEAR(rig.read(), dbOf(0.25), 1e-4f);
    EXPECT_NEAR(rig.highest(), dbOf(0.25), 1e-4f);
}

TEST(LevelMeter, ReadsEveryDomainWithinItsLimits) {
    const struct {
        LevelMeter::LevelDomain in, out;
        float maximum, played, read;
    } cases[] = {{LevelMeter::PowerDomain, LevelMeter::Decibel, 0.0f, 0.25f, dbOf(0.5)},
                 {LevelMeter::Decibel, LevelMeter::Decibel, 0.0f, -12.0f, -12.0f},
                 {LevelMeter::Amplitude, LevelMeter::Decibel, 0.0f, 1e-9f, -90.0f},
                 {LevelMeter::Amplitude, LevelMeter::Decibel, -20.0f, 1.0f, -20.0f},
                 {LevelMeter::Amplitude, LevelMeter::Amplitude, 1.0f, 0.5f, 0.5f}};
    for (const auto& [in, out, maximum, played, read] : cases) {
        Rig rig;
        rig.meter.inputDomain = in;
        rig.meter.outputDomain = out;
        rig.meter.maximum = maximum;
        rig.play(played);
        EXPECT_NEAR(rig.read(), read, 1e-4f) << played;
    }
}

// Under ThreadSanitizer this is the proof that reader and audio thread share nothing unguarded.
TEST(LevelMeter, LosesNoPeakToAReaderOnAnotherThread) {
    Rig rig;
    rig.meter.maximum = 200.0f;
    rig.meter.clipIndicator = false;
    rig.meter.inputDomain = LevelMeter::Decibel;
    std::atomic<bool> done{false};
    std::array<float, 3> last{};
    std::thread reader([&] {
        float highest = -90.0f;
        while (!done) {
            const float now = rig.extreme();
            EXPECT_GE(now, highest) << "an extreme never goes back";
            highest = now;
        }
        last = {rig.read(), rig.highest(), rig.extreme()};
    });
    {
        const RealtimeTrap trap;
        // Every block is higher than the one before, so that losing the last one shows.
        for (int i = 0; i <= 100000; ++i) rig.play(static_cast<float>(i) / 1000.0f);
        EXPECT_EQ(trap.total(), 0) << trap.report();
    }
    done = true;
    reader.join();
    for (const float x : last) EXPECT_EQ(x, 100.0f);
}

}  // namespace
}  // namespace vanta::test
