#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sndfile.h>
#include <unistd.h>

#include <algorithm>

#include "tests/app/program.hpp"
#include "tests/app/sound_files.hpp"

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
        writeSound(folder / "in.wav", {tone, tone}, kWav16, 48000);
        writeSound(folder / "other.wav", {tone, tone}, kWav16, 48000);
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
        before = folder.names();
    }

    TempFolder folder;
    std::vector<std::string> before;
};

struct ErrorCase {
    std::vector<std::string> arguments;
    int code;
    std::string text;  ///< a part of what is said
};

TEST_F(CommandErrors, EachIsOneLineAndAnExitCodeAndLeavesNoFile) {
    const std::vector<ErrorCase> cases{
        {{}, 2, "command is needed"},
        {{"rendr"}, 2, "did you mean render"},
        {{"state"}, 2, "see 'vanta state --help'"},
        {{"state", "shwo", "in.wav"}, 2, "did you mean show"},
        {{"state", "save", "--gian", "3"}, 2, "did you mean --gain"},
        {{"render"}, 2, "input and an output"},
        {{"render", "in.wav"}, 2, "input and an output"},
        {{"render", "in.wav", "other.wav", "out.wav"}, 2, "--out-dir"},
        {{"render", "in.wav", "out.wav", "--gian", "3"}, 2, "did you mean --gain"},
        {{"render", "in.wav", "out.wav", "--gain"}, 2, "--gain"},
        {{"render", "in.wav", "out.wav", "--gain", "30.5"}, 2, "0.00 dB to +30.00 dB"},
        {{"render", "in.wav", "out.wav", "--gain", "-.5"}, 2, "out of range"},
        {{"render", "in.wav", "out.wav", "--gain", "nan"}, 2, "'nan'"},
        {{"render", "in.wav", "out.wav", "--output-level", "-31"}, 2, "-30.00"},
        {{"render", "in.wav", "out.wav", "--lookahead", "6"}, 2, "5.00 ms"},
        {{"render", "in.wav", "out.wav", "--style", "Modren"}, 2, "did you mean Modern"},
        {{"render", "in.wav", "out.wav", "--oversampling", "3"}, 2, "Off, 2x, 4x, 8x, 16x, 32x"},
        {{"render", "in.wav", "out.wav", "--dither", "17"}, 2, "16 Bits"},
        {{"render", "in.wav", "out.wav", "--set", "Gain"}, 2, "Name=text"},
        {{"render", "in.wav", "out.wav", "--set", "Gein=1"}, 2, "did you mean Gain"},
        {{"render", "in.wav", "out.wav", "--set", "Bypass=perhaps"}, 2, "Not Bypassed, Bypassed"},
        {{"render", "in.wav", "out.wav", "--set", "Oversampling=3x"}, 2, "2x"},
        {{"render", "in.wav", "out.wav", "--format", "wave"}, 2, "did you mean wav"},
        {{"render", "in.wav", "out.wav", "--subtype", "pcm24"}, 2, "did you mean pcm_24"},
        {{"render", "in.wav", "out.wav", "--layout", "5.3"}, 2, "7.1.2"},
        {{"render", "in.wav", "out.wav", "--block", "0"}, 2, "1 to 8192"},
        {{"render", "in.wav", "out.wav", "--block", "8193"}, 2, "1 to 8192"},
        {{"render", "in.wav", "out.wav", "--tail", "-1"}, 2, "0 to 3600"},
        {{"render", "in.wav", "folder/../in.wav", "--out-dir", "folder"}, 2, "two inputs"},
        {{"render", "gone.wav", "out.wav"}, 1, "no such file"},
        {{"render", "folder", "out.wav"}, 1, "is a directory"},
        {{"render", "empty.wav", "out.wav"}, 1, "is empty"},
        {{"render", "nothing.wav", "out.wav"}, 1, "holds no audio"},
        {{"render", "text.wav", "out.wav"}, 1, "not an audio file"},
        {{"render", "cut.wav", "out.wav"}, 1, "is cut off"},
        {{"render", "/dev/zero", "out.wav"}, 1, "not a regular file"},
        {{"render", "low.wav", "out.wav"}, 1, "8000 to 384000 Hz"},
        {{"render", "high.wav", "out.wav"}, 1, "8000 to 384000 Hz"},
        {{"render", "eleven.wav", "out.wav"}, 1, "11 channels"},
        {{"render", "in.wav", "out.wav", "--layout", "5.1"}, 1, "stereo would fit"},
        {{"render", "in.wav", "out.flac", "--subtype", "float"}, 1, "flac files cannot hold"},
        {{"render", "in.wav", "out.wav", "--side-chain", "slow.wav"}, 1, "44100 Hz"},
        {{"render", "in.wav", "out.wav", "--side-chain", "short.wav"}, 1, "100 frames"},
        {{"render", "in.wav", "out.wav", "--side-chain", "gone.wav"}, 1, "no such file"},
        {{"render", "in.wav", "out.wav", "--preset", "gone.qmp"}, 1, "no such file"},
        {{"render", "in.wav", "out.wav", "--preset", "text.wav"}, 1, "not a preset"},
        {{"render", "in.wav", "in.wav", "--force"}, 1, "same file"},
        {{"render", "in.wav", "link.wav", "--force"}, 1, "same file"},
        {{"render", "in.wav", "hard.wav", "--force"}, 1, "same file"},
        {{"render", "in.wav", "other.wav", "--side-chain", "other.wav", "--force"}, 1, "same file"},
        {{"render", "in.wav", "--out-dir", "."}, 1, "same file"},
        {{"render", "in.wav", "other.wav"}, 1, "--force"},
        {{"render", "in.wav", "dangling.wav", "--force"}, 1, "link"},
        {{"render", "in.wav", "/dev/null", "--force"}, 1, "not a regular file"},
        {{"render", "in.wav", "nowhere/out.wav"}, 1, "folder does not exist"},
        {{"render", "in.wav", "--out-dir", "nowhere"}, 1, "not a folder"},
    };
    const std::string untouched = readBytes(folder / "in.wav");
    for (const ErrorCase& each : cases) {
        const ProgramRun run = runProgram(folder.path, each.arguments);
        const std::string what = testing::PrintToString(each.arguments);
        EXPECT_EQ(run.code, each.code) << what << run.err;
        EXPECT_THAT(run.err, HasSubstr(each.text)) << what;
        EXPECT_TRUE(run.err.starts_with("vanta: ")) << run.err;
        EXPECT_EQ(std::ranges::count(run.err, '\n'), 1) << run.err;
        EXPECT_EQ(run.out, "") << what;
        EXPECT_EQ(folder.names(), before) << what;
    }
    EXPECT_EQ(readBytes(folder / "in.wav"), untouched);
    EXPECT_TRUE(fs::is_empty(folder / "folder"));
}

