#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "tests/app/program.hpp"
#include "tests/app/sound_files.hpp"

namespace vanta::test {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

constexpr int kWav = SF_FORMAT_WAV;
constexpr int kRate = 48000;

class CommandRender : public testing::Test {
protected:
    ProgramRun render(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "render");
        ProgramRun run = runProgram(folder.path, arguments);
        EXPECT_EQ(run.code, 0) << run.err;
        return run;
    }

    TempFolder folder;
};

TEST_F(CommandRender, OneLineTellsWhatWasDone) {
    const Signal tone = sine(997, kRate, 48000, 0.5);
    writeSound(folder / "in.wav", {tone, tone}, kWav | SF_FORMAT_PCM_24, kRate);
    const ProgramRun run =
        render({"in.wav", "out.wav", "--gain", "9", "--output-level", "-1", "--true-peak", "off"});
    EXPECT_THAT(
        run.out,
        ContainsRegex("^in.wav -> out.wav \\(wav pcm_24 without dither\\): Modern, "
                      "peak -6.02 dBFS in, -1.0[0-9] dBFS out, largest gain reduction "
                      "(2.9|3.[0-2]) dB, latency [0-9]+ samples \\([0-9.]+ ms\\), [0-9.]+x real time\n"));
    EXPECT_EQ(run.err, "");
    const Sound out = readSound(folder / "out.wav");
    EXPECT_EQ(out.format, kWav | SF_FORMAT_PCM_24);
    EXPECT_EQ(out.sampleRate, kRate);
    EXPECT_EQ(out.channels[0].size(), tone.size());
    EXPECT_LE(db(peak(out.channels[0])), -1.0);
    EXPECT_EQ(render({"in.wav", "quiet.wav", "--quiet"}).out, "");
}

