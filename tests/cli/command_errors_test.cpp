#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>
#include <unistd.h>
#include <csignal>

#include <algorithm>
#include <sstream>

#include "tests/cli/program.hpp"
#include "tests/support/sound_files.hpp"

namespace vanta::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

constexpr int kWav16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16;

/// A folder with the files that the cases name.
class CommandErrors : public testing::Test {
protected:
    CommandErrors() {
        const Signal tone = sine(440, 48000, 4800, 0.5);
        for (const char* name : {"in.wav", "other.wav"})
            writeSound(folder / name, {tone, tone}, kWav16, 48000);
        writeSound(folder / "slow.wav", {tone, tone}, kWav16, 44100);
        writeSound(folder / "short.wav", {Signal(100), Signal(100)}, kWav16, 48000);
        writeSound(folder / "low.wav", {tone}, kWav16, 7999);
        writeSound(folder / "high.wav", {tone}, kWav16, 384001);
        writeSound(folder / "eleven.wav", Channels(11, tone), kWav16, 48000);
        writeSound(folder / "nothing.wav", {Signal()}, kWav16, 48000);
        writeBytes(folder / "empty.wav", "");
        writeBytes(folder / "text.wav", "this is no audio, and never was");
        writeBytes(folder / "cut.wav", readBytes(folder / "in.wav").substr(0, 5000));
        fs::create_symlink(folder / "in.wav", folder / "link.wav");
        fs::create_symlink(folder / "gone.wav", folder / "dangling.wav");
        fs::create_hard_link(folder / "in.wav", folder / "hard.wav");
        fs::create_directory(folder / "folder");
    }

    /// One line on stderr, nothing on stdout, no file more or less.
    void expectError(const std::string& command, int code, const std::string& text,
                     const std::string& launcher = "exec") const {
        const auto before = folder.names();
        const ProgramRun run = runProgram(folder.path, words(command), launcher);
        EXPECT_EQ(run.code, code) << command << ": " << run.err;
        EXPECT_THAT(run.err, HasSubstr(text)) << command;
        EXPECT_TRUE(run.err.starts_with("vanta: ")) << run.err;
        EXPECT_EQ(std::ranges::count(run.err, '\n'), 1) << run.err;
        EXPECT_EQ(run.out, "") << command;
        EXPECT_EQ(folder.names(), before) << command;
    }

    TempFolder folder;
};

