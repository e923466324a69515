#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "foundation/binary_data.hpp"
#include "foundation/numbers.hpp"
#include "plugin/metering/level_source_proxies.hpp"
#include "tests/support/limiter_rig.hpp"

namespace vanta::test {
namespace {

using MeterScale = VantaParameters::MeterScale;

constexpr double kRate = 48000.0;
/// The programme's loudness sources, then those of the first channel.
enum Source { Momentary, ShortTerm, Integrated, OutputPeak = levelPosition(0, {}), RmsOrLoudness, Gain };
constexpr int kSecondGain = levelPosition(1, ChannelLevel::Gain), kSources = levelPosition(2, {});

Channels tone(double seconds, double gain) {
    const Signal signal = sine(1000.0, kRate, static_cast<std::size_t>(seconds * kRate), gain);
    return {signal, signal};
}

struct Rig {
    explicit Rig(MeterScale scale = MeterScale::Loudness, float gainDb = 0.0f)
        : limiter({.gainDb = gainDb, .rate = kRate, .further = [=](VantaProcessor& processor) {
                       processor.meterScale.setMapped(scale);
                   }}) {}
    explicit Rig(const LimiterSetup& setup) : limiter(setup) {}
    void play(const Channels& in) { limiter.process(in, 480); }
    float read(int source, wave::LevelSource::Info info = wave::LevelSource::Current) {
        return limiter.limiter().levels()[static_cast<std::size_t>(source)]->value(info);
    }
    LimiterRig limiter;
};

TEST(ChannelMeters, ReadPeakLoudnessAndGainReductionOfWhatLeavesTheLimiter) {
    Rig rig(MeterScale::Loudness, 6.0f);
    rig.play(tone(5.0, 1.0));
    EXPECT_NEAR(rig.read(OutputPeak), 0.0f, 0.1f);
    EXPECT_NEAR(rig.read(Gain), -6.0f, 0.6f);
    EXPECT_NEAR(rig.read(kSecondGain), -6.0f, 0.6f);
    // A sine of full scale in both channels, and the overtones that limiting it by 6 dB makes.
    for (const int source : {Momentary, ShortTerm, Integrated}) EXPECT_NEAR(rig.read(source), 0.0f, 0.35f);
    EXPECT_EQ(rig.read(RmsOrLoudness, wave::LevelSource::Highest), rig.read(Momentary));
    // The bar of one channel: its own part of the loudness, 3 dB less.
    EXPECT_NEAR(rig.read(RmsOrLoudness), -3.01f, 0.35f);
}

TEST(ChannelMeters, ReadASineOfFullScaleAsZeroOnAKScale) {
    for (const MeterScale scale : {MeterScale::K12, MeterScale::K14, MeterScale::K20}) {
        Rig rig(scale);
        rig.play(tone(2.0, 0.5));
        EXPECT_NEAR(rig.read(RmsOrLoudness), -6.0f, 0.05f);
        EXPECT_NEAR(rig.read(RmsOrLoudness, wave::LevelSource::Highest), -6.0f, 0.05f);
    }
}

TEST(ChannelMeters, FallAsFastAsTheirScaleIsWide) {
    for (const auto& [scale, fall] :
         {std::pair(MeterScale::Db16, 4.0f), {MeterScale::Db48, 12.0f}, {MeterScale::Loudness, 25.0f}}) {
        Rig rig(scale);
        rig.play(tone(0.5, 0.9));
        const auto after = [&](double seconds) {
            rig.play(tone(seconds, 0.0));
            return rig.read(OutputPeak);
        };
        const float early = after(0.4);
        EXPECT_NEAR(early - after(0.5), fall * 0.5f, 0.1f) << fall;
    }
}

TEST(ChannelMeters, LatchAClipOfTheOutputUntilTheStyleChanges) {
    Rig rig;
    auto& limiter = rig.limiter.limiter();
    limiter.outputLevel.setValue(limiter.outputLevel.maximum(), 0);
    EXPECT_LE(rig.read(OutputPeak, wave::LevelSource::Extreme), -90.0f);
    rig.play(tone(0.5, 0.5));
    const float peak = rig.read(OutputPeak, wave::LevelSource::Extreme);
    EXPECT_NEAR(peak, -6.0f, 0.1f);
    rig.play(tone(0.5, 0.01));
    EXPECT_EQ(rig.read(OutputPeak, wave::LevelSource::Extreme), peak);
    limiter.style.setMapped(LimitingStyle::Modern);
    rig.play(tone(0.5, 0.01));
    EXPECT_LT(rig.read(OutputPeak, wave::LevelSource::Extreme), -30.0f);
}

TEST(ChannelMeters, ShowNoOverWhereATonePassesBeneath) {
    const Signal signal = sine(997.0, kRate, 48000, gainFromDb(-0.45), 0.3);
    for (const int oversamplingIndex : {0, 2}) {
        for (std::size_t start = 9600; start < 9648; start += 7) {
            Rig rig({.oversamplingIndex = oversamplingIndex, .rate = kRate});
            auto& limiter = rig.limiter.limiter();
            auto at = signal.begin();
            const auto play = [&](std::size_t samples) {
                const Signal part(at, at + static_cast<std::ptrdiff_t>(samples));
                at += static_cast<std::ptrdiff_t>(samples);
                rig.play({part, part});
                return rig.read(OutputPeak, wave::LevelSource::Extreme);
            };
            limiter.truePeakMetering.setMapped(false);
            play(start);
            limiter.levels()[OutputPeak]->resetPeak();
            limiter.truePeakMetering.setMapped(true);
            EXPECT_NEAR(play(4800), -0.45f, 0.01f) << "metering switched on";
            limiter.bypass.setMapped(true);
            play(9600);
            limiter.bypass.setMapped(false);
            EXPECT_NEAR(play(9600), -0.45f, 0.01f) << "bypass left";
        }
    }
}

TEST(ChannelMeters, PauseAndResetTheLoudness) {
    Rig rig;
    auto& limiter = rig.limiter.limiter();
    rig.play(tone(4.0, 0.1));
    const float before = rig.read(Integrated);
    EXPECT_NEAR(before, -20.0f, 0.15f);
    limiter.loudnessRecording.setValue(0.0f, 0);
    rig.play(tone(4.0, 0.9));
    EXPECT_EQ(rig.read(Integrated), before);
    const std::uint8_t commands[] = {0, 0, LevelSourceProxy::kResetMeasurement};
    limiter.applyLevelCommands(commands);
    EXPECT_EQ(rig.read(Integrated), -180.0f);
    rig.play(tone(0.1, 0.2));  // what the look-ahead still holds is not measured
    limiter.loudnessRecording.setValue(1.0f, 0);
    rig.play(tone(1.0, 0.2));
    EXPECT_NEAR(rig.read(Integrated), -14.0f, 0.3f);
}

TEST(ChannelMeters, MeasureTheLoudnessAcrossEveryChangeOfThePath) {
    using enum wave::LevelSource::Info;
    const auto leaveABypass = [](VantaProcessor& limiter, Rig& rig) {
        limiter.bypass.setMapped(true);
        rig.play(tone(0.1, 0.2));  // fades out; from here on the measurement stands still
        rig.play(tone(5.0, 0.9));
        limiter.bypass.setMapped(false);
    };
    const auto changeTheRate = [](VantaProcessor& limiter, Rig&) {
        for (const double rate : {44100.0, kRate}) limiter.prepare(static_cast<float>(rate));
    };
    // A path that restarts is silent for its latency, and that is measured.
    const struct {
        std::function<void(VantaProcessor&, Rig&)> change;
        float momentary, shortTerm, integrated, range;
    } cases[] = {
        {[](VantaProcessor&, Rig&) {}, -16.5f, -14.2f, -16.7f, 12.0f},
        {[](VantaProcessor& l, Rig&) { l.style.setMapped(Style::Modern); }, -16.8f, -14.3f, -16.7f, 12.0f},
        {[](VantaProcessor& l, Rig&) { l.oversampling.setValue(2, 0); }, -16.7f, -14.3f, -16.7f, 12.0f},
        {[](VantaProcessor& l, Rig&) { l.truePeakLimiting.setMapped(true); }, -16.7f, -14.3f, -16.7f, 12.0f},
        {leaveABypass, -16.5f, -14.2f, -16.7f, 12.0f},
        {[](VantaProcessor& l, Rig&) { l.reset(); }, -29.2f, -38.0f, -26.0f, 0.0f},
        {changeTheRate, -29.2f, -38.0f, -26.0f, 0.0f},
    };
    int number = 0;
    for (const auto& [change, momentary, shortTerm, integrated, range] : cases) {
        SCOPED_TRACE(++number);
        Rig rig;
        rig.limiter.limiter().truePeakLimiting.setMapped(false);
        rig.play(tone(6.0, 0.2));
        change(rig.limiter.limiter(), rig);
        rig.play(tone(0.2, 0.05));
        EXPECT_NEAR(rig.read(ShortTerm), shortTerm, 0.11f);
        EXPECT_NEAR(rig.read(Momentary), momentary, 0.16f);
        rig.play(tone(5.8, 0.05));
        EXPECT_NEAR(rig.read(Integrated), integrated, 0.11f);
        EXPECT_NEAR(rig.read(Integrated, Range), range, 0.11f);
    }
}

std::string fetch(VantaProcessor& limiter) {
    std::ostringstream stream;
    BinaryDataWriter writer(stream);
    limiter.writeVisualData(writer);
    return stream.str();
}

// Three lists of audio: 12 bytes and their frames each; then 24 bytes a level source.
TEST(VisualData, ReachesTheModelUnchanged) {
    Rig rig(MeterScale::Loudness, 6.0f);
    const Channels in = tone(0.1, 0.9);  // 18 frames and a part of the next
    const Channels out = rig.limiter.process(in, 480);
    std::stringstream stream(fetch(rig.limiter.limiter()));
    EXPECT_EQ(fetch(rig.limiter.limiter()).size(), 3 * 12 + kSources * 24u) << "nothing new has come";
    BinaryDataReader reader(stream);
    AudioSourceProxy dry, wet, gain;
    std::vector<LevelSourceProxy> levels(kSources);
    for (AudioSourceProxy* list : {&dry, &wet, &gain}) list->read(reader);
    for (LevelSourceProxy& level : levels) level.read(reader);
    EXPECT_FALSE(reader.failed());
    EXPECT_EQ(stream.peek(), std::char_traits<char>::eof());

    const auto late = rig.limiter.latency();
    ASSERT_EQ(dry.frameCount(), 18);
    for (const int channel : {0, 1}) {
        for (std::size_t i = late + 2000; i < 4600; ++i) {
            const auto sampleOf = [&](const AudioSourceProxy& list) {
                return list.block(static_cast<int>(i / 256), channel)[i % 256];
            };
            const auto c = static_cast<std::size_t>(channel);
            EXPECT_NEAR(sampleOf(wet), out[c][i], 1e-6f);
            EXPECT_NEAR(sampleOf(dry), in[c][i - late], 1e-4f);
            EXPECT_NEAR(sampleOf(gain), 0.65f, 0.35f);
        }
    }
    EXPECT_EQ(levels[OutputPeak].value(wave::LevelSource::Extreme),
              rig.read(OutputPeak, wave::LevelSource::Extreme));
    for (std::size_t source = 0; source < levels.size(); ++source) {
        const bool isGain = source == Gain || source == kSecondGain;
        EXPECT_EQ(levels[source].detection() == wave::LevelSource::Minimum, isGain) << source;
    }
}

TEST(VisualData, HoldsTheLargestBlocksThatTheHostAnnounces) {
    Rig rig;
    rig.limiter.limiter().prepare(static_cast<float>(kRate), 16384);
    rig.limiter.process(Channels(2, Signal(32768)), 16384);
    std::stringstream stream(fetch(rig.limiter.limiter()));
    BinaryDataReader reader(stream);
    AudioSourceProxy dry;
    dry.read(reader);
    EXPECT_EQ(dry.frameCount(), 32768 / 256);
}

}  // namespace
}  // namespace vanta::test
