#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/app/program.hpp"
#include "tests/app/second_meter.hpp"
#include "tests/app/sound_files.hpp"

namespace vanta::test {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;
using testing::Not;

constexpr int kRate = 48000;
constexpr int kFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> all;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) all.push_back(line);
    return all;
}

std::vector<std::string> cells(const std::string& line) {
    std::vector<std::string> all;
    std::istringstream stream(line);
    for (std::string cell; std::getline(stream, cell, ',');) all.push_back(cell);
    return all;
}

class CommandMeasure : public testing::Test {
protected:
    void SetUp() override {
        // A soft half and a loud one, so that the range has something to tell apart.
        Channels noise = {pinkNoise(1, 20 * kRate, 0.1), pinkNoise(2, 20 * kRate, 0.1)};
        for (Signal& signal : noise)
            std::for_each_n(signal.begin(), 10 * kRate, [](float& sample) { sample *= 0.3f; });
        writeSound(folder / "noise.wav", noise, kFormat, kRate);
        writeSound(folder / "tone.wav", {sine(1000.0, kRate, 6 * kRate, 0.1)}, kFormat, kRate);
        writeSound(folder / "blip.wav", {sine(1000.0, kRate, kRate / 5, 0.1)}, kFormat, kRate);
    }

    ProgramRun measure(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "measure");
        return runProgram(folder.path, arguments);
    }
    Json json(std::vector<std::string> arguments) const {
        arguments.emplace_back("--json");
        return Json::parse(measure(arguments).out);
    }

    TempFolder folder;
};

TEST_F(CommandMeasure, FiguresAreThoseOfASecondMeter) {
    const Json file = json({"noise.wav"}).at(0);
    const auto figure = [&](const char* key) { return file.at(key).get<double>(); };
    const SecondOpinion other = secondOpinion({folder / "noise.wav"});
    EXPECT_NEAR(figure("integrated_lufs"), other.integrated, 0.1);
    EXPECT_NEAR(figure("range_lu"), other.range, 1.0);
    EXPECT_NEAR(figure("range_high_lufs") - figure("range_low_lufs"), figure("range_lu"), 0.11);
    EXPECT_NEAR(figure("max_momentary_lufs"), other.momentary, 0.1);
    EXPECT_NEAR(figure("max_short_term_lufs"), other.shortTerm, 0.1);
    EXPECT_NEAR(figure("true_peak_dbtp"), other.truePeak, 0.2);

    const Json tone = json({"tone.wav"}).at(0);
    // A mono tone of 1 kHz reads 3 dB less than its peak level in stereo.
    EXPECT_NEAR(tone.at("integrated_lufs").get<double>(), -23.0, 0.1);
    EXPECT_NEAR(tone.at("rms_dbfs").get<double>(), -23.0, 0.02);
    EXPECT_NEAR(tone.at("crest_db").get<double>(), 3.0, 0.02);
    EXPECT_EQ(tone.at("duration_s"), 6.0);
    EXPECT_EQ(tone.at("channels"), 1);
    EXPECT_EQ(tone.at("sample_rate"), kRate);
    EXPECT_EQ(tone.at("format"), "wav float");
}

TEST_F(CommandMeasure, MachinesFindEveryKeyAndNullWhereThereIsNoReading) {
    const Json files = json({"noise.wav", "blip.wav"});
    constexpr std::array kFigures = {
        "integrated_lufs",     "range_lu",         "range_low_lufs", "range_high_lufs", "max_momentary_lufs",
        "max_short_term_lufs", "sample_peak_dbfs", "true_peak_dbtp", "rms_dbfs",        "crest_db"};
    for (const Json& file : files) {
        for (const char* key : {"file", "format", "channels", "layout", "sample_rate", "duration_s"})
            EXPECT_TRUE(file.contains(key)) << key;
        for (const char* key : kFigures) EXPECT_TRUE(file.contains(key)) << key;
    }
    for (const char* key : kFigures) EXPECT_TRUE(files.at(0).at(key).is_number()) << key;
    for (const char* key : {"integrated_lufs", "range_lu", "max_momentary_lufs", "max_short_term_lufs"})
        EXPECT_TRUE(files.at(1).at(key).is_null()) << key << ": 0.2 s are too short";
    EXPECT_NEAR(files.at(1).at("sample_peak_dbfs").get<double>(), -20.0, 0.01);

    const auto table = lines(measure({"noise.wav", "blip.wav", "--csv"}).out);
    ASSERT_EQ(table.size(), 3u);
    const auto header = cells(table[0]);
    const auto column = std::ranges::find(header, "integrated_lufs") - header.begin();
    EXPECT_NEAR(std::stod(cells(table[1])[static_cast<std::size_t>(column)]),
                files.at(0).at("integrated_lufs").get<double>(), 0.011);
    EXPECT_EQ(cells(table[2])[static_cast<std::size_t>(column)], "");
    EXPECT_EQ(header.size(), cells(table[1] + "end").size()) << "no cell of a row is missing";
}

