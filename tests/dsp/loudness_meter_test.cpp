#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

#include "dsp/metering/loudness_meter.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/realtime_trap.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {
namespace {

constexpr float kRate = 48000.0f;
constexpr int kMonoType = 0x100;
/// A tone of 1 kHz at this peak level in one channel of weight 1 reads -23 LUFS.
const double kToneGain = std::pow(10.0, -20.0 / 20.0);

std::atomic<std::uint32_t> wallClock{0};
std::uint32_t readClock() {
    return wallClock;
}

Signal tone(double seconds, double gain = kToneGain) {
    return sine(1000.0, static_cast<double>(kRate), static_cast<std::size_t>(seconds * 48000.0 + 0.5), gain);
}

Signal silence(double seconds) {
    return Signal(static_cast<std::size_t>(seconds * 48000.0 + 0.5), 0.0f);
}

struct Rig {
    Rig() {
        environment.setSampleRate(kRate);
        environment.setHostBlockSamples(256);
        filter.source = &source;
        meter.setChannel(0, kMonoType, filter);
        meter.precision = -1;
    }
    void play(Signal signal, int block = 256) {
        const int count = static_cast<int>(signal.size());
        source.play(std::move(signal));
        runGraph(environment, evenBlocks(count, block));
    }
    float read(LoudnessMeter::SourceIndex index, wave::LevelSource::Info info = wave::LevelSource::Current) {
        return meter.source(index).value(info);
    }
    float integrated() { return read(LoudnessMeter::IntegratedSource); }
    float momentary() { return read(LoudnessMeter::MomentarySource); }
    float shortTerm() { return read(LoudnessMeter::ShortTermSource); }

