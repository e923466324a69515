#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <thread>

#include "cli/option_declarer.hpp"
#include "cli/texts.hpp"
#include "tests/cli/program.hpp"
#include "tests/support/sound_files.hpp"

namespace vanta::test {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

constexpr int kWav = SF_FORMAT_WAV;
constexpr int kRate = 48000;

class CommandRender : public testing::Test {
protected:
    ProgramRun render(const std::string& arguments) const {
        ProgramRun run = runProgram(folder.path, words("render " + arguments));
        EXPECT_EQ(run.code, 0) << run.err;
        return run;
    }
    void write(const std::string& name, const Channels& channels, int subtype, int type = kWav) const {
        writeSound(folder / name, channels, type | subtype, kRate);
    }
    Sound read(const std::string& name) const { return readSound(folder / name); }

    TempFolder folder;
};

TEST_F(CommandRender, TellsWhatWasDoneAndHowGoalsWereReached) {
    const Signal tone = sine(997, kRate, 48000, 0.5);
    write("in.wav", {tone, tone}, SF_FORMAT_PCM_24);
    const ProgramRun run = render("in.wav out.wav --gain 9 --output-level -1 --true-peak off");
    EXPECT_THAT(run.out, ContainsRegex("^in.wav -> out.wav \\(wav pcm_24, no dither\\): Modern, "
                                       "peak -6.02 dBFS in, -1.0[0-9] dBFS out, gain reduction up to "
                                       "(2.9|3.[0-2]) dB, latency [0-9]+ samples \\([0-9.]+ ms\\), "
                                       "[0-9.]+x real time\n  before +-6.[0-9]+ LUFS, .*\n  after "));
    EXPECT_EQ(run.err, "");
    const Sound out = read("out.wav");
    EXPECT_EQ(out.format, kWav | SF_FORMAT_PCM_24);
    EXPECT_EQ(out.sampleRate, kRate);
    EXPECT_EQ(out.channels[0].size(), tone.size());
    EXPECT_LE(db(peak(out.channels[0])), -1.0);
    EXPECT_EQ(render("in.wav quiet.wav --quiet").out, "");

    EXPECT_EQ(runProgram(folder.path, words("preset save ./six.qmp --gain 6")).code, 0);
    const ProgramRun goals =
        render("in.wav goal.wav --preset six.qmp --loudness -9 --max-true-peak -9 --report goal.json");
    EXPECT_THAT(
        goals.out,
        ContainsRegex(
            "loudness -9.00 LUFS reached with the input turned down by 2.9[0-9] dB in [1-9] pass(es)?; "
            "replaces the 6.00 dB that were set\n"));
    EXPECT_THAT(goals.out,
                ContainsRegex("true peak within -9.00 dBTP with 0.0[0-9]+ dB to spare, Output Level "
                              "lowered from 0.00 to -0.0[0-9]+ dB, after [1-9] pass"));
    EXPECT_THAT(readBytes(folder / "goal.json"), HasSubstr("\"replaced_gain_db\": 6.0"));
}

TEST_F(CommandRender, FoldersAreRenderedSideBySideAndToldInOrder) {
    for (const char* name : {"a", "b", "c", "below/d"}) {
        std::filesystem::create_directories((folder / "in" / name).parent_path());
        // The first takes longest.
        const int length = *name == 'a' ? 200000 : 20000;
        writeSound(folder / "in" / (std::string(name) + ".wav"),
                   {whiteNoise(static_cast<std::uint64_t>(*name), length, 0.3)}, kWav | SF_FORMAT_PCM_24,
                   kRate);
    }
    writeBytes(folder / "in" / "readme.txt", "not audio");
    const std::string options = " --recursive --name {stem}-m --dither 16 --gain 6 --out-dir ";
    const ProgramRun planned = render("in --dry-run" + options + "one");
    EXPECT_THAT(planned.out, HasSubstr("in/below/d.wav -> one/below/d-m.wav (wav pcm_24)\n"));
    EXPECT_FALSE(std::filesystem::exists(folder / "one"));
    render("in --jobs 1" + options + "one");
    const ProgramRun many = render("in --jobs 4" + options + "four/folders");
    std::size_t last = 0;
    for (const char* name : {"a", "b", "below/d", "c"}) {
        const std::size_t at = many.out.find(std::string("in/") + name + ".wav -> ");
        EXPECT_NE(at, std::string::npos) << name;
        EXPECT_GE(at, last) << name;
        last = at;
        EXPECT_EQ(readBytes(folder / "one" / (std::string(name) + "-m.wav")),
                  readBytes(folder / "four/folders" / (std::string(name) + "-m.wav")))
            << name;
    }
}

TEST_F(CommandRender, AnAlbumMayHaveMoreFilesThanAProgramMayOpen) {
    for (int i = 0; i < 60; ++i)
        write(std::to_string(i) + ".wav", {whiteNoise(static_cast<std::uint64_t>(i), kRate, 0.05)},
              SF_FORMAT_PCM_16);
    const ProgramRun run =
        runProgram(folder.path, words("render . --out-dir out --loudness -20 --loudness-mode album --quiet"),
                   "ulimit -n 30; exec");
    EXPECT_EQ(run.code, 0) << run.err;
    using Entries = std::filesystem::directory_iterator;
    EXPECT_EQ(std::distance(Entries(folder / "out"), Entries()), 60);
}

TEST_F(CommandRender, PipesGoInAndOut) {
    write("in.wav", {whiteNoise(1, 20000, 0.3)}, SF_FORMAT_PCM_24);
    render("in.wav plain.wav --gain 6");
    const ProgramRun piped = runProgram(folder.path, words("render - - --gain 6"), "exec <in.wav; exec");
    EXPECT_EQ(piped.code, 0) << piped.err;
    EXPECT_EQ(piped.out, readBytes(folder / "plain.wav"));
    EXPECT_THAT(piped.err, HasSubstr("standard input -> standard output (wav pcm_24"));
    const std::string fifos = "mkfifo from to; cat in.wav >from & cat to >got.wav & ";
    const ProgramRun named = runProgram(folder.path, words("render from to --gain 6 --quiet"), fifos);
    EXPECT_EQ(named.code, 0) << named.err;
    while (std::filesystem::file_size(folder / "got.wav") < piped.out.size()) std::this_thread::yield();
    EXPECT_EQ(readBytes(folder / "got.wav"), piped.out);
    const ProgramRun bad = runProgram(folder.path, words("measure -"), "exec </dev/null; exec");
    EXPECT_EQ(bad.code, 1);
    EXPECT_THAT(bad.err, HasSubstr("vanta: standard input: is empty"));
}

TEST_F(CommandRender, DedicatedOptionsComeBehindThePresetAndNamedOnesLast) {
    const Signal tone = sine(997, kRate, 20000, 0.1);
    write("in.wav", {tone}, SF_FORMAT_FLOAT);
    // Tag, version, count and one value: a preset that holds no more than a gain of 12 dB.
    const auto bytes = [](auto value) {
        return std::string(reinterpret_cast<const char*>(&value), sizeof value);
    };
    writeBytes(folder / "loud.qmp", "Vn2p" + bytes(std::int32_t{2}) + bytes(std::int32_t{1}) + bytes(12.0f));
    const std::pair<const char*, double> cases[] = {
        {"", 12.0},
        {"--gain 6", 6.0},
        {"--set gain=3 --gain 6", 3.0},
        {"--set Gain=3 --set Gain=50%", 15.0},
        {"--unity-gain", 0.0},
        {"--unity-gain --quiet", 0.0},
        {"--unity-gain on", 0.0},
        {"--unity-gain off", 12.0},
    };
    for (const auto& [more, gainDb] : cases) {
        render(std::string("in.wav out.wav --force --preset loud.qmp ") + more);
        EXPECT_NEAR(db(peak(read("out.wav").channels[0]) / peak(tone)), gainDb, 0.01) << more;
    }
}

TEST_F(CommandRender, IntegersAreTheDitheredSamplesOrElseTheNearest) {
    const Signal tone = sine(997, kRate, 30000, 0.25);
    write("in.wav", {tone, tone}, SF_FORMAT_FLOAT);
    render("in.wav float.wav --dither 16 --seed 5");
    const Sound wide = read("float.wav");
    for (const char* name : {"16.wav", "24.flac", "16.aiff", "16-again.wav"}) {
        const int bits = std::stoi(name);
        render(fmt::format("in.wav {} --dither 16 --seed 5 --subtype pcm_{}", name, bits));
        const auto integers = readIntegers(folder / name);
        for (std::size_t i = 0; i < integers.size(); ++i) {
            const double expected = static_cast<double>(wide.channels[i % 2][i / 2]) * 32768.0;
            ASSERT_EQ(expected, std::round(expected)) << "not on the grid";
            ASSERT_EQ(integers[i], static_cast<int>(expected) * 65536) << name << " at " << i;
        }
    }
    EXPECT_EQ(readBytes(folder / "16.wav"), readBytes(folder / "16-again.wav"));
    const ProgramRun coarse = render("in.wav coarse.wav --dither 24 --subtype pcm_16");
    EXPECT_THAT(coarse.err, HasSubstr("dithered to 24 bits, then rounded to the 16 bits of pcm_16"));

    // Dither by itself: the same as the one that is asked for.
    const ProgramRun reduced = render("in.wav reduced.wav --subtype pcm_16 --seed 5");
    EXPECT_THAT(reduced.out, HasSubstr("dithered to 16 bits"));
    EXPECT_THAT(reduced.out, HasSubstr("--dither off leaves it out"));
    EXPECT_EQ(readBytes(folder / "reduced.wav"), readBytes(folder / "16.wav"));
    EXPECT_THAT(render("16.wav copy.flac").out, HasSubstr("no dither")) << "nothing is reduced";

    render("in.wav plain.wav --subtype pcm_16 --dither off");
    const auto integers = readIntegers(folder / "plain.wav");
    for (std::size_t i = 0; i < integers.size(); ++i)
        ASSERT_LE(std::abs(integers[i] / 65536.0 - static_cast<double>(tone[i / 2]) * 32768), 0.51) << i;
}

TEST_F(CommandRender, WhatExceedsFullScaleBecomesFloatUnlessASubtypeWasNamed) {
    write("in.wav", {sine(997, kRate, 20000, 1.9)}, SF_FORMAT_FLOAT);
    write("key.wav", {Signal(20000)}, SF_FORMAT_FLOAT);
    write("half.wav", {sine(997, kRate, 20000, 0.9)}, SF_FORMAT_PCM_16);
    const std::string raised = "half.wav --side-chain key.wav --gain 6 ";
    const ProgramRun wide = render(raised + "out.wav");
    EXPECT_THAT(wide.err, HasSubstr("exceeds full scale and is written as wav float"));
    EXPECT_EQ(read("out.wav").format, kWav | SF_FORMAT_FLOAT);
    EXPECT_NEAR(db(peak(read("out.wav").channels[0])), db(0.9) + 6.0, 0.05);
    EXPECT_THAT(render(raised + "clipped.wav --subtype pcm_16").err, HasSubstr("were clipped"));
    EXPECT_EQ(read("clipped.wav").format, kWav | SF_FORMAT_PCM_16);

    const ProgramRun flac = runProgram(folder.path, words("render " + raised + "out.flac"));
    EXPECT_EQ(flac.code, 1);
    EXPECT_THAT(flac.err, HasSubstr("lower Output Level"));
    EXPECT_FALSE(std::filesystem::exists(folder / "out.flac"));
    // The limiter itself keeps a hot float file within the integers.
    render("in.wav tamed.wav --subtype pcm_16");
    EXPECT_LE(peak(read("tamed.wav").channels[0]), 1.0);
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

    for (const char* files :
         {"in.wav same.wav", "film.aiff film2.aiff", "film.aiff wave.wav", "in.wav vorbis.ogg"})
        render(files);
    const Sound same = read("same.wav");
    EXPECT_EQ(same.format, SF_FORMAT_WAVEX | SF_FORMAT_FLOAT);
    EXPECT_EQ(same.speakers, waveOrder);
    EXPECT_EQ(read("film2.aiff").speakers, filmOrder);
    EXPECT_EQ(read("wave.wav").speakers, waveOrder);
    const Sound vorbis = read("vorbis.ogg");
    for (std::size_t c = 0; c < 6; ++c) {
        EXPECT_LT(nullDb(same.channels[c], channels[c]), -100) << c;
        EXPECT_LT(nullDb(read("wave.wav").channels[c], channels[c]), -100) << c;
        EXPECT_LT(nullDb(read("film2.aiff").channels[c], film[c]), -100) << c;
        EXPECT_NEAR(rms(vorbis.channels[c]) / rms(film[c]), 1.0, 0.25) << c;
    }
}

TEST_F(CommandRender, SeveralInputsGoIntoAFolderWhateverBecomesOfOne) {
    const Signal tone = sine(440, kRate, 4800, 0.5);
    Signal dirty = tone;
    dirty[100] = std::numeric_limits<float>::quiet_NaN();
    dirty[200] = std::numeric_limits<float>::infinity();
    write("a.wav", {tone}, SF_FORMAT_PCM_16);
    write("b.flac", {tone}, SF_FORMAT_PCM_16, SF_FORMAT_FLAC);
    write("dirty.wav", {dirty}, SF_FORMAT_FLOAT);
    writeBytes(folder / "text.wav", "no audio");
    std::filesystem::create_directory(folder / "done");
    EXPECT_EQ(std::ranges::count(render("a.wav b.flac --out-dir done").out, '>'), 2);
    EXPECT_EQ(read("done/b.flac").format, SF_FORMAT_FLAC | SF_FORMAT_PCM_16);

    const ProgramRun run =
        runProgram(folder.path, words("render a.wav text.wav dirty.wav done --format aiff"));
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, HasSubstr("vanta: text.wav: "));
    EXPECT_THAT(run.err, HasSubstr("warning: dirty.wav: 2 samples are not finite numbers"));
    EXPECT_EQ(read("done/a.aiff").format, SF_FORMAT_AIFF | SF_FORMAT_PCM_16);
    EXPECT_FALSE(std::filesystem::exists(folder / "done/text.aiff"));
    const Sound cleaned = read("done/dirty.aiff");
    for (const float sample : cleaned.channels[0]) ASSERT_TRUE(std::isfinite(sample));
}

