#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/cli/program.hpp"
#include "tests/support/sound_files.hpp"

namespace vanta::test {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;
using testing::Not;

constexpr int kRate = 48000;

class CommandMeasure : public testing::Test {
protected:
    CommandMeasure() {
        write("tone.wav", sine(1000.0, kRate, 6 * kRate, 0.1));
        write("loud.wav", sine(1000.0, kRate, 6 * kRate, 0.4));
        write("blip.wav", sine(1000.0, kRate, kRate / 5, 0.1));
    }
    void write(const std::string& name, const Signal& signal) const {
        writeSound(folder / name, {signal}, SF_FORMAT_WAV | SF_FORMAT_FLOAT, kRate);
    }
    ProgramRun measure(const std::string& arguments) const {
        return runProgram(folder.path, words("measure " + arguments));
    }

    TempFolder folder;
};

TEST_F(CommandMeasure, PeopleGetATableWithAllFilesAsOneProgramme) {
    const ProgramRun run = measure("tone.wav loud.wav blip.wav");
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_THAT(run.out, HasSubstr("All 3 as one programme"));
    EXPECT_THAT(run.out, HasSubstr("blip.wav: too short to measure loudness"));
    EXPECT_THAT(measure("tone.wav").out, HasSubstr("Max momentary"));
}

TEST_F(CommandMeasure, TheExitTellsWhatMissesItsRequirements) {
    EXPECT_EQ(measure("tone.wav --target -23 --max-true-peak -19").code, 0);
    EXPECT_EQ(measure("tone.wav --target -14 --tolerance 9.1").code, 0);
    const ProgramRun loud = measure("tone.wav loud.wav --max-true-peak -19");
    EXPECT_EQ(loud.code, 3);
    EXPECT_THAT(loud.out, HasSubstr("loud.wav: true peak 11.04 dB above the limit of -19.00 dBTP"));
    EXPECT_THAT(loud.out, Not(HasSubstr("tone.wav: ")));
    const ProgramRun off = measure("tone.wav --target -14");
    EXPECT_EQ(off.code, 3);
    EXPECT_THAT(off.out, testing::ContainsRegex("tone.wav: -9.0[0-9] LU off the target of -14.00 LUFS"));
    EXPECT_EQ(measure("blip.wav --target -23").code, 3);
}

TEST_F(CommandMeasure, ABrokenFileKeepsNoOtherFromBeingMeasured) {
    writeBytes(folder / "broken.wav", "RIFF\x10");
    const ProgramRun run =
        measure("broken.wav missing.wav tone.wav --json --timeline line.csv --plot plot.png");
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(std::ranges::count(run.err, '\n'), 2) << run.err;
    const Json files = Json::parse(run.out);
    ASSERT_EQ(files.size(), 3u);
    EXPECT_TRUE(files.at(0).contains("error"));
    EXPECT_TRUE(files.at(1).at("integrated_lufs").is_null());
    EXPECT_NEAR(files.at(2).at("integrated_lufs").get<double>(), -23.0, 0.1);
    const std::string timeline = readBytes(folder / "line.csv");
    EXPECT_EQ(std::ranges::count(timeline, '\n'), 61);
    EXPECT_THAT(folder.names(), testing::Contains("plot.png"));
    // Nothing that is measured is written over.
    const std::string tone = readBytes(folder / "tone.wav");
    EXPECT_EQ(measure("tone.wav --timeline tone.wav").code, 1);
    EXPECT_EQ(readBytes(folder / "tone.wav"), tone);
    EXPECT_EQ(measure("tone.wav --timeline same --plot same").code, 2);
}

}  // namespace
}  // namespace vanta::test
