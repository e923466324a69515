#include "tools/song/song.hpp"

#include <ebur128.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <span>
#include <stdexcept>

#include "foundation/numbers.hpp"
#include "tools/song/rate_converter.hpp"
#include "tools/song/upmix.hpp"

namespace vanta::song {
namespace {

using Samples = std::span<const float>;

/// The whole demonstration song; each rate is rendered once.
const Song& demo(int rate) {
    static const Song at44100 = renderSong(loadDemoScore(), 44100);
    static const Song at96000 = renderSong(loadDemoScore(), 96000);
    return rate == 44100 ? at44100 : at96000;
}

double rmsDb(Samples samples) {
    double energy = 0;
    for (const float x : samples) energy += static_cast<double>(x) * static_cast<double>(x);
    return dbFromGain(std::sqrt(energy / static_cast<double>(std::max<std::size_t>(1, samples.size()))));
}

double peak(Samples samples) {
    double highest = 0;
    for (const float x : samples) highest = std::max(highest, static_cast<double>(std::abs(x)));
    return highest;
}

double peakDb(Samples samples) {
    return dbFromGain(peak(samples));
}

Samples section(const Song& song, const std::string& name, const std::vector<float>& channel) {
    for (const auto& at : song.sections)
        if (at.name == name) return Samples(channel).subspan(at.first, at.end - at.first);
    throw std::invalid_argument("no section " + name);
}

double integratedLoudness(const Song& song) {
    ebur128_state* meter = ebur128_init(2, static_cast<unsigned long>(song.sampleRate), EBUR128_MODE_I);
    double result = 0;
    for (std::size_t i = 0; i < song.left.size(); ++i) {
        const float frame[]{song.left[i], song.right[i]};
        ebur128_add_frames_float(meter, frame, 1);
    }
    ebur128_loudness_global(meter, &result);
    ebur128_destroy(&meter);
    return result;
}

/// RMS of a band in dB; its skirts are gentle, which is enough to tell bass from hat.
double bandDb(Samples samples, double rate, double lowHz, double highHz) {
    const double low = 1 - std::exp(-2 * std::numbers::pi * lowHz / rate);
    const double high = 1 - std::exp(-2 * std::numbers::pi * highHz / rate);
    std::vector<float> out;
    double l1 = 0, l2 = 0, h1 = 0, h2 = 0;
    for (const float x : samples) {
        h1 += high * (static_cast<double>(x) - h1);
        h2 += high * (h1 - h2);
        l1 += low * (h2 - l1);
        l2 += low * (h2 - l1 - l2);
        out.push_back(static_cast<float>(h2 - l1 - l2));
    }
    return rmsDb(out);
}

TEST(Song, EachRenderGivesTheSameBits) {
    // A part of the song is the song's beginning, but for its own fade at the end.
    const Song part = renderSong(loadDemoScore(), 44100, 6);
    ASSERT_EQ(part.left.size(), 6u * 44100);
    const std::size_t same = 5 * 44100;
    EXPECT_TRUE(std::equal(part.left.begin(), part.left.begin() + same, demo(44100).left.begin()));
    EXPECT_TRUE(std::equal(part.right.begin(), part.right.begin() + same, demo(44100).right.begin()));
    EXPECT_EQ(renderSong(loadDemoScore(), 44100, 6).right, part.right);
}

TEST(Song, AnotherSeedIsAnotherPerformance) {
    Score score = loadDemoScore();
    const Song first = renderSong(score, 22050, 1);
    score.seed += 100;
    EXPECT_NE(renderSong(score, 22050, 1).left, first.left);
}

TEST(Song, RatesAgreeInEnvelopeAndLoudness) {
    EXPECT_NEAR(integratedLoudness(demo(44100)), integratedLoudness(demo(96000)), 0.05);
    EXPECT_NEAR(peakDb(demo(44100).left), peakDb(demo(96000).left), 1);
    const auto length = [](const Song& song) {
        return static_cast<double>(song.left.size()) / song.sampleRate;
    };
    ASSERT_NEAR(length(demo(44100)), length(demo(96000)), 1e-4);
    for (double at = 0; at + 0.05 < length(demo(44100)); at += 0.05)
        for (const auto channel : {&Song::left, &Song::right}) {
            const auto level = [&](int rate) {
                const auto& samples = demo(rate).*channel;
                return rmsDb(Samples(samples).subspan(static_cast<std::size_t>(at * rate),
                                                      static_cast<std::size_t>(0.05 * rate)));
            };
            const double low = level(44100), high = level(96000);
            if (high > -70) {
                EXPECT_NEAR(low, high, 0.25) << "at " << at << " s";
            }
        }
}

TEST(Song, RatesAgreeSampleBySample) {
    const Score score = loadDemoScore();
    const Song once = renderSong(score, 48000, 6);
    const Song twice = renderSong(score, 96000, 6);
    // What 48 kHz cannot hold is taken from the other before the samples are compared.
    const RateConverter down(96000, 48000);
    const std::vector<double> wide(twice.left.begin(), twice.left.end());
    const auto narrow = down.convert(wide, once.left.size());
    double worst = 0;
    for (std::size_t i = 0; i < narrow.size(); ++i)
        worst = std::max(worst, static_cast<double>(std::abs(narrow[i] - once.left[i])));
    EXPECT_LT(worst, 1e-6);
    for (const double odd : {8000.0, 44123.0, 88200.5, 384000.0}) {
        const Song other = renderSong(score, odd, 0.7);
        EXPECT_EQ(other.left.size(), static_cast<std::size_t>(0.7 * odd)) << odd;
        // The last 0.4 s are the render's own fade.
        const Samples start = Samples(other.left).first(static_cast<std::size_t>(0.3 * odd));
        EXPECT_NEAR(rmsDb(start), rmsDb(Samples(once.left).first(14400)), 0.1) << odd;
    }
}

TEST(Song, IsAnUnmasteredMixInEverySection) {
    struct Bounds {
        const char* name;
        double lowestRms, highestRms, lowestPeak, highestPeak;
    };
    const Bounds table[]{{"opening", -35, -29, -21, -15},
                         {"rise", -26, -21, -11, -6},
                         {"chorus", -20, -16, -5, -2},
                         {"stop", -24, -19, -6, -2.3}};
    for (const int rate : {44100, 96000}) {
        const Song& song = demo(rate);
        for (const auto& bounds : table)
            for (const auto* channel : {&song.left, &song.right}) {
                const Samples part = section(song, bounds.name, *channel);
                EXPECT_GT(rmsDb(part), bounds.lowestRms) << bounds.name;
                EXPECT_LT(rmsDb(part), bounds.highestRms) << bounds.name;
                EXPECT_GT(peakDb(part), bounds.lowestPeak) << bounds.name;
                EXPECT_LT(peakDb(part), bounds.highestPeak) << bounds.name;
                EXPECT_GT(peakDb(part) - rmsDb(part), 12) << "crest of " << bounds.name;
            }
        EXPECT_NEAR(std::max(peakDb(song.left), peakDb(song.right)), -3, 0.7);
        EXPECT_NEAR(integratedLoudness(song), -18, 1);
    }
}

TEST(Song, FillsTheSpectrumAndTheStereoField) {
    const Song& song = demo(96000);
    const Samples left = section(song, "chorus", song.left);
    const Samples right = section(song, "chorus", song.right);
    EXPECT_GT(bandDb(left, 96000, 35, 70), -29) << "sub bass";
    EXPECT_GT(bandDb(left, 96000, 300, 1200), -30) << "chords and voices";
    EXPECT_GT(bandDb(right, 96000, 8000, 18000), -49) << "hat";
    std::vector<float> mid, side;
    for (std::size_t i = 0; i < left.size(); ++i) {
        mid.push_back(0.5f * (left[i] + right[i]));
        side.push_back(0.5f * (left[i] - right[i]));
    }
    EXPECT_GT(rmsDb(side), rmsDb(mid) - 14) << "width";
    EXPECT_LT(rmsDb(side), rmsDb(mid) - 6) << "sums to mono";
    EXPECT_LT(bandDb(side, 96000, 20, 60), bandDb(mid, 96000, 20, 60) - 20) << "bass in the middle";
}

TEST(Song, StartsAndEndsInSilenceWithoutOffset) {
    const Song& song = demo(96000);
    for (const auto* channel : {&song.left, &song.right}) {
        double sum = 0;
        for (const float x : *channel) sum += static_cast<double>(x);
        EXPECT_LT(std::abs(sum) / static_cast<double>(channel->size()), 1e-5);
        EXPECT_LT(std::abs(channel->front()), 1e-5f);
        EXPECT_LT(std::abs(channel->back()), 1e-6f);
        // The room dies away behind the stop.
        const Samples tail = Samples(*channel).subspan(song.sections.back().end);
        EXPECT_GT(tail.size(), 2u * 96000);
        for (std::size_t half = 48000; half + 48000 <= tail.size(); half += 48000)
            EXPECT_LT(rmsDb(tail.subspan(half, 48000)), rmsDb(tail.subspan(half - 48000, 48000)) - 8);
    }
}

double bend(Samples samples, double fromSeconds, double toSeconds) {
    double most = 0;
    for (auto i = static_cast<std::size_t>(fromSeconds * 96000);
         i < static_cast<std::size_t>(toSeconds * 96000); ++i)
        most = std::max(most,
                        std::abs(static_cast<double>(samples[i]) - 2 * static_cast<double>(samples[i + 1]) +
                                 static_cast<double>(samples[i + 2])));
    return most;
}

TEST(Song, NotesBeginAndEndWithoutClicks) {
    // The second difference of a click is as high as its step; that of the held note stays far below.
    for (const std::string kind : {"bass", "keys", "pad", "voice"})
        for (const std::string pitch : {"A1", "E3", "G4", "C5"})
            for (const std::string dynamics : {"pp", "ff"}) {
                const Song song = renderSong(parseScore("tempo 60\nmeter 3\ntail 1\ninstrument i " + kind +
                                                        " space -60\nsection s 1 bar\ni " + dynamics +
                                                        " r:.5 " + pitch + ":.9 r:.6 " + pitch + ":.3 r:.7"),
                                             96000);
                const std::string what = kind + " " + pitch + " " + dynamics;
                const double held = bend(song.left, 0.52, 1.3);
                EXPECT_GT(held, 0) << what;
                EXPECT_LE(bend(song.left, 0, 0.501), 1.3 * held) << what << " begins";
                EXPECT_LE(bend(song.left, 1.39, 1.9), 1.1 * held) << what << " ends";
                EXPECT_LE(bend(song.left, 2.29, 3.9), 1.1 * held) << what << " is let go early";
                EXPECT_LT(peakDb(Samples(song.left).first(47990)), -150) << what;
                EXPECT_LT(peakDb(Samples(song.left).last(9600)), peakDb(song.left) - 60) << what;
            }
}

TEST(Song, ChangingNotesOfAVoiceJoinWithoutClicks) {
    const Song song = renderSong(parseScore("tempo 60\ninstrument v voice space -60\nsection s 1 bar\n"
                                            "v f C4/ah:1 G4/ee:1 A3/oo:1 A3/eh:1"),
                                 96000);
    double held = 0;
    for (const double at : {0.2, 1.2, 2.2, 3.2}) held = std::max(held, bend(song.left, at, at + 0.7));
    for (const double at : {1.0, 2.0, 3.0}) EXPECT_LE(bend(song.left, at - 0.05, at + 0.1), 1.3 * held);
}

TEST(Song, RefusesRatesAndLengthsThatAreNone) {
    const Score score = loadDemoScore();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double rate : {0.0, -48000.0, 7999.0, 384001.0, nan})
        EXPECT_THROW(renderSong(score, rate), std::invalid_argument) << rate;
    for (const double seconds : {0.0, -1.0, nan})
        EXPECT_THROW(renderSong(score, 48000, seconds), std::invalid_argument) << seconds;
}

TEST(RateConverter, KeepsTonesAndDropsWhatDoesNotFit) {
    struct Case {
        double from, to, hertz;
        bool fits;
    };
    const Case table[]{
        {96000, 44100, 997, true},    {96000, 44100, 19500, true},  {96000, 44100, 22100, false},
        {96000, 44100, 43000, false}, {96000, 384000, 30000, true}, {96000, 8000, 3500, true},
        {96000, 8000, 4050, false},   {96000, 96000, 40000, true},  {96000, 48000, 30000, false}};
    for (const auto& [from, to, hertz, fits] : table) {
        std::vector<double> in(48000);
        for (std::size_t i = 0; i < in.size(); ++i)
            in[i] = std::sin(2 * std::numbers::pi * hertz * static_cast<double>(i) / from);
        const auto count = static_cast<std::size_t>(0.5 * to);
        const auto out = RateConverter(from, to).convert(in, count);
        double worst = 0;
        for (std::size_t i = count / 4; i < 3 * count / 4; ++i) {
            const double ideal =
                fits ? std::sin(2 * std::numbers::pi * hertz * static_cast<double>(i) / to) : 0.0;
            worst = std::max(worst, std::abs(static_cast<double>(out[i]) - ideal));
        }
        EXPECT_LT(dbFromGain(worst), -95) << hertz << " Hz from " << from << " to " << to;
    }
}

TEST(Upmix, SpreadsTheSongOverSixChannels) {
    const Song song = renderSong(loadDemoScore(), 48000, 10);
    const Surround channels = upmixTo51(song);
    for (std::size_t i = 0; i < song.left.size(); ++i) {
        const float shared = channels[2][i] / static_cast<float>(std::numbers::sqrt2);
        ASSERT_NEAR(channels[0][i] + shared, song.left[i], 1e-6);
        ASSERT_NEAR(channels[1][i] + shared, song.right[i], 1e-6);
    }
    for (const auto& channel : channels) {
        EXPECT_EQ(channel.size(), song.left.size());
        EXPECT_GT(rmsDb(channel), -45);
        EXPECT_LT(peakDb(channel), -1);
    }
    EXPECT_LT(bandDb(channels[3], 48000, 1000, 20000), bandDb(channels[3], 48000, 20, 120) - 30);
    // The surrounds come 11 ms behind.
    EXPECT_EQ(channels[4][5000 + 528], 0.5f * (song.left[5000] - song.right[5000]));
    EXPECT_EQ(channels[5][5000 + 624], -0.5f * (song.left[5000] - song.right[5000]));
}

}  // namespace
}  // namespace vanta::song