TEST_F(CommandErrors, WrongUsageIsToldInOneLineWithWhatWouldBeRight) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "a command is missing"},
        {"rendr", "did you mean render?"},
        {"state", "see 'vanta state --help'"},
        {"state shwo in.wav", "did you mean show?"},
        {"state save --gian 3",
         "unknown option --gian (did you mean --gain?); see 'vanta state save --help'"},
        {"preset", "see 'vanta preset --help'"},
        {"preset show x y", "unexpected argument 'y'; see 'vanta preset show --help'"},
        {"measure", "measure needs a file"},
        {"measure in.wav --json --csv", "--json and --csv cannot be combined"},
        {"measure in.wav --plot plot.jpg", "use a name that ends in .png, not 'plot.jpg'"},
        {"preset save folder/name", "use a name without '/', or 'folder/name.qmp'"},
        {"preset convert Punchy out", "'out' is no preset file: use a name that ends in .qmp"},
        {"render", "an input and an output"},
        {"render in.wav", "an input and an output"},
        {"render --out-dir folder", "an input and an output"},
        {"render in.wav other.wav out.wav", "--out-dir"},
        {"render in.wav out.wav --name {stem}-x", "--name needs --out-dir"},
        {"render in.wav --out-dir folder --name all", "--name 'all' gives all outputs one name: use {stem}"},
        {"render folder out.wav",
         "folder is a folder, so its files need a folder for their outputs: use --out-dir"},
        {"render in.wav folder/../in.wav --out-dir folder", "two inputs would be written to folder/in.wav"}};
    for (const auto& [command, text] : cases) expectError(command, 2, text);
    const std::pair<const char*, const char*> options[] = {
        {"--gian 3", "did you mean --gain?"},
        {"--gain", "--gain needs a value"},
        {"--gain 3 --gain 4", "--gain is given 2 times: give it once"},
        {"--true-peak maybe", "--true-peak cannot be 'maybe': use on or off"},
        {"--output-level 3", "Output Level cannot be '3': use -30 to 0 dBTP, such as -3"},
        {"--gain 30.5", "Gain cannot be '30.5': use 0 to 30 dB"},
        {"--gain -.5", "Gain cannot be '-.5'"},
        {"--gain nan", "'nan'"},
        {"--output-level -31", "Output Level cannot be '-31': use -30 to 0 dBTP"},
        {"--lookahead 6", "Lookahead cannot be '6': use 0 to 5 ms"},
        {"--style Modren", "unknown style 'Modren' (did you mean Modern?): use Transparent, Punchy"},
        {"--oversampling 3", "unknown oversampling '3': use Off, 2x, 4x, 8x, 16x, 32x"},
        {"--dither 17", "unknown dithering '17': use Off, 16 Bits"},
        {"--set Gain", "'Gain' is not an assignment: use \"Name=text\""},
        {"--set Gein=1", "unknown parameter 'Gein' (did you mean Gain?)"},
        {"--set Bypass=perhaps", "Bypass cannot be 'perhaps': use Not Bypassed or Bypassed"},
        {"--set Oversampling=3x", "2x"},
        {"--format wave", "unknown file type 'wave' (did you mean wav?)"},
        {"--subtype pcm24", "unknown subtype 'pcm24' (did you mean pcm_24?)"},
        {"--layout 5.3", "7.1.2"},
        {"--block 0", "--block cannot be '0': use a number from 1 to 8192"},
        {"--block 8193", "1 to 8192"},
        {"--block 2.5", "--block cannot be '2.5': use a whole number"},
        {"--tail abc", "--tail cannot be 'abc': use a number from 0 to 3600"},
        {"--loudness -14 --loudness-mode foo", "unknown loudness mode 'foo': use track or album"},
        {"--loudness-mode album", "--loudness-mode needs --loudness"},
        {"--loudness -14 --gain 3",
         "--gain and --loudness cannot be combined: --loudness finds the Gain itself"},
        {"--loudness -14 --set gain=3", "--set Gain and --loudness cannot be combined"},
        {"--loudness -14 --unity-gain", "--loudness cannot be reached with Unity Gain on"},
        {"--loudness -14 --audition", "--loudness cannot be reached with Audition Limiting on"},
        {"--max-true-peak -1 --set Bypass=Bypassed", "--max-true-peak cannot be reached with Bypass on"},
        {"--quality 3 --bitrate 128", "--quality and --bitrate cannot be combined: choose one"},
        {"--replaygain both", "unknown ReplayGain mode 'both': use track or album"},
        {"--rate 7999", "--rate cannot be '7999': use a number from 8000 to 384000"},
        {"--report out.wav", "--report and an output are the same file"},
        {"--preset Punchi", "unknown preset 'Punchi' (did you mean Punchy?)"}};
    for (const auto& [option, text] : options)
        expectError(std::string("render in.wav out.wav ") + option, 2, text);
}

TEST_F(CommandErrors, WhatCannotBeDoneIsToldInOneLineAndLosesNothing) {
    const std::string untouched = readBytes(folder / "in.wav");
    // Renders, separated by semicolons, and a part of what is said of each.
    const std::pair<const char*, const char*> cases[] = {
        {"gone.wav out.wav; in.wav out.wav --side-chain gone.wav; in.wav out.wav --preset gone.qmp",
         "no such file"},
        {"empty.wav out.wav", "is empty"},
        {"nothing.wav out.wav", "contains no audio"},
        {"text.wav out.wav", "text.wav: is not a readable audio file"},
        {"cut.wav out.wav", "is cut off"},
        {"/dev/zero out.wav; in.wav /dev/null --force", "not a regular file"},
        {"low.wav out.wav; high.wav out.wav", "rates from 8000 to 384000 Hz"},
        {"eleven.wav out.wav", "eleven.wav: has 11 channels: up to 10 are supported"},
        {"in.wav out.wav --layout 5.1", "in.wav: has 2 channels, but the layout 5.1 has 6: use stereo"},
        {"in.wav out.flac --subtype float", "out.flac: flac files cannot hold"},
        {"in.wav out.wave2; in.wav out.m4a", "is no extension of a file type that can be written: use wav, "},
        {"in.wav out.wav --quality 3", "wav pcm_16 has no --quality to choose"},
        {"in.wav out.flac --quality 9; in.wav out.flac --quality 8.5", "use 0 to 8"},
        {"in.wav out.opus --quality 3", "opus takes no --quality: use --bitrate"},
        {"in.wav out.mp3 --bitrate 200", "use 64, 80, 96, 112, 128, 160, 192, 224, 256, 320"},
        {"in.wav out.wav --side-chain slow.wav",
         "has 44100 Hz, but as the side chain of in.wav it needs 48000 Hz"},
        {"in.wav out.wav --side-chain short.wav", "has 100 frames"},
        {"in.wav out.wav --preset text.wav", "is not a preset of this limiter"},
        {"in.wav in.wav --force; in.wav link.wav --force; in.wav hard.wav --force; in.wav --out-dir .;"
         "in.wav other.wav --side-chain other.wav --force; in.wav out.wav --report in.wav",
         "same file"},
        {"in.wav other.wav", "other.wav: already exists; use --force to replace it"},
        {"in.wav dangling.wav --force", "link"},
        {"in.wav nowhere/out.wav", "folder does not exist"},
        {"in.wav --out-dir other.wav", "other.wav: is not a folder: use another"},
        {"folder --out-dir out", "folder: holds no audio files: use --recursive"}};
    for (const auto& [renders, text] : cases) {
        std::istringstream each(renders);
        for (std::string files; std::getline(each, files, ';');) expectError("render " + files, 1, text);
    }
    EXPECT_EQ(readBytes(folder / "in.wav"), untouched);
    EXPECT_TRUE(fs::is_empty(folder / "folder"));

    fs::permissions(folder / "other.wav", fs::perms::none);
    // Root reads everything unless it gives up that right.
    const char* const asUser =
        ::geteuid() == 0 ? "exec setpriv --bounding-set=-dac_override,-dac_read_search" : "exec";
    expectError("render other.wav out.wav", 1, "other.wav: cannot be read", asUser);
}