    wave::Environment environment{256};
    VectorSource source{environment, {}};
    LoudnessMeter::ChannelFilter filter{environment};
    LoudnessMeter meter{environment, &readClock};
};

TEST(LoudnessMeter, ReadsNothingUntilAWindowIsFull) {
    Rig rig;
    rig.play(tone(0.4));
    EXPECT_EQ(rig.integrated(), kNoLoudness);
    EXPECT_NEAR(rig.momentary(), -23.0f, 0.05f);
    rig.play(tone(0.01));
    EXPECT_NEAR(rig.integrated(), -23.0f, 0.05f);
    EXPECT_LT(rig.shortTerm(), -30.0f);
    EXPECT_EQ(rig.read(LoudnessMeter::IntegratedSource, wave::LevelSource::RangeLow), kNoLoudness);
    rig.play(tone(2.7));
    EXPECT_NEAR(rig.shortTerm(), -23.0f, 0.05f);
    EXPECT_NEAR(rig.read(LoudnessMeter::IntegratedSource, wave::LevelSource::RangeLow), -23.0f, 0.05f);
    EXPECT_NEAR(rig.read(LoudnessMeter::IntegratedSource, wave::LevelSource::Range), 0.0f, 0.05f);
}

TEST(LoudnessMeter, DoesNotCountSilenceInFront) {
    Rig rig;
    rig.play(silence(5.123));
    rig.play(tone(0.45));
    rig.play(silence(10.0));
    Rig direct;
    direct.play(tone(0.45));
    direct.play(silence(10.0));
    EXPECT_NEAR(rig.integrated(), direct.integrated(), 1e-3f);
}

TEST(LoudnessMeter, DoesNotDependOnTheBlocks) {
    const auto noise = pinkNoise(5, 48000 * 5);
    std::vector<std::vector<float>> figures;
    for (const int block : {256, 1, 100, 255}) {
        Rig rig;
        rig.play(noise, block);
        figures.push_back({rig.integrated(), rig.momentary(), rig.shortTerm(),
                           rig.read(LoudnessMeter::MomentarySource, wave::LevelSource::Extreme),
                           rig.read(LoudnessMeter::ShortTermSource, wave::LevelSource::Extreme),
                           rig.read(LoudnessMeter::IntegratedSource, wave::LevelSource::Range)});
        for (std::size_t i = 0; i < figures[0].size(); ++i)
            EXPECT_NEAR(figures.back()[i], figures[0][i], 1e-4f);
    }
}

TEST(LoudnessMeter, RunsDownAfterAudioHasStopped) {
    Rig rig;
    rig.play(tone(4.0));
    const float level = rig.momentary();
    wallClock += 100;
    EXPECT_EQ(rig.momentary(), level);
    wallClock += 100;
    EXPECT_NEAR(rig.momentary(), level - 3.01f, 0.01f);
    EXPECT_NEAR(rig.shortTerm(), level + 10.0f * std::log10(1.0f - 0.2f / 3.0f), 0.01f);
    wallClock += 200;
    EXPECT_EQ(rig.momentary(), kNoLoudness);
    EXPECT_NEAR(rig.read(LoudnessMeter::MomentarySource, wave::LevelSource::Highest), -23.0f, 0.05f);
    wallClock += 1601;
    EXPECT_EQ(rig.read(LoudnessMeter::MomentarySource, wave::LevelSource::Highest), kNoLoudness);
    EXPECT_NEAR(rig.read(LoudnessMeter::MomentarySource, wave::LevelSource::Extreme), -23.0f, 0.05f);
    wallClock += 1000;
    EXPECT_EQ(rig.shortTerm(), kNoLoudness);
    EXPECT_NEAR(rig.integrated(), -23.0f, 0.05f);

    rig.play(tone(0.5));
    EXPECT_NEAR(rig.momentary(), level, 0.05f);
    rig.environment.setHostBlockSamples(8192);
    wallClock += 300;
    EXPECT_NEAR(rig.momentary(), level, 0.05f) << "the next host block may still be on its way";
}

TEST(LoudnessMeter, KeepsItsFiguresWhilePausedUntilAskedToStartOver) {
    Rig rig;
    rig.play(tone(4.0));
    rig.meter.enabled = false;
    rig.play(tone(4.0, 0.9));
    wallClock += 10000;
    rig.meter.source(LoudnessMeter::MomentarySource).resetMeasurement();
    EXPECT_NEAR(rig.integrated(), -23.0f, 0.05f) << "only the measurement's own source resets it";
    EXPECT_NEAR(rig.momentary(), -23.0f, 0.05f);
    EXPECT_NEAR(rig.read(LoudnessMeter::MomentarySource, wave::LevelSource::Highest), -23.0f, 0.05f);
    rig.meter.source(LoudnessMeter::IntegratedSource).resetMeasurement();
    EXPECT_EQ(rig.integrated(), kNoLoudness) << "without audio, too";
    EXPECT_EQ(rig.momentary(), kNoLoudness);
    rig.play(tone(1.0));
    EXPECT_EQ(rig.integrated(), kNoLoudness);
    rig.meter.enabled = true;
    rig.play(tone(1.0, kToneGain / 2.0));
    EXPECT_NEAR(rig.integrated(), -29.02f, 0.05f);
}

TEST(LoudnessMeter, ClearsItsPeaksAlone) {
    Rig rig;
    rig.play(tone(1.0));
    rig.play(tone(1.0, kToneGain / 2.0));
    auto& source = rig.meter.source(LoudnessMeter::MomentarySource);
    source.resetPeak();
    EXPECT_EQ(source.value(wave::LevelSource::Highest), kNoLoudness);
    EXPECT_EQ(source.value(wave::LevelSource::Extreme), kNoLoudness);
    rig.play(tone(0.1, kToneGain / 2.0));
    EXPECT_NEAR(source.value(wave::LevelSource::Extreme), -29.02f, 0.05f);
    EXPECT_NEAR(rig.integrated(), -25.0f, 1.0f);
}

TEST(LoudnessMeter, RestsWhileNobodyLooksIfToldSo) {
    Rig rig;
    rig.meter.autoReset = true;
    rig.environment.setMeteringActive(true);
    rig.play(tone(2.0));
    EXPECT_NEAR(rig.integrated(), -23.0f, 0.05f);
    rig.environment.setMeteringActive(false);
    rig.play(tone(1.0));
    EXPECT_EQ(rig.integrated(), kNoLoudness);
    rig.environment.setMeteringActive(true);
    rig.play(tone(1.0, kToneGain / 2.0));
    EXPECT_NEAR(rig.integrated(), -29.02f, 0.05f);
}

TEST(LoudnessMeter, ForgetsASampleFarBeyondFullScaleWithItsWindow) {
    Rig rig;
    Signal spoilt = tone(20.0);
    spoilt[1000] = 1048576.0f;
    rig.play(spoilt);
    EXPECT_NEAR(rig.momentary(), -23.0f, 0.05f);
    EXPECT_NEAR(rig.shortTerm(), -23.0f, 0.05f);
    rig.play(silence(30.0));
    EXPECT_EQ(rig.momentary(), kNoLoudness);
    EXPECT_EQ(rig.shortTerm(), kNoLoudness);
}

TEST(LoudnessMeter, WeightsChannelsByTheirAngle) {
    const struct {
        int typeWord;
        float expected;
    } cases[] = {{0x900, -23.0f}, {0x21E, -23.0f}, {0x26E, -21.508f}, {0x45A, -21.508f},
                 {0x287, -23.0f}, {0x9B4, -23.0f}, {0x23C, -21.508f}, {0x1100, kNoLoudness}};
    for (const auto& [typeWord, expected] : cases) {
        Rig rig;
        rig.meter.setChannel(0, typeWord, rig.filter);
        rig.play(tone(2.0));
        EXPECT_NEAR(rig.integrated(), expected, 0.05f) << typeWord;
    }
}

TEST(LoudnessMeter, ServesAReaderOnAnotherThread) {
    Rig rig;
    std::atomic<bool> done{false};
    std::thread reader([&] {
        for (int i = 0; !done; ++i) {
            if (i % 100 == 99) rig.meter.source(LoudnessMeter::IntegratedSource).resetMeasurement();
            if (i % 70 == 69) rig.meter.source(LoudnessMeter::MomentarySource).resetPeak();
            for (const float x : {rig.integrated(), rig.momentary(), rig.shortTerm()}) {
                EXPECT_TRUE(x >= kNoLoudness && x < 0.0f) << x;
            }
        }
    });
    rig.source.play(tone(10.0));
    {
        const RealtimeTrap trap;
        const int block = 256;
        for (int i = 0; i < 1800; ++i) runGraph(rig.environment, {&block, 1});
        EXPECT_EQ(trap.total(), 0) << trap.report();
    }
    done = true;
    reader.join();
}

}  // namespace
}  // namespace vanta::test
