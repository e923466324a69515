#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "tests/conformance/metering_rig.hpp"
#include "tests/support/sound_files.hpp"
#include "tools/song/song.hpp"

/// The figures that a meter must show, from the documents that ask for them, and a second meter of other
/// make.
namespace vanta::test {
namespace {

// --- EBU Tech 3341, version 4 ---

TEST(Tech3341, IntegratesCases1To5) {
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

TEST(Tech3341, WeightsTheChannelsOfCase6) {
    // The layout's order: left, right, the surrounds, centre.
    const double levels[] = {-28.0, -28.0, -30.0, -30.0, -24.0};
    Channels channels;
    for (const double level : levels) channels.push_back(steps({{20.0, level}}));
    const auto measured = measure(channels, layoutNamed("5.0"));
    EXPECT_NEAR(measured.figures.integrated.value_or(-999.0), -23.0, kLoudnessTolerance);
}

TEST(Tech3341, HoldsCases9And12Throughout) {
    const auto slow = measure(stereo(repeated(5, {{1.34, -20.0}, {1.66, -30.0}})));
    const auto fast = measure(stereo(repeated(25, {{0.18, -20.0}, {0.22, -30.0}})));
    for (const TimelinePoint& point : slow.timeline) {
        if (point.seconds > 2.99) {
            EXPECT_NEAR(point.shortTerm, -23.0, kLoudnessTolerance) << point.seconds;
        }
    }
    for (const TimelinePoint& point : fast.timeline) {
        if (point.seconds > 0.99) {
            EXPECT_NEAR(point.momentary, -23.0, kLoudnessTolerance) << point.seconds;
        }
    }
}

TEST(Tech3341, CatchesCases10And13WhereverTheyFall) {
    for (int i = 0; i < 20; ++i) {
        const auto slow = measure(stereo({{i * 0.15, kSilent}, {3.0, -23.0}, {1.0, kSilent}})).figures;
        EXPECT_NEAR(valueOr(slow.highestShortTerm), -23.0, kLoudnessTolerance) << i;
        ASSERT_TRUE(slow.highestShortTerm);
        EXPECT_NEAR(slow.highestShortTerm->seconds, i * 0.15 + 3.0, 0.05) << i;
        const auto fast = measure(stereo({{i * 0.02, kSilent}, {0.4, -23.0}, {1.0, kSilent}})).figures;
        EXPECT_NEAR(valueOr(fast.highestMomentary), -23.0, kLoudnessTolerance) << i;
    }
}

TEST(Tech3341, FollowsTheRisingShortTermOfCase11) {
    std::vector<Part> parts;
    for (int i = 0; i < 20; ++i) {
        parts.insert(parts.end(), {{i * 0.15, kSilent}, {3.0, -38.0 + i}, {3.0 - i * 0.15, kSilent}});
    }
    const auto measured = measure(stereo(parts));
    // The highest reading of each section of six seconds; a point every 100 ms may stand 50 ms off it.
    std::array<float, 20> highest;
    highest.fill(-999.0f);
    for (const TimelinePoint& point : measured.timeline) {
        const auto section = static_cast<std::size_t>((point.seconds - 1e-6) / 6.0);
        highest.at(section) = std::max(highest.at(section), point.shortTerm);
    }
    for (int i = 0; i < 20; ++i) {
        EXPECT_NEAR(highest[static_cast<std::size_t>(i)], -38.0 + i, kLoudnessTolerance) << i;
    }
    EXPECT_NEAR(valueOr(measured.figures.highestShortTerm), -19.0, kLoudnessTolerance);
}

TEST(Tech3341, FollowsTheRisingMomentaryOfCase14) {
    // Sections of 0.8 s: each is measured up to its end, as a display holds the highest of what it has seen.
    std::vector<Part> parts;
    for (int i = 0; i < 20; ++i) {
        parts.insert(parts.end(), {{i * 0.02, kSilent}, {0.4, -38.0 + i}, {0.4 - i * 0.02, kSilent}});
        const auto measured = measure(stereo(parts));
        EXPECT_NEAR(valueOr(measured.figures.highestMomentary), -38.0 + i, kLoudnessTolerance) << i;
    }
}

void expectTruePeak(const Signal& cut, double expected, const std::string& name) {
    const Signal signal = faded(cut, 480);  // 10 ms
    const double file = valueOr(measure({signal, signal}).figures.total.truePeak);
    const double live = db(exposedPeak(signal));
    report("3341 case {}: file {:.3f}, live {:.3f} dBTP, expected {}\n", name, file, live, expected);
    for (const double found : {file, live}) {
        EXPECT_LE(found, expected + kTruePeakAbove) << name;
        EXPECT_GE(found, expected - kTruePeakBelow) << name;
    }
}

TEST(Tech3341, ReadsTheTruePeaksOfCases15To19) {
    const struct {
        const char* name;
        double divisor, amplitude, degrees, expected;
    } tones[] = {{"15", 4.0, 0.50, 0.0, -6.0},
                 {"16", 4.0, 0.50, 45.0, -6.0},
                 {"17", 6.0, 0.50, 60.0, -6.0},
                 {"18", 8.0, 0.50, 67.5, -6.0},
                 {"19", 4.0, 1.41, 45.0, 3.0}};
    for (const auto& [name, divisor, amplitude, degrees, expected] : tones) {
        expectTruePeak(sine(kRate / divisor, kRate, 48000, amplitude, degrees * kPi / 180.0), expected, name);
    }
}

/// One period of fs/4 at full scale inside fs/6 at half of it, made at four times the rate, low-passed and
/// decimated from `offset` on.
Signal decimatedBurst(std::size_t offset) {
    constexpr int kFactor = 4;
    constexpr int kHalf = 256;
    const double rate = kRate * kFactor;
    Signal dense = sine(kRate / 6.0, rate, static_cast<std::size_t>(kFactor * 4800), 0.5);
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

TEST(Tech3341, ReadsTheTruePeaksOfCases20To23) {
    for (std::size_t offset = 0; offset < 4; ++offset) {
        expectTruePeak(decimatedBurst(offset), 0.0, std::to_string(20 + offset));
    }
}

// --- EBU Tech 3342 ---

TEST(Tech3342, FindsTheRangeOfCases1To4) {
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

TEST(Bs2217, WeightsTonesOfEveryFrequency) {
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

TEST(Bs2217, WeightsEachChannelOfASurroundLayoutAlone) {
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

/// `order` is that of a WAV file.
void expectAgreement(const Channels& channels, double rate, ChannelLayout layout,
                     const std::vector<std::size_t>& order, const std::string& name) {
    SCOPED_TRACE(fmt::format("{} at {}", name, rate));
    const auto own = measure(channels, layout, rate).figures;
    Sound sound{{}, 0, static_cast<int>(rate), {}};
    for (const std::size_t c : order) sound.channels.push_back(channels[c]);
    const SecondOpinion other = secondOpinion(std::vector{sound});
    report("{} at {}: I {:.3f} / {:.3f} LUFS, range {:.2f} / {:.2f} LU, true peak {:.3f} / {:.3f} dBTP\n",
           name, rate, own.integrated.value_or(-999.0), other.integrated, own.range.value_or(-1.0),
           other.range, valueOr(own.total.truePeak), other.truePeak);
    EXPECT_NEAR(own.integrated.value_or(-999.0), other.integrated, 0.1);
    EXPECT_NEAR(valueOr(own.highestMomentary), other.momentary, 0.1);
    EXPECT_NEAR(valueOr(own.highestShortTerm), other.shortTerm, 0.1);
    // The other meter takes a value a second where this one takes ten.
    EXPECT_NEAR(own.range.value_or(-1.0), other.range, kRangeTolerance);
    EXPECT_NEAR(valueOr(own.total.samplePeak), db(peak(channels)), 1e-3);
    EXPECT_NEAR(valueOr(own.total.truePeak), other.truePeak, 0.1);
}

TEST(SecondMeter, AgreesOnMusic) {
    for (const double rate : {44100.0, 48000.0, 96000.0, 192000.0}) {
        const auto song = song::renderSong(song::loadDemoScore(), rate, rate > 96000.0 ? 12.0 : 25.0);
        expectAgreement({song.left, song.right}, rate, kStereoLayout, {0, 1}, "song");
    }
}

TEST(SecondMeter, AgreesOnNoiseInStereoAndSurround) {
    for (const double rate : {44100.0, 48000.0, 96000.0, 192000.0}) {
        const auto frames = static_cast<std::size_t>(rate * 12.0);
        Channels channels;
        for (std::uint64_t c = 0; c < 6; ++c) channels.push_back(softened(pinkNoise(c + 1, frames, 0.05)));
        // Swells, for a range.
        for (Signal& signal : channels) {
            for (std::size_t i = 0; i < frames; ++i) {
                signal[i] *= static_cast<float>(1.1 + std::sin(static_cast<double>(i) / rate));
            }
        }
        expectAgreement({channels[0], channels[1]}, rate, kStereoLayout, {0, 1}, "noise");
        expectAgreement(channels, rate, layoutNamed("5.1"), {0, 1, 4, 5, 2, 3}, "surround noise");
    }
}

}  // namespace
}  // namespace vanta::test