TEST_F(CommandRender, ListsAndHelpShowWhatThereIs) {
    const auto printed = [&](const std::string& command) {
        return runProgram(folder.path, words(command)).out;
    };
    const std::string params = printed("params");
    EXPECT_GT(printed("params --long").size(), params.size());
    const std::pair<const char*, const char*> lists[] = {{"params", "0 to 30 dB"},
                                                         {"styles", "Safe"},
                                                         {"formats", "rf64"},
                                                         {"layouts", "7.1.2"},
                                                         {"--version", "vanta "}};
    for (const auto& [command, part] : lists) EXPECT_THAT(printed(command), HasSubstr(part));
    // Every option that a text describes is one that the command takes.
    const std::pair<const char*, std::string_view> pages[] = {{"render", text::kRenderOptions},
                                                              {"render", text::kSettingsOptions},
                                                              {"measure", text::kMeasureOptions},
                                                              {"preset save", text::kSettingsOptions},
                                                              {"state save", text::kSettingsOptions}};
    for (const auto& [command, text] : pages) {
        const std::string help = printed(std::string(command) + " --help");
        for (const OptionHelp& row : readOptionHelp(text))
            EXPECT_THAT(help, HasSubstr("  " + row.flag)) << command;
    }
}

}  // namespace
}  // namespace vanta::test