TEST_F(CommandRender, DedicatedOptionsComeBehindThePresetAndNamedOnesLast) {
    const Signal tone = sine(997, kRate, 20000, 0.1);
    writeSound(folder / "in.wav", {tone}, kWav | SF_FORMAT_FLOAT, kRate);
    // Tag, version, count and one value: a preset that holds no more than a gain of 12 dB.
    const auto bytes = [](auto value) {
        return std::string(reinterpret_cast<const char*>(&value), sizeof value);
    };
    writeBytes(folder / "loud.qmp", "Vn2p" + bytes(std::int32_t{2}) + bytes(std::int32_t{1}) + bytes(12.0f));
    const auto gainOf = [&](const std::vector<std::string>& more) {
        std::vector<std::string> arguments{"in.wav", "out.wav", "--force", "--preset", "loud.qmp"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        render(arguments);
        return db(peak(readSound(folder / "out.wav").channels[0]) / peak(tone));
    };
    EXPECT_NEAR(gainOf({}), 12.0, 0.01);
    EXPECT_NEAR(gainOf({"--gain", "6"}), 6.0, 0.01);
    EXPECT_NEAR(gainOf({"--set", "gain = 3 dB", "--gain", "6"}), 3.0, 0.01);
    EXPECT_NEAR(gainOf({"--set", "Gain=3", "--set", "Gain=50%"}), 15.0, 0.01);
    EXPECT_NEAR(gainOf({"--unity-gain", "on"}), 0.0, 0.01);
    EXPECT_NEAR(gainOf({"--unity-gain", "--quiet"}), 0.0, 0.01);
    EXPECT_NEAR(gainOf({"--unity-gain", "off"}), 12.0, 0.01);
}

TEST_F(CommandRender, DitheredIntegersAreTheQuantisedSamples) {
    const Signal tone = sine(997, kRate, 30000, 0.25);
    writeSound(folder / "in.wav", {tone, tone}, kWav | SF_FORMAT_FLOAT, kRate);
    render({"in.wav", "float.wav", "--dither", "16", "--seed", "5"});
    const Sound wide = readSound(folder / "float.wav");
    for (const char* name : {"16.wav", "24.flac", "16.aiff"}) {
        const int bits = std::stoi(name);
        render({"in.wav", name, "--dither", "16", "--seed", "5", "--subtype", fmt::format("pcm_{}", bits)});
        const auto integers = readIntegers(folder / name);
        for (std::size_t i = 0; i < integers.size(); ++i) {
            const double expected = static_cast<double>(wide.channels[i % 2][i / 2]) * 32768.0;
            ASSERT_EQ(expected, std::round(expected)) << "not on the grid";
            ASSERT_EQ(integers[i], static_cast<int>(expected) * 65536) << name << " at " << i;
        }
    }
    const ProgramRun coarse = render({"in.wav", "coarse.wav", "--dither", "24", "--subtype", "pcm_16"});
    EXPECT_THAT(coarse.err, HasSubstr("fewer bits than the 24 of the dither"));
}

TEST_F(CommandRender, WithoutDitherSamplesAreRounded) {
    const Signal tone = sine(997, kRate, 30000, 0.25);
    writeSound(folder / "in.wav", {tone}, kWav | SF_FORMAT_FLOAT, kRate);
    render({"in.wav", "out.wav", "--subtype", "pcm_16"});
    const auto integers = readIntegers(folder / "out.wav");
    for (std::size_t i = 0; i < integers.size(); ++i) {
        ASSERT_LE(std::abs(integers[i] / 65536 - static_cast<double>(tone[i]) * 32768), 0.51) << i;
    }
}

TEST_F(CommandRender, WhatGoesBeyondFullScaleBecomesFloatUnlessASubtypeWasNamed) {
    const Signal loud = sine(997, kRate, 20000, 1.9);
    writeSound(folder / "in.wav", {loud}, kWav | SF_FORMAT_FLOAT, kRate);
    writeSound(folder / "key.wav", {Signal(20000)}, kWav | SF_FORMAT_FLOAT, kRate);
    writeSound(folder / "half.wav", {sine(997, kRate, 20000, 0.9)}, kWav | SF_FORMAT_PCM_16, kRate);
    const std::vector<std::string> raised{"half.wav", "--side-chain", "key.wav", "--gain", "6"};
    const auto with = [&](std::vector<std::string> more) {
        more.insert(more.begin(), raised.begin(), raised.end());
        return more;
    };
    const ProgramRun wide = render(with({"out.wav"}));
    EXPECT_THAT(wide.err, HasSubstr("beyond full scale and is written as wav float"));
    const Sound sound = readSound(folder / "out.wav");
    EXPECT_EQ(sound.format, kWav | SF_FORMAT_FLOAT);
    EXPECT_NEAR(db(peak(sound.channels[0])), db(0.9) + 6.0, 0.05);
    const ProgramRun clipped = render(with({"clipped.wav", "--subtype", "pcm_16"}));
    EXPECT_THAT(clipped.err, HasSubstr("were clipped"));
    EXPECT_EQ(readSound(folder / "clipped.wav").format, kWav | SF_FORMAT_PCM_16);

    const ProgramRun flac =
        runProgram(folder.path, {"render", "half.wav", "out.flac", "--side-chain", "key.wav", "--gain", "6"});
    EXPECT_EQ(flac.code, 1);
    EXPECT_THAT(flac.err, HasSubstr("lower --output-level"));
    EXPECT_FALSE(std::filesystem::exists(folder / "out.flac"));
    // The limiter itself keeps a hot float file within the integers.
    render({"in.wav", "tamed.wav", "--subtype", "pcm_16"});
    EXPECT_LE(peak(readSound(folder / "tamed.wav").channels[0]), 1.0);
}

TEST_F(CommandRender, SurroundChannelsComeOutWhereTheyWentIn) {
    constexpr int L = SF_CHANNEL_MAP_LEFT, R = SF_CHANNEL_MAP_RIGHT, C = SF_CHANNEL_MAP_CENTER,
                  Lfe = SF_CHANNEL_MAP_LFE, Lb = SF_CHANNEL_MAP_REAR_LEFT, Rb = SF_CHANNEL_MAP_REAR_RIGHT;
    Channels channels;
    // Lossy coders keep nothing but low frequencies of the LFE, the fourth, and those coarsely.
    const double hertz[] = {300, 400, 500, 50, 600, 700};
    const double amplitudes[] = {0.04, 0.08, 0.16, 0.4, 0.11, 0.22};
    for (int c = 0; c < 6; ++c) channels.push_back(sine(hertz[c], kRate, 24000, amplitudes[c]));
    const std::vector<int> waveOrder{L, R, C, Lfe, Lb, Rb};
    writeSound(folder / "in.wav", channels, SF_FORMAT_WAVEX | SF_FORMAT_FLOAT, kRate, waveOrder);
    const std::vector<int> filmOrder{L, C, R, Lb, Rb, Lfe};
    const Channels film{channels[0], channels[2], channels[1], channels[4], channels[5], channels[3]};
    writeSound(folder / "film.aiff", film, SF_FORMAT_AIFF | SF_FORMAT_FLOAT, kRate, filmOrder);

    render({"in.wav", "same.wav"});
    const Sound same = readSound(folder / "same.wav");
    EXPECT_EQ(same.format, SF_FORMAT_WAVEX | SF_FORMAT_FLOAT);
    EXPECT_EQ(same.speakers, waveOrder);
    render({"film.aiff", "film2.aiff"});
    EXPECT_EQ(readSound(folder / "film2.aiff").speakers, filmOrder);
    render({"film.aiff", "wave.wav"});
    const Sound wave = readSound(folder / "wave.wav");
    EXPECT_EQ(wave.speakers, waveOrder);
    render({"in.wav", "vorbis.ogg"});
    const Sound vorbis = readSound(folder / "vorbis.ogg");
    const std::size_t vorbisFrom[] = {0, 2, 1, 4, 5, 3};
    for (std::size_t c = 0; c < 6; ++c) {
        EXPECT_LT(nullDb(same.channels[c], channels[c]), -100) << c;
        EXPECT_LT(nullDb(wave.channels[c], channels[c]), -100) << c;
        EXPECT_LT(nullDb(readSound(folder / "film2.aiff").channels[c], film[c]), -100) << c;
        EXPECT_NEAR(rms(vorbis.channels[c]) / rms(channels[vorbisFrom[c]]), 1.0, 0.25) << c;
    }
}

TEST_F(CommandRender, EveryLayoutPassesThroughUnchanged) {
    const char* const layouts[] = {"mono", "stereo",   "LCR", "quad",     "LCRS", "5.0",   "5.1",  "6.0",
                                   "6.1",  "7.0-SDDS", "7.0", "7.1-SDDS", "7.1",  "7.0.2", "7.1.2"};
    const std::size_t counts[] = {1, 2, 3, 4, 4, 5, 6, 6, 7, 7, 7, 8, 8, 9, 10};
    for (std::size_t i = 0; i < std::size(layouts); ++i) {
        Channels channels;
        for (std::size_t c = 0; c < counts[i]; ++c) {
            channels.push_back(sine(150.0 + 70.0 * static_cast<double>(c), kRate, 6000, 0.2));
        }
        writeSound(folder / "in.wav", channels, kWav | SF_FORMAT_FLOAT, kRate);
        const ProgramRun run = render({"in.wav", "out.wav", "--force", "--layout", layouts[i]});
        EXPECT_EQ(run.err, "") << layouts[i];
        const Sound out = readSound(folder / "out.wav");
        ASSERT_EQ(out.channels.size(), channels.size());
        for (std::size_t c = 0; c < channels.size(); ++c) {
            EXPECT_LT(nullDb(out.channels[c], channels[c]), -100) << layouts[i] << " " << c;
        }
    }
}

TEST_F(CommandRender, SeveralInputsGoIntoAFolder) {
    const Signal tone = sine(440, kRate, 4800, 0.5);
    writeSound(folder / "a.wav", {tone}, kWav | SF_FORMAT_PCM_16, kRate);
    writeSound(folder / "b.flac", {tone}, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, kRate);
    std::filesystem::create_directory(folder / "done");
    EXPECT_EQ(std::ranges::count(render({"a.wav", "b.flac", "--out-dir", "done"}).out, '>'), 2);
    EXPECT_EQ(readSound(folder / "done/b.flac").format, SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    render({"a.wav", "b.flac", "done", "--format", "aiff"});
    EXPECT_EQ(readSound(folder / "done/a.aiff").format, SF_FORMAT_AIFF | SF_FORMAT_PCM_16);
    EXPECT_EQ(readSound(folder / "done/b.aiff").format, SF_FORMAT_AIFF | SF_FORMAT_PCM_16);
}

TEST_F(CommandRender, SamplesThatAreNoNumbersAreReported) {
    Signal dirty = sine(440, kRate, 4800, 0.5);
    dirty[100] = std::numeric_limits<float>::quiet_NaN();
    dirty[200] = std::numeric_limits<float>::infinity();
    writeSound(folder / "in.wav", {dirty}, kWav | SF_FORMAT_FLOAT, kRate);
    const ProgramRun run = render({"in.wav", "out.wav"});
    EXPECT_THAT(run.err, HasSubstr("in.wav: 2 samples are not finite"));
    const Sound out = readSound(folder / "out.wav");
    for (const float sample : out.channels[0]) ASSERT_TRUE(std::isfinite(sample));
}

TEST_F(CommandRender, TheSameCommandGivesTheSameFile) {
    const Signal noise = pinkNoise(3, 20000, 0.3);
    writeSound(folder / "in.wav", {noise, noise}, kWav | SF_FORMAT_PCM_24, kRate);
    const std::vector<std::string> how{"--gain", "10", "--dither", "16", "--subtype", "pcm_16"};
    for (const char* name : {"a.wav", "b.wav"}) {
        std::vector<std::string> arguments{"in.wav", name};
        arguments.insert(arguments.end(), how.begin(), how.end());
        render(arguments);
    }
    EXPECT_EQ(readBytes(folder / "a.wav"), readBytes(folder / "b.wav"));
}

TEST_F(CommandRender, ListsShowWhatThereIs) {
    const auto listed = [&](const std::string& command) { return runProgram(folder.path, {command}).out; };
    EXPECT_EQ(std::ranges::count(listed("styles"), '\n'), 8);
    const std::string params = listed("params");
    for (const char* text :
         {"Gain", "0.00 dB to +30.00 dB", "Loudness Integrated Peak Time Scale", "250.0 ms"}) {
        EXPECT_THAT(params, HasSubstr(text));
    }
    EXPECT_THAT(listed("formats"), HasSubstr("rf64"));
    EXPECT_THAT(listed("layouts"), HasSubstr("7.1.2"));
    const std::string help = runProgram(folder.path, {"render", "--help"}).out;
    for (const char* option :
         {"--style",      "--gain",         "--output-level", "--lookahead",  "--attack",
          "--release",    "--oversampling", "--true-peak",    "--dither",     "--noise-shaping",
          "--unity-gain", "--audition",     "--dc-filter",    "--side-chain", "--set",
          "--preset",     "--layout",       "--format",       "--subtype",    "--block",
          "--tail",       "--force",        "--quiet",        "--seed",       "--out-dir"}) {
        EXPECT_THAT(help, HasSubstr(option));
    }
    EXPECT_THAT(runProgram(folder.path, {"--version"}).out, HasSubstr("vanta "));
}

}  // namespace
}  // namespace vanta::test