TEST_F(CommandErrors, AFileThatMayNotBeReadIsNamed) {
    fs::permissions(folder / "other.wav", fs::perms::none);
    // Root reads everything unless it gives up that right.
    const char* const asUser =
        ::geteuid() == 0 ? "exec setpriv --bounding-set=-dac_override,-dac_read_search" : "exec";
    const ProgramRun run = runProgram(folder.path, {"render", "other.wav", "out.wav"}, asUser);
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, HasSubstr("other.wav: cannot be read"));
}

TEST_F(CommandErrors, AFullDiskLeavesNothing) {
    const Signal noise = whiteNoise(5, 200000, 0.5);
    writeSound(folder / "long.wav", {noise, noise}, SF_FORMAT_WAV | SF_FORMAT_PCM_24, 48000);
    before = folder.names();
    for (const char* type : {"wav", "flac", "ogg", "aiff", "caf"}) {
        const ProgramRun run =
            runProgram(folder.path, {"render", "long.wav", std::string("out.") + type}, "ulimit -f 20; exec");
        EXPECT_EQ(run.code, 1) << type;
        EXPECT_THAT(run.err, HasSubstr(std::string("vanta: out.") + type + ": cannot be written")) << type;
        EXPECT_EQ(std::ranges::count(run.err, '\n'), 1) << run.err;
        EXPECT_EQ(folder.names(), before) << type;
    }
}

TEST_F(CommandErrors, AFailedReplacementLeavesTheOldFile) {
    const Signal noise = whiteNoise(5, 200000, 0.5);
    writeSound(folder / "long.wav", {noise, noise}, kWav16, 48000);
    const std::string old = readBytes(folder / "other.wav");
    const ProgramRun run =
        runProgram(folder.path, {"render", "long.wav", "other.wav", "--force"}, "ulimit -f 20; exec");
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(readBytes(folder / "other.wav"), old);
}

TEST_F(CommandErrors, AnInterruptLeavesNothing) {
    const Signal noise = whiteNoise(5, 4'800'000, 0.5);
    writeSound(folder / "long.wav", {noise, noise}, kWav16, 48000);
    before = folder.names();
    for (const int signal : {SIGINT, SIGTERM}) {
        const ProgramRun run =
            interruptProgram(folder.path, {"render", "long.wav", "out.wav", "--oversampling", "8x"}, signal);
        EXPECT_EQ(run.code, 130);
        EXPECT_EQ(run.err, "vanta: interrupted\n");
        EXPECT_EQ(folder.names(), before);
    }
}

TEST_F(CommandErrors, OneBadFileDoesNotKeepTheOthersFromBeingDone) {
    const ProgramRun run =
        runProgram(folder.path, {"render", "in.wav", "text.wav", "other.wav", "--out-dir", "folder"});
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, HasSubstr("text.wav"));
    EXPECT_TRUE(fs::exists(folder / "folder/in.wav"));
    EXPECT_TRUE(fs::exists(folder / "folder/other.wav"));
    EXPECT_FALSE(fs::exists(folder / "folder/text.wav"));
}

}  // namespace
}  // namespace vanta::test
