#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <sstream>

#include <fmt/format.h>

#include "limiter/styles/style_names.hpp"
#include "tests/cli/program.hpp"
#include "tests/support/sound_files.hpp"

namespace vanta::test {
namespace {

using testing::HasSubstr;

constexpr int kRate = 48000;
constexpr int kFloat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;

std::string lower(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

class CommandPatch : public testing::Test {
protected:
    CommandPatch() {
        const Signal left = pinkNoise(1, kRate, 0.35), right = pinkNoise(2, kRate, 0.2);
        writeSound(folder / "in.wav", {left, right}, kFloat, kRate);
    }
    ProgramRun patch(const std::string& arguments) const {
        return runProgram(folder.path, words("patch " + arguments));
    }
    Channels patched(const std::string& arguments) const {
        const ProgramRun run = patch(arguments + " out.wav --force --quiet");
        EXPECT_EQ(run.code, 0) << run.err;
        return readSound(folder / "out.wav").channels;
    }
    void writeStyle(const std::string& text) const { writeBytes(folder / "my.style", text); }

    TempFolder folder;
};

TEST_F(CommandPatch, GivesTheSamplesOfAStyleForItsSource) {
    for (const StyleRow& row : kStyleTable) {
        SCOPED_TRACE(row.name);
        const std::string options = " --gain 9 --oversampling 2x --true-peak on --release 80";
        const auto source = fmt::format("{}/{}.style", VANTA_STYLE_SOURCES, lower(std::string(row.name)));
        const Channels out = patched(source + " in.wav" + options);
        const ProgramRun run = runProgram(
            folder.path,
            words(fmt::format("render in.wav style.wav --force --quiet --style {}{}", row.name, options)));
        ASSERT_EQ(run.code, 0) << run.err;
        const Channels style = readSound(folder / "style.wav").channels;
        for (std::size_t i = 0; i < 2; ++i) {
            // The tap of Aggressive is in its source a Convolver without a window.
            EXPECT_LT(nullDb(out[i], style[i]), row.style == LimitingStyle::Aggressive ? -110.0 : -399.0);
        }
    }
}

TEST_F(CommandPatch, LineUpWithTheInputAndHoldTheOutputLevel) {
    const Channels in = readSound(folder / "in.wav").channels;
    writeStyle("Num Active Slots = 1\nAudio Input to Output\n");
    EXPECT_LT(nullDb(patched("my.style in.wav --dc-filter off")[1], in[1]), -90.0)
        << "nothing is amplified, and nothing late";
    // A wild one: two bands, one of them forty times as loud.
    writeStyle(
        "Num Active Saturators = 1\nSaturator 1 Transfer Function = Triode\nSaturator 1 Drive = 30\n"
        "Num Active Crossovers = 1\nCrossover 1 Frequency = 0.5\nNum Active Slots = 4\n"
        "Audio Input to Crs 1 Input\nCrossover 1 Output 1 to Sat 1 Input\nSaturator 1 to Output (0.94)\n"
        "Crossover 1 Output 2 to Output\n");
    for (const Signal& channel : patched("my.style in.wav --output-level -3 --oversampling 2x")) {
        EXPECT_LE(db(peak(channel)), -2.9999);
        EXPECT_GT(db(peak(channel)), -3.2);
    }
}

// The worked example of docs/patches.md: highs give way to the bass drum, and come back.
TEST_F(CommandPatch, PumpsAsItsPageSays) {
    Signal mix = sine(5000.0, kRate, kRate, 0.1);
    const Signal drum = faded(sine(60.0, kRate, 4800, 0.7), 200);
    for (std::size_t i = 0; i < drum.size(); ++i) mix[9600 + i] += drum[i];
    writeSound(folder / "in.wav", {mix, mix}, kFloat, kRate);
    const Channels out = patched(VANTA_PATCH_PAGES "/patches/pump.style in.wav --gain 6 --release 100");
    const auto highs = [&](std::size_t from) {
        return db(amplitudeAt(std::span(out[0]).subspan(from, 2400), 5000.0 / kRate) / 0.1);
    };
    EXPECT_NEAR(highs(4000), 6.0, 0.1);
    EXPECT_LT(highs(10800), 1.0);
    EXPECT_NEAR(highs(40000), 6.0, 0.5);

    // What the page quotes is what the file says.
    const std::string source = readBytes(VANTA_PATCH_PAGES "/patches/pump.style");
    std::istringstream page(readBytes(VANTA_PATCH_PAGES "/patches.md"));
    int quoted = 0;
    for (std::string line; std::getline(page, line);) {
        if (!line.starts_with("    ") || line.find_first_of("$:|/+") != std::string::npos) continue;
        const std::size_t start = line.find_first_not_of(" 0123456789.");
        EXPECT_THAT(source, HasSubstr(line.substr(start)));
        ++quoted;
    }
    EXPECT_GE(quoted, 4);
}

TEST_F(CommandPatch, NamesEveryFaultWithItsLineAndWritesNothing) {
    const auto expect = [&](const std::string& arguments, int code,
                            std::initializer_list<const char*> texts) {
        const auto before = folder.names();
        const ProgramRun run = patch(arguments);
        EXPECT_EQ(run.code, code) << arguments << ": " << run.err;
        for (const char* text : texts) EXPECT_THAT(run.err, HasSubstr(text));
        EXPECT_EQ(std::ranges::count(run.err, '\n'), static_cast<long>(texts.size())) << run.err;
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(folder.names(), before);
    };
    writeStyle(
        "# mine\nNum Active Saturators = 1\nSaturater 1 Drive = 2\n\nNum Active Slots = 1\nSaturator 1 to "
        "Outptu\n");
    expect(
        "my.style in.wav out.wav", 1,
        {"vanta: my.style:3: unknown parameter \"Saturater 1 Drive\": did you mean \"Saturator 1 Drive\"?\n",
         "vanta: my.style:6: unknown target \"Outptu\": did you mean \"Output\"?\n"});
    writeStyle(
        "Num Active Slots = 3\nAudio Input to Sat 1 Input\nAudio Input to Output\n"
        "Main Attack to Main Attack\n");
    expect(
        "my.style in.wav out.wav", 1,
        {"my.style:2: slot 1 goes to \"Sat 1 Input\", which is not active while Num Active Saturators is 0",
         "my.style:4: slot 3 closes a loop"});
    expect("in.wav my.style out.wav", 1, {"in.wav: is not a style source: the source comes first"});
    expect("none.style in.wav out.wav", 1, {"none.style"});
    expect("my.style in.wav", 2, {"patch needs a style source, an input and an output"});
    expect("my.style in.wav out.wav --style Bus", 2, {"unknown option --style"});
    expect("my.style in.wav out.wav --set Style=Bus", 2, {"Style cannot be set: the source takes its place"});
    writeStyle("Num Active Slots = 1\nAudio Input to Output\n");
    expect("my.style in.wav my.style --force", 1, {"my.style: is the same file as my.style"});
}

}  // namespace
}  // namespace vanta::test
