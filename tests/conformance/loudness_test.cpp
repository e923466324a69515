#include <ebur128.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

#include "dsp/metering/true_peak_judge.hpp"
#include "dsp/sr/true_peak_exposer.hpp"
#include "host/offline/programme_meter.hpp"
#include "tests/support/element_rig.hpp"
#include "tests/support/limiter_rig.hpp"
#include "tests/support/signals.hpp"
#include "tools/song/song.hpp"
#include "tools/song/upmix.hpp"

/// The figures that a meter must show, from the documents that ask for them, and a second meter of other
/// make.
namespace vanta {
namespace {

using test::Channels;
using test::report;
using test::Signal;

constexpr double kPi = std::numbers::pi;
constexpr double kRate = 48000.0;
constexpr double kLoudnessTolerance = 0.1;  ///< LU, of I, M and S
constexpr double kRangeTolerance = 1.0;     ///< LU
constexpr double kTruePeakAbove = 0.2;      ///< dB
constexpr double kTruePeakBelow = 0.4;      ///< dB

ChannelLayout layoutNamed(std::string_view name) {
    for (ChannelLayout i = 0; i < kChannelLayoutCount; ++i) {
        if (channelLayoutName(i) == name) return i;
    }
    throw std::invalid_argument(std::string(name));
}

struct Measured {
    ProgrammeFigures figures;
    std::vector<TimelinePoint> timeline;
};

Measured measure(const Channels& channels, ChannelLayout layout = kStereoLayout, double rate = kRate,
                 std::size_t block = 4096) {
    ProgrammeMeter meter(layout, rate);
    const std::size_t frames = channels.front().size();
    std::vector<const float*> pointers(channels.size());
    for (std::size_t at = 0; at < frames; at += block) {
        for (std::size_t c = 0; c < channels.size(); ++c) pointers[c] = channels[c].data() + at;
        meter.process(pointers, std::min(block, frames - at));
    }
    meter.finish();
    return {meter.programme().figures(), {meter.timeline().begin(), meter.timeline().end()}};
}

/// A part of a test signal: so many seconds at a peak level in dBFS, of silence below -200.
struct Part {
    double seconds;
    double level;
};
constexpr double kSilent = -1000.0;

/// A sine of 1 kHz whose level changes from part to part, its phase running through.
Signal steps(const std::vector<Part>& parts, double frequency = 1000.0) {
    Signal signal;
    for (const auto& [seconds, level] : parts) {
        const auto count = static_cast<std::size_t>(std::lround(seconds * kRate));
        const double gain = level < -200.0 ? 0.0 : std::pow(10.0, level / 20.0);
        for (std::size_t i = 0; i < count; ++i) {
            const double time = static_cast<double>(signal.size()) / kRate;
            signal.push_back(static_cast<float>(gain * std::sin(2.0 * kPi * frequency * time)));
        }
    }
    return signal;
}

Channels stereo(const std::vector<Part>& parts) {
    const Signal signal = steps(parts);
    return {signal, signal};
}

std::vector<Part> repeated(int times, const std::vector<Part>& parts) {
    std::vector<Part> all;
    for (int i = 0; i < times; ++i) all.insert(all.end(), parts.begin(), parts.end());
    return all;
}

double valueOr(const std::optional<TimedLevel>& level) {
    return level ? level->level : -999.0;
}

// --- EBU Tech 3341, version 4 ---

TEST(Tech3341, integratesCases1To5) {
    const std::vector<std::pair<std::vector<Part>, double>> cases = {
        {{{20.0, -23.0}}, -23.0},
        {{{20.0, -33.0}}, -33.0},
        {{{10.0, -36.0}, {60.0, -23.0}, {10.0, -36.0}}, -23.0},
        {{{10.0, -72.0}, {10.0, -36.0}, {60.0, -23.0}, {10.0, -36.0}, {10.0, -72.0}}, -23.0},
        {{{20.0, -26.0}, {20.1, -20.0}, {20.0, -26.0}}, -23.0},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const auto measured = measure(stereo(cases[i].first));
        const double integrated = measured.figures.integrated.value_or(-999.0);
        report("3341 case {}: {:.3f} LUFS, expected {}\n", i + 1, integrated, cases[i].second);
        EXPECT_NEAR(integrated, cases[i].second, kLoudnessTolerance) << "case " << i + 1;
        if (i > 1) continue;
        // In the first two, all three scales read the same.
        EXPECT_NEAR(valueOr(measured.figures.highestMomentary), cases[i].second, kLoudnessTolerance);
        EXPECT_NEAR(valueOr(measured.figures.highestShortTerm), cases[i].second, kLoudnessTolerance);
    }
}

TEST(Tech3341, weightsTheChannelsOfCase6) {
    // The layout's order: left, right, the surrounds, centre.
    const double levels[] = {-28.0, -28.0, -30.0, -30.0, -24.0};
    Channels channels;
    for (const double level : levels) channels.push_back(steps({{20.0, level}}));
    const auto measured = measure(channels, layoutNamed("5.0"));
    EXPECT_NEAR(measured.figures.integrated.value_or(-999.0), -23.0, kLoudnessTolerance);
}

TEST(Tech3341, holdsShortTermThroughoutCase9) {
    const auto measured = measure(stereo(repeated(5, {{1.34, -20.0}, {1.66, -30.0}})));
    for (const TimelinePoint& point : measured.timeline) {
        if (point.seconds < 3.0 - 1e-9) continue;
        EXPECT_NEAR(point.shortTerm, -23.0, kLoudnessTolerance) << point.seconds;
    }
}

TEST(Tech3341, catchesShortTermWhereverItFallsInCase10) {
    for (int i = 0; i < 20; ++i) {
        const auto measured = measure(stereo({{i * 0.15, kSilent}, {3.0, -23.0}, {1.0, kSilent}}));
        const auto highest = measured.figures.highestShortTerm;
        EXPECT_NEAR(valueOr(highest), -23.0, kLoudnessTolerance) << i;
        ASSERT_TRUE(highest);
        EXPECT_NEAR(highest->seconds, i * 0.15 + 3.0, 0.05) << i;
    }
}

/// The highest readings of 20 sections in a row, each as long as `section` seconds.
void expectRising(const Measured& measured, double section, double window, float TimelinePoint::*scale) {
    for (int i = 0; i < 20; ++i) {
        float highest = -999.0f;
        for (const TimelinePoint& point : measured.timeline) {
            const double into = point.seconds - i * section;
            if (into > 1e-6 && into <= section + 1e-6) highest = std::max(highest, point.*scale);
        }
        EXPECT_NEAR(highest, -38.0 + i, window) << "section " << i;
    }
}

TEST(Tech3341, followsTheRisingShortTermOfCase11) {
    std::vector<Part> parts;
    for (int i = 0; i < 20; ++i) {
        parts.insert(parts.end(), {{i * 0.15, kSilent}, {3.0, -38.0 + i}, {3.0 - i * 0.15, kSilent}});
    }
    const auto measured = measure(stereo(parts));
    // The timeline has a point every 100 ms, and a section may be full 50 ms off it.
    expectRising(measured, 6.0, kLoudnessTolerance, &TimelinePoint::shortTerm);
    EXPECT_NEAR(valueOr(measured.figures.highestShortTerm), -19.0, kLoudnessTolerance);
}

TEST(Tech3341, holdsMomentaryThroughoutCase12) {
    const auto measured = measure(stereo(repeated(25, {{0.18, -20.0}, {0.22, -30.0}})));
    for (const TimelinePoint& point : measured.timeline) {
        if (point.seconds < 1.0 - 1e-9) continue;
        EXPECT_NEAR(point.momentary, -23.0, kLoudnessTolerance) << point.seconds;
    }
}

TEST(Tech3341, catchesMomentaryWhereverItFallsInCase13) {
    for (int i = 0; i < 20; ++i) {
        const auto measured = measure(stereo({{i * 0.02, kSilent}, {0.4, -23.0}, {1.0, kSilent}}));
        EXPECT_NEAR(valueOr(measured.figures.highestMomentary), -23.0, kLoudnessTolerance) << i;
    }
}

TEST(Tech3341, followsTheRisingMomentaryOfCase14) {
    // Sections of 0.8 s: each is measured up to its end, as a display holds the highest of what it has seen.
    std::vector<Part> parts;
    for (int i = 0; i < 20; ++i) {
        parts.insert(parts.end(), {{i * 0.02, kSilent}, {0.4, -38.0 + i}, {0.4 - i * 0.02, kSilent}});
        const auto measured = measure(stereo(parts));
        EXPECT_NEAR(valueOr(measured.figures.highestMomentary), -38.0 + i, kLoudnessTolerance) << i;
    }
}

/// Ten milliseconds of fade at both ends.
Signal faded(Signal signal) {
    const auto length = static_cast<std::size_t>(0.01 * kRate);
    for (std::size_t i = 0; i < length; ++i) {
        const auto gain = static_cast<float>(0.5 - 0.5 * std::cos(kPi * static_cast<double>(i) / 480.0));
        signal[i] *= gain;
        signal[signal.size() - 1 - i] *= gain;
    }
    return signal;
}

/// What the limiter's own meter reads.
double exposedPeak(const Signal& signal) {
    wave::Environment environment(256);
    environment.setSampleRate(static_cast<float>(kRate));
    sr::TruePeakExposer::Style style(environment);
    test::VectorSource source(environment, signal);
    sr::TruePeakExposer exposer(environment, style);
    exposer.source = &source;
    return test::peak(
        test::runElement(environment, exposer, test::evenBlocks(static_cast<int>(signal.size()), 256)));
}

void expectTruePeak(const Signal& signal, double expected, const std::string& name) {
    const double file = valueOr(measure({signal, signal}).figures.total.truePeak);
    const double live = test::db(exposedPeak(signal));
    report("3341 case {}: file {:.3f}, live {:.3f} dBTP, expected {}\n", name, file, live, expected);
    for (const double found : {file, live}) {
        EXPECT_LE(found, expected + kTruePeakAbove) << name;
        EXPECT_GE(found, expected - kTruePeakBelow) << name;
    }
}

TEST(Tech3341, readsTheTruePeaksOfCases15To19) {
    const struct {
        const char* name;
        double divisor, amplitude, degrees, expected;
    } tones[] = {{"15", 4.0, 0.50, 0.0, -6.0},
                 {"16", 4.0, 0.50, 45.0, -6.0},
                 {"17", 6.0, 0.50, 60.0, -6.0},
                 {"18", 8.0, 0.50, 67.5, -6.0},
                 {"19", 4.0, 1.41, 45.0, 3.0}};
    for (const auto& [name, divisor, amplitude, degrees, expected] : tones) {
        expectTruePeak(faded(test::sine(kRate / divisor, kRate, 48000, amplitude, degrees * kPi / 180.0)),
                       expected, name);
    }
}

/// One period of fs/4 at full scale inside fs/6 at half of it, made at four times the rate, low-passed and
/// decimated from `offset` on.
Signal decimatedBurst(std::size_t offset) {
    constexpr int kFactor = 4;
    constexpr int kHalf = 256;
    const double rate = kRate * kFactor;
    Signal dense = test::sine(kRate / 6.0, rate, static_cast<std::size_t>(kFactor * 4800), 0.5);
    // The period begins where the sine passes zero upwards, and ends the same way.
    const std::size_t start = 24 * 400;
    for (std::size_t i = 0; i < 16; ++i) {
        dense[start + i] = static_cast<float>(std::sin(2.0 * kPi * static_cast<double>(i) / 16.0));
    }
    // A Blackman window: wide enough that the pass band is flat to 20 kHz.
    std::array<double, 2 * kHalf + 1> taps{};
    double sum = 0.0;
    for (int k = -kHalf; k <= kHalf; ++k) {
        const double x = static_cast<double>(k) / kFactor;
        const double sinc = k == 0 ? 1.0 : std::sin(kPi * x) / (kPi * x);
        const double place = kPi * k / kHalf;
        sum += taps[static_cast<std::size_t>(k + kHalf)] =
            sinc * (0.42 + 0.5 * std::cos(place) + 0.08 * std::cos(2.0 * place));
    }
    Signal result;
    for (std::size_t at = kHalf + offset; at + kHalf < dense.size(); at += kFactor) {
        double y = 0.0;
        for (std::size_t k = 0; k < taps.size(); ++k)
            y += taps[k] * static_cast<double>(dense[at + k - kHalf]);
        result.push_back(static_cast<float>(y / sum));
    }
    return result;
}

TEST(Tech3341, readsTheTruePeaksOfCases20To23) {
    for (std::size_t offset = 0; offset < 4; ++offset) {
        expectTruePeak(faded(decimatedBurst(offset)), 0.0, std::to_string(20 + offset));
    }
}

// --- EBU Tech 3342 ---

TEST(Tech3342, findsTheRangeOfCases1To4) {
    const std::vector<std::pair<std::vector<double>, double>> cases = {
        {{-20.0, -30.0}, 10.0},
        {{-20.0, -15.0}, 5.0},
        {{-40.0, -20.0}, 20.0},
        {{-50.0, -35.0, -20.0, -35.0, -50.0}, 15.0},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        std::vector<Part> parts;
        for (const double level : cases[i].first) parts.push_back({20.0, level});
        const auto figures = measure(stereo(parts)).figures;
        report("3342 case {}: {:.2f} LU, expected {}\n", i + 1, figures.range.value_or(-1.0),
               cases[i].second);
        EXPECT_NEAR(figures.range.value_or(-1.0), cases[i].second, kRangeTolerance) << "case " << i + 1;
    }
}

// --- ITU-R BS.2217 ---

TEST(Bs2217, weightsTonesOfEveryFrequency) {
    const struct {
        double frequency, level;
    } tones[] = {{25.0, -11.92},   {100.0, -21.18},  {500.0, -22.35},
                 {1000.0, -23.01}, {2000.0, -25.38}, {10000.0, -26.35}};
    for (const auto& [frequency, level] : tones) {
        const Signal signal = steps({{20.0, level}}, frequency);
        const double integrated = measure({signal, signal}).figures.integrated.value_or(-999.0);
        report("2217 {} Hz: {:.3f} LUFS\n", frequency, integrated);
        EXPECT_NEAR(integrated, -23.0, kLoudnessTolerance) << frequency;
    }
}

TEST(Bs2217, weightsEachChannelOfASurroundLayoutAlone) {
    const double side = 10.0 * std::log10(1.41);
    const double expected[] = {-23.0, -23.0, -23.0 + side, -23.0 + side, -23.0};
    const ChannelLayout layout = layoutNamed("5.1");
    const Signal tone = steps({{10.0, -20.0}});
    for (std::size_t c = 0; c < 6; ++c) {
        Channels channels(6, Signal(tone.size()));
        channels[c] = tone;
        const auto figures = measure(channels, layout).figures;
        if (c == 5) {
            EXPECT_FALSE(figures.integrated) << "the LFE alone has no loudness";
            EXPECT_FALSE(figures.highestMomentary);
            EXPECT_NEAR(valueOr(figures.total.samplePeak), -20.0, 0.01);
        } else {
            EXPECT_NEAR(figures.integrated.value_or(-999.0), expected[c], kLoudnessTolerance) << c;
        }
    }
}

// --- A second meter ---

/// Without what lies next to half the sample rate: no recording has it, and no two interpolators agree on it.
Signal softened(Signal signal) {
    for (int pass = 0; pass < 4; ++pass) {
        for (std::size_t i = signal.size() - 1; i > 0; --i) signal[i] = 0.5f * (signal[i] + signal[i - 1]);
    }
    return signal;
}

struct Judged {
    double integrated, range, truePeakDb, samplePeakDb;
};

Judged judge(const Channels& channels, double rate, const std::vector<int>& speakers) {
    constexpr int kMode = EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_TRUE_PEAK | EBUR128_MODE_HISTOGRAM;
    const auto count = static_cast<unsigned>(channels.size());
    ebur128_state* state = ebur128_init(count, static_cast<unsigned long>(rate), kMode);
    for (unsigned c = 0; c < count; ++c) ebur128_set_channel(state, c, speakers[c]);
    const std::size_t frames = channels.front().size();
    std::vector<float> interleaved(frames * count);
    for (std::size_t i = 0; i < interleaved.size(); ++i) interleaved[i] = channels[i % count][i / count];
    ebur128_add_frames_float(state, interleaved.data(), frames);
    Judged judged{};
    ebur128_loudness_global(state, &judged.integrated);
    ebur128_loudness_range(state, &judged.range);
    double truePeak = 0.0, samplePeak = 0.0;
    for (unsigned c = 0; c < count; ++c) {
        double peak = 0.0;
        ebur128_true_peak(state, c, &peak);
        truePeak = std::max(truePeak, peak);
        ebur128_sample_peak(state, c, &peak);
        samplePeak = std::max(samplePeak, peak);
    }
    judged.truePeakDb = test::db(truePeak);
    judged.samplePeakDb = test::db(samplePeak);
    ebur128_destroy(&state);
    return judged;
}

const std::vector<int> kStereoSpeakers = {EBUR128_LEFT, EBUR128_RIGHT};
const std::vector<int> k51Speakers = {EBUR128_LEFT,           EBUR128_RIGHT,  EBUR128_LEFT_SURROUND,
                                      EBUR128_RIGHT_SURROUND, EBUR128_CENTER, EBUR128_UNUSED};

void expectAgreement(const Channels& channels, double rate, ChannelLayout layout,
                     const std::vector<int>& speakers, const std::string& name) {
    const auto own = measure(channels, layout, rate).figures;
    const Judged other = judge(channels, rate, speakers);
    report("{} at {}: I {:.3f} / {:.3f} LUFS, range {:.2f} / {:.2f} LU, true peak {:.3f} / {:.3f} dBTP\n",
           name, rate, own.integrated.value_or(-999.0), other.integrated, own.range.value_or(-1.0),
           other.range, valueOr(own.total.truePeak), other.truePeakDb);
    EXPECT_NEAR(own.integrated.value_or(-999.0), other.integrated, 0.1) << name << " at " << rate;
    // The other meter takes a value a second where this one takes ten.
    EXPECT_NEAR(own.range.value_or(-1.0), other.range, kRangeTolerance) << name << " at " << rate;
    EXPECT_NEAR(valueOr(own.total.samplePeak), other.samplePeakDb, 1e-3) << name << " at " << rate;
    EXPECT_NEAR(valueOr(own.total.truePeak), other.truePeakDb, 0.1) << name << " at " << rate;
}

TEST(SecondMeter, agreesOnMusic) {
    for (const double rate : {44100.0, 48000.0, 96000.0, 192000.0}) {
        const auto song = song::renderSong(song::loadDemoScore(), rate, rate > 96000.0 ? 12.0 : 25.0);
        expectAgreement({song.left, song.right}, rate, kStereoLayout, kStereoSpeakers, "song");
    }
}

TEST(SecondMeter, agreesOnNoiseInStereoAndSurround) {
    for (const double rate : {44100.0, 48000.0, 96000.0, 192000.0}) {
        const auto frames = static_cast<std::size_t>(rate * 12.0);
        Channels channels;
        for (std::uint64_t c = 0; c < 6; ++c)
            channels.push_back(softened(test::pinkNoise(c + 1, frames, 0.05)));
        // Swells, for a range.
        for (Signal& signal : channels) {
            for (std::size_t i = 0; i < frames; ++i) {
                signal[i] *= static_cast<float>(1.1 + std::sin(static_cast<double>(i) / rate));
            }
        }
        expectAgreement({channels[0], channels[1]}, rate, kStereoLayout, kStereoSpeakers, "noise");
        expectAgreement(channels, rate, layoutNamed("5.1"), k51Speakers, "surround noise");
    }
}

// --- Own promises ---

TEST(ProgrammeMeter, givesTheSameFiguresAtAnyBlockSize) {
    Channels channels{test::pinkNoise(1, 48000 * 6), test::pinkNoise(2, 48000 * 6)};
    const auto whole = measure(channels, kStereoLayout, kRate, 1 << 20);
    for (const std::size_t block : {1u, 7u, 255u, 256u, 1000u}) {
        const auto split = measure(channels, kStereoLayout, kRate, block);
        EXPECT_EQ(split.figures.integrated, whole.figures.integrated) << block;
        EXPECT_EQ(split.figures.range, whole.figures.range) << block;
        EXPECT_EQ(split.figures.highestShortTerm->level, whole.figures.highestShortTerm->level) << block;
        EXPECT_EQ(split.figures.highestMomentary->seconds, whole.figures.highestMomentary->seconds) << block;
        EXPECT_EQ(split.figures.total.truePeak->level, whole.figures.total.truePeak->level) << block;
        EXPECT_EQ(split.timeline.size(), whole.timeline.size()) << block;
    }
}

TEST(ProgrammeMeter, saysWhereTheExtremesLie) {
    Channels channels{Signal(48000 * 5), Signal(48000 * 5)};
    channels[1][100000] = -0.5f;
    const auto burst = test::sine(12000.0, kRate, 4800, 0.4, kPi / 4.0);
    std::copy(burst.begin(), burst.end(), channels[0].begin() + 200000);
    const auto [figures, timeline] = measure(channels);
    EXPECT_NEAR(figures.total.samplePeak->seconds, 100000.0 / kRate, 1e-9);
    EXPECT_NEAR(figures.total.samplePeak->level, test::db(0.5), 1e-4);
    EXPECT_NEAR(figures.channels[0].truePeak->seconds, 202400.0 / kRate, 0.06);
    EXPECT_NEAR(figures.channels[0].truePeak->level, test::db(0.4), 0.3);
    EXPECT_NEAR(figures.channels[0].samplePeak->level, test::db(0.4 * std::sqrt(0.5)), 0.01);
    EXPECT_NEAR(figures.highestMomentary->seconds, 204800.0 / kRate, 0.3);
    ASSERT_EQ(timeline.size(), 50u);
    EXPECT_EQ(timeline[20].samplePeak, 0.5f) << "from 2.0 s to 2.1 s";
    EXPECT_EQ(timeline[19].samplePeak, 0.0f);
}

TEST(ProgrammeMeter, seesThePeaksThatTheLimiterDoesNot) {
    // White noise is the worst for interpolators of finite length. The limiter's own finds nothing to object
    // to; what was rendered must not be judged by it.
    test::LimiterSetup setup;
    setup.style = VantaParameters::LimitingStyle::Allround;
    setup.gainDb = 24.0f;
    setup.truePeak = true;
    setup.layout = kMonoLayout;
    const Signal out = test::limited(setup, {test::whiteNoise(3, 44100)})[0];
    const auto [figures, timeline] = measure({out}, kMonoLayout, 44100.0);
    const double judged = valueOr(figures.total.truePeak);
    report("limited noise: judged {:.3f}, reference {:.3f}, by the limiter's own {:.3f} dBTP\n", judged,
           test::db(test::truePeak(out)), test::db(exposedPeak(out)));
    EXPECT_GT(judged, test::db(exposedPeak(out)) + 0.3);
    // The reference is flat somewhat further, to 0.49 of the rate instead of 0.48.
    EXPECT_LT(judged, test::db(test::truePeak(out)) + 0.05);
    float highest = 0.0f;
    for (const TimelinePoint& point : timeline) highest = std::max(highest, point.truePeak);
    EXPECT_NEAR(test::db(static_cast<double>(highest)), judged, 1e-3);
}

TEST(ProgrammeMeter, measuresRmsAndCrestOfASine) {
    const auto figures = measure({test::sine(1000.0, kRate, 48000), Signal(48000)}).figures;
    EXPECT_NEAR(*figures.channels[0].rms, -3.01, 0.01);
    EXPECT_NEAR(*figures.channels[0].crest, 3.01, 0.01);
    EXPECT_NEAR(*figures.total.rms, -6.02, 0.01);
    EXPECT_FALSE(figures.channels[1].rms) << "silence has no level";
    EXPECT_FALSE(figures.channels[1].samplePeak);
}

TEST(ProgrammeMeter, doesNotGiveFiguresThatTheLengthDoesNotBear) {
    const auto brief = measure(stereo({{0.3, -20.0}})).figures;
    EXPECT_FALSE(brief.integrated);
    EXPECT_FALSE(brief.highestMomentary);
    EXPECT_FALSE(brief.range);
    EXPECT_NEAR(valueOr(brief.total.samplePeak), -20.0, 0.01);
    const auto middling = measure(stereo({{2.0, -20.0}})).figures;
    EXPECT_NEAR(middling.integrated.value_or(-999.0), -20.0, kLoudnessTolerance);
    EXPECT_FALSE(middling.highestShortTerm);
    EXPECT_FALSE(middling.range);
    const auto silent = measure({Signal(480000), Signal(480000)}).figures;
    EXPECT_FALSE(silent.integrated);
    EXPECT_FALSE(silent.total.truePeak);
}

TEST(ProgrammeMeter, countsWhatIsNoNumberAsSilence) {
    Channels channels = stereo({{5.0, -23.0}});
    channels[0][7000] = std::nanf("");
    channels[1][9000] = HUGE_VALF;
    ProgrammeMeter meter(kStereoLayout, kRate);
    const float* pointers[] = {channels[0].data(), channels[1].data()};
    meter.process(pointers, channels[0].size());
    meter.finish();
    EXPECT_EQ(meter.programme().notFinite, 2);
    EXPECT_NEAR(*meter.programme().figures().integrated, -23.0, kLoudnessTolerance);
}

TEST(Programme, judgesAllFilesTogetherAsOneProgramme) {
    Programme all;
    Channels joined(2);
    for (const double level : {-20.0, -40.0, -14.0}) {
        const Channels channels = stereo({{20.0, level}});
        ProgrammeMeter meter(kStereoLayout, kRate);
        const float* pointers[] = {channels[0].data(), channels[1].data()};
        meter.process(pointers, channels[0].size());
        meter.finish();
        all.merge(meter.programme());
        for (std::size_t c = 0; c < 2; ++c)
            joined[c].insert(joined[c].end(), channels[c].begin(), channels[c].end());
    }
    const auto together = all.figures();
    const auto whole = measure(joined).figures;
    // Only the windows across the seams differ.
    EXPECT_NEAR(*together.integrated, *whole.integrated, 0.1);
    EXPECT_NEAR(*together.range, *whole.range, 0.5);
    EXPECT_NEAR(*together.total.rms, *whole.total.rms, 1e-6);
    EXPECT_EQ(together.seconds, 60.0);
}

// The judge of written files against one that takes fifteen thousand multiplications a sample.
TEST(TruePeakJudge, findsTheContinuousPeakToTheThousandth) {
    for (const double share : {0.01, 0.1, 0.25, 0.3, 0.4, 0.45, 0.47, 0.48}) {
        for (const double phase : {0.0, 0.3, 0.7, 1.1, 1.5}) {
            const auto signal = test::sine(share * kRate, kRate, 6000, 0.5, phase);
            TruePeakJudge judge;
            judge.process(signal.data(), signal.size());
            // The middle of a long tone: its ends ring.
            EXPECT_GE(test::db(judge.peak()), test::db(0.5) - 0.006) << share;
        }
    }
    for (std::uint64_t seed = 1; seed <= 4; ++seed) {
        // Next to nothing above the band that the judge is flat in.
        Signal noise = softened(test::pinkNoise(seed, 4000, 0.2));
        noise.insert(noise.end(), 300, 0.0f);
        TruePeakJudge judge;
        for (std::size_t at = 0; at < noise.size(); at += 100) judge.process(noise.data() + at, 100);
        judge.finish();
        const double expected = test::truePeak(noise);
        report("judge {:.4f}, reference {:.4f} dBTP\n", test::db(judge.peak()), test::db(expected));
        EXPECT_NEAR(test::db(judge.peak()), test::db(expected), 0.01) << seed;
        TruePeakJudge whole;
        whole.process(noise.data(), noise.size());
        whole.finish();
        EXPECT_EQ(judge.peak(), whole.peak());
        EXPECT_EQ(judge.position(), whole.position());
    }
}

TEST(TruePeakJudge, saysWhereThePeakLies) {
    Signal signal(2000);
    signal[700] = 0.3f;
    signal[1300] = -0.9f;
    TruePeakJudge judge;
    judge.process(signal.data(), signal.size());
    judge.finish();
    EXPECT_NEAR(judge.peak(), 0.9, 1e-4);
    EXPECT_NEAR(judge.position(), 1300.0, 0.01);
    // A peak in the very last sample is found when the signal ends.
    TruePeakJudge last;
    Signal end(300);
    end.back() = 1.0f;
    last.process(end.data(), end.size());
    last.finish();
    EXPECT_NEAR(last.peak(), 1.0, 1e-4);
}

}  // namespace
}  // namespace vanta
