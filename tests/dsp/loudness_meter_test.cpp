#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <functional>
#include <random>
#include <thread>
#include <vector>

#include "dsp/metering/loudness_gate.hpp"
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

std::atomic<std::int64_t> wallClock{0};
std::int64_t readClock() {
    return wallClock;
}

Signal tone(double seconds, double gain = kToneGain) {
    return sine(1000.0, static_cast<double>(kRate), static_cast<std::size_t>(std::lround(seconds * 48000.0)),
                gain);
}

Signal silence(double seconds) {
    return Signal(static_cast<std::size_t>(std::lround(seconds * 48000.0)), 0.0f);
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
    using Info = wave::LevelSource::Info;
    float integrated(Info info = Info::Current) {
        return meter.source(LoudnessMeter::IntegratedSource).value(info);
    }
    float momentary(Info info = Info::Current) {
        return meter.source(LoudnessMeter::MomentarySource).value(info);
    }
    float shortTerm(Info info = Info::Current) {
        return meter.source(LoudnessMeter::ShortTermSource).value(info);
    }

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
    EXPECT_EQ(rig.integrated(wave::LevelSource::RangeLow), kNoLoudness);
    rig.play(tone(2.7));
    EXPECT_NEAR(rig.shortTerm(), -23.0f, 0.05f);
    EXPECT_NEAR(rig.integrated(wave::LevelSource::RangeLow), -23.0f, 0.05f);
    EXPECT_NEAR(rig.integrated(wave::LevelSource::Range), 0.0f, 0.05f);
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
    const auto figures = [&](int block) {
        using enum wave::LevelSource::Info;
        Rig rig;
        rig.play(noise, block);
        return Signal{rig.integrated(),       rig.momentary(),        rig.shortTerm(),
                      rig.momentary(Extreme), rig.shortTerm(Extreme), rig.integrated(Range)};
    };
    const Signal whole = figures(256);
    for (const int block : {1, 100, 255}) EXPECT_LT(nullDb(figures(block), whole), -80.0) << block;
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
    EXPECT_NEAR(rig.momentary(wave::LevelSource::Highest), -23.0f, 0.05f);
    wallClock += 1601;
    EXPECT_EQ(rig.momentary(wave::LevelSource::Highest), kNoLoudness);
    EXPECT_NEAR(rig.momentary(wave::LevelSource::Extreme), -23.0f, 0.05f);
    wallClock += 1000;
    EXPECT_EQ(rig.shortTerm(), kNoLoudness);
    EXPECT_NEAR(rig.integrated(), -23.0f, 0.05f);

    rig.play(tone(0.5));
    EXPECT_NEAR(rig.momentary(), level, 0.05f);
    rig.environment.setHostBlockSamples(8192);
    wallClock += 300;
    EXPECT_NEAR(rig.momentary(), level, 0.05f) << "the next host block may still be on its way";
    wallClock += 25LL * 24 * 3600 * 1000;  // more milliseconds than an int counts
    EXPECT_EQ(rig.momentary(), kNoLoudness);
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
    EXPECT_NEAR(rig.momentary(wave::LevelSource::Highest), -23.0f, 0.05f);
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

// --- LoudnessGate ---

constexpr double kGateRate = 1000.0;
constexpr int kStride = 100;

/// A stream in which a gate of `strides` strides finds these levels, and nothing else of interest.
std::vector<float> streamOf(const std::vector<double>& levels, int strides) {
    std::vector<float> stream(static_cast<std::size_t>(strides * kStride), 1e-3f);
    for (const double level : levels) {
        stream.push_back(static_cast<float>(meanSquareOf(level)));
        stream.insert(stream.end(), kStride - 1, 1e-3f);
    }
    return stream;
}

std::vector<double> randomLevels(unsigned seed, int count) {
    std::mt19937 random(seed);
    std::normal_distribution<double> distribution(-25.0, 14.0);
    std::vector<double> levels(static_cast<std::size_t>(count));
    std::generate(levels.begin(), levels.end(), [&] { return std::min(distribution(random), 11.9); });
    return levels;
}

LoudnessGate gateOf(const std::vector<double>& levels) {
    LoudnessGate gate(4);
    gate.reset(kGateRate);
    const auto stream = streamOf(levels, 4);
    for (std::size_t at = 0; at < stream.size(); at += 256) {
        gate.feed(stream.data() + at, static_cast<int>(std::min<std::size_t>(256, stream.size() - at)));
    }
    return gate;
}

struct Gated {
    std::vector<double> levels;
    double mean = 0.0;
};

/// The definition: values above the absolute gate, then those above their own mean less so many LU, in steps
/// of the histogram.
Gated gatedBySorting(std::vector<double> levels, double relative) {
    std::erase_if(levels, [](double level) { return level < -70.0; });
    const auto meanOf = [&] {
        double sum = 0.0;
        for (const double level : levels) sum += meanSquareOf(level);
        return sum / static_cast<double>(std::max<std::size_t>(levels.size(), 1));
    };
    const double threshold =
        std::floor((static_cast<double>(loudnessOf(meanOf())) + relative) * 100.0) / 100.0;
    std::erase_if(levels, [=](double level) { return level < threshold; });
    std::ranges::sort(levels, std::greater<>());
    return {levels, meanOf()};
}

TEST(LoudnessGate, AgreesWithSortingTheValues) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        const auto levels = randomLevels(seed, static_cast<int>(seed * seed * 3));
        const LoudnessGate gate = gateOf(levels);
        const Gated mean = gatedBySorting(levels, -10.0);
        // A level at the very edge of a bin may fall on either side of it.
        EXPECT_NEAR(loudnessOf(gate.gatedMeanSquare()), loudnessOf(mean.mean), 0.03f) << seed;

        const Gated range = gatedBySorting(levels, -20.0);
        const auto total = gate.query(-20.0);
        EXPECT_NEAR(total.count, static_cast<double>(range.levels.size()), 1.0) << seed;
        for (const double part : {0.0, 0.05, 0.3, 0.5, 0.9, 1.0}) {
            const auto rank = static_cast<int>(part * static_cast<double>(range.levels.size() - 1));
            EXPECT_NEAR(gate.levelAtRank(rank), range.levels[static_cast<std::size_t>(rank)], 0.0101) << seed;
        }
        const auto count = static_cast<std::size_t>(total.count);
        EXPECT_EQ(gate.range().high, gate.levelAtRank(static_cast<int>(count / 20)));
        EXPECT_EQ(gate.range().low, gate.levelAtRank(static_cast<int>(9 * count / 10)));
    }
}

TEST(LoudnessGate, StartsOverAtOnceThoughItClearsLittleByLittle) {
    LoudnessGate gate(4);
    gate.reset(48000.0);
    const std::vector<float> loud(48000 * 3, 0.5f);
    const std::vector<float> soft(48000 * 3, 0.001f);
    gate.feed(loud.data(), 48000 * 3);
    gate.reset(48000.0);
    for (int i = 0; i < 48000 * 3; i += 100) gate.feed(soft.data() + i, 100);
    EXPECT_NEAR(loudnessOf(gate.gatedMeanSquare()), loudnessOf(0.001), 0.001f);
    EXPECT_EQ(gate.query(-1000.0).count, 26);
}

TEST(LoudnessGate, CountsWhatLiesAboveItsTopThere) {
    const LoudnessGate gate = gateOf({20.0, 20.0, 20.0});
    EXPECT_EQ(gate.query(-10.0).count, 3);
    EXPECT_NEAR(gate.levelAtRank(0), 11.91f, 1e-3f);
}

}  // namespace
}  // namespace vanta::test