TEST_F(CommandMeasure, PeopleGetATableWithAllFilesTogether) {
    const ProgramRun run = measure({"noise.wav", "tone.wav", "blip.wav"});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_THAT(run.out, HasSubstr("All 3 together"));
    EXPECT_THAT(run.out, HasSubstr("too short"));
    const double together = secondOpinion({folder / "noise.wav", folder / "tone.wav"}).integrated;
    const std::string all = run.out.substr(run.out.find("All 3 together"));
    EXPECT_NEAR(std::stod(all.substr(14)), together, 0.1);
    EXPECT_THAT(measure({"tone.wav"}).out, HasSubstr("Highest momentary"));
}

TEST_F(CommandMeasure, TheTimelineHasAPointEvery100MsAndThePlotIsAPicture) {
    ASSERT_EQ(measure({"tone.wav", "noise.wav", "--timeline", "line.csv", "--plot", "plot.png", "--target",
                       "-23", "--tolerance", "20"})
                  .code,
              0);
    const auto rows = lines(readBytes(folder / "line.csv"));
    ASSERT_EQ(rows.size(), 1u + 60u + 200u);
    EXPECT_EQ(rows[0], "file,time_s,momentary_lufs,short_term_lufs,sample_peak_dbfs,true_peak_dbtp");
    const auto early = cells(rows[2]);
    EXPECT_EQ(early[2], "") << "after 0.2 s there is no momentary loudness";
    EXPECT_NEAR(std::stod(early[4]), -20.0, 0.02);
    const auto late = cells(rows[50]);
    EXPECT_NEAR(std::stod(late[1]), 5.0, 1e-6);
    EXPECT_NEAR(std::stod(late[2]), -23.0, 0.1);
    EXPECT_NEAR(std::stod(late[3]), -23.0, 0.1);
    EXPECT_NEAR(std::stod(late[5]), -20.0, 0.02);
    const std::string picture = readBytes(folder / "plot.png");
    EXPECT_EQ(picture.substr(0, 8), "\x89PNG\r\n\x1a\n");
    EXPECT_GT(picture.size(), 5000u);
    // Width and height are big-endian, behind the header chunk's length and name.
    const auto size = [&](std::size_t at) {
        return 256 * static_cast<unsigned char>(picture.at(at + 2)) +
               static_cast<unsigned char>(picture.at(at + 3));
    };
    EXPECT_GE(size(16), 800);
    EXPECT_GE(size(20), 400);
    EXPECT_LE(size(16), 4000);
    EXPECT_LE(size(20), 4000);
}

TEST_F(CommandMeasure, TheExitTellsWhatMissesItsRequirements) {
    EXPECT_EQ(measure({"tone.wav", "--target", "-23", "--max-true-peak", "-19"}).code, 0);
    const ProgramRun loud = measure({"tone.wav", "noise.wav", "--max-true-peak", "-19"});
    EXPECT_EQ(loud.code, 3);
    EXPECT_THAT(loud.out, HasSubstr("noise.wav: "));
    EXPECT_THAT(loud.out, Not(HasSubstr("tone.wav: ")));
    EXPECT_EQ(measure({"tone.wav", "--target", "-14"}).code, 3);
    EXPECT_EQ(measure({"blip.wav", "--target", "-23"}).code, 3) << "what has no loudness misses it";
    EXPECT_EQ(measure({}).code, 2);
    EXPECT_EQ(measure({"tone.wav", "--json", "--csv"}).code, 2);
}

TEST_F(CommandMeasure, ABrokenFileKeepsNoOtherFromBeingMeasured) {
    writeBytes(folder / "broken.wav", "RIFF\x10");
    const ProgramRun run = measure({"broken.wav", "missing.wav", "tone.wav", "--json"});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(lines(run.err).size(), 2u) << run.err;
    const Json files = Json::parse(run.out);
    ASSERT_EQ(files.size(), 3u);
    EXPECT_TRUE(files.at(0).contains("error"));
    EXPECT_TRUE(files.at(1).at("integrated_lufs").is_null());
    EXPECT_NEAR(files.at(2).at("integrated_lufs").get<double>(), -23.0, 0.1);
    // Nothing that is measured is written over.
    EXPECT_EQ(measure({"tone.wav", "--timeline", "tone.wav"}).code, 1);
    EXPECT_EQ(json({"tone.wav"}).at(0).at("duration_s"), 6.0);
}

}  // namespace
}  // namespace vanta::test