TEST_F(CommandErrors, StandardStreamsThatAreFullClosedOrUnheardEndNothing) {
    const std::string full = "exec >/dev/full; exec";
    // A pipe whose reader has gone before the first word.
    const std::string unheard = "mkfifo pipe; : <pipe & exec >pipe; wait; rm pipe; exec";
    const std::string closed = "exec 2>&-; exec";
    const std::string renders = "render in.wav other.wav --out-dir folder --force";
    for (const std::string command :
         {"presets", "params --long", "styles", "preset show Punchy", "measure in.wav"})
        expectError(command, 1, "standard output cannot be written: No space left on device", full);
    for (const std::string command : {"presets", "measure in.wav", renders.c_str()}) {
        const ProgramRun run = runProgram(folder.path, words(command), unheard);
        EXPECT_EQ(run.code, 0) << command;
        EXPECT_EQ(run.err, "") << command;
    }
    for (const auto& [launcher, code] : {std::pair(full, 1), {unheard, 0}, {closed, 0}}) {
        fs::remove_all(folder / "folder");
        fs::create_directory(folder / "folder");
        EXPECT_EQ(runProgram(folder.path, words(renders), launcher).code, code) << launcher;
        for (const char* name : {"folder/in.wav", "folder/other.wav"})
            EXPECT_EQ(readSound(folder / name).channels[0].size(), 4800u) << launcher;
    }
}

TEST_F(CommandErrors, NamesCannotSteerTheTerminal) {
    const std::string name = "a\x1B[31m\nb.wav";
    fs::rename(folder / "short.wav", folder / name);
    const ProgramRun measured = runProgram(folder.path, {"measure", name});
    EXPECT_THAT(measured.out, HasSubstr("a\\x1B[31m\\nb.wav"));
    EXPECT_THAT(runProgram(folder.path, {"render", name + "?", "out.wav"}).err,
                HasSubstr("vanta: a\\x1B[31m\\nb.wav?: no such file\n"));
}

TEST_F(CommandErrors, AFullDiskLeavesWhatWasThere) {
    const Signal noise = whiteNoise(5, 200000, 0.5);
    writeSound(folder / "long.wav", {noise, noise}, SF_FORMAT_WAV | SF_FORMAT_PCM_24, 48000);
    const std::string old = readBytes(folder / "other.wav");
    for (const std::string output : {"out.wav", "out.flac", "out.ogg", "out.aiff", "out.caf", "other.wav"}) {
        expectError("render long.wav " + output + " --force", 1, "vanta: " + output + ": cannot be written",
                    "ulimit -f 20; exec");
    }
    EXPECT_EQ(readBytes(folder / "other.wav"), old);
}

TEST_F(CommandErrors, AnInterruptLeavesNothing) {
    const Signal noise = whiteNoise(5, 4'800'000, 0.5);
    writeSound(folder / "long.wav", {noise, noise}, kWav16, 48000);
    const auto before = folder.names();
    for (const int signal : {SIGINT, SIGTERM}) {
        const ProgramRun run =
            interruptProgram(folder.path, {"render", "long.wav", "out.wav", "--oversampling", "8x"}, signal);
        EXPECT_EQ(run.code, 130);
        EXPECT_EQ(run.err, "vanta: interrupted\n");
        EXPECT_EQ(folder.names(), before);
    }
}

}  // namespace
}  // namespace vanta::test
