#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "tests/app/program.hpp"
#include "tests/app/sound_files.hpp"

namespace vanta::test {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;

constexpr int kRate = 48000;
constexpr int kFormat = SF_FORMAT_WAV | SF_FORMAT_PCM_16;

class RenderReport : public testing::Test {
protected:
    void SetUp() override {
        writeSound(folder / "in.wav", {pinkNoise(1, 5 * kRate, 0.05), pinkNoise(2, 5 * kRate, 0.05)}, kFormat,
                   kRate);
        writeSound(folder / "soft.wav", {pinkNoise(3, 5 * kRate, 0.02), pinkNoise(4, 5 * kRate, 0.02)},
                   kFormat, kRate);
    }

    ProgramRun run(std::vector<std::string> arguments) const { return runProgram(folder.path, arguments); }
    Json measured(const std::string& name) const {
        return Json::parse(run({"measure", name, "--json", "--quiet"}).out).at(0);
    }
    double lufs(const std::string& name) const { return measured(name).at("integrated_lufs").get<double>(); }
    double truePeakDb(const std::string& name) const {
        double highest = 0.0;
        for (const Signal& channel : readSound(folder / name).channels)
            highest = std::max(highest, truePeak(channel));
        return db(highest);
    }
    Json report(const std::string& name) const { return Json::parse(readBytes(folder / name)); }

    TempFolder folder;
};

TEST_F(RenderReport, LoudnessIsHitAndTheTruePeakHoldsInTheWrittenFile) {
    const ProgramRun done = run({"render", "in.wav", "out.wav", "--loudness", "-14", "--max-true-peak", "-1",
                                 "--report", "report.json"});
    ASSERT_EQ(done.code, 0) << done.err;
    EXPECT_THAT(done.out, HasSubstr("\n  before "));
    EXPECT_THAT(done.out, HasSubstr("\n  after "));
    EXPECT_THAT(done.out, HasSubstr("true peak holds -1.00 dBTP by "));
    EXPECT_NEAR(lufs("out.wav"), -14.0, 0.1);
    EXPECT_LE(truePeakDb("out.wav"), -0.999);

    const Json file = report("report.json").at("files").at(0);
    EXPECT_NEAR(file.at("after").at("integrated_lufs").get<double>(), lufs("out.wav"), 0.011);
    EXPECT_NEAR(file.at("before").at("integrated_lufs").get<double>(), lufs("in.wav"), 0.011);
    EXPECT_EQ(file.at("before").at("format"), "wav pcm_16");
    EXPECT_LE(file.at("loudness").at("passes").get<int>(), 12);
    EXPECT_GE(file.at("max_true_peak").at("holds_by_db").get<double>(), 0.0);
    const Json reduction = file.at("gain_reduction");
    EXPECT_GT(reduction.at("mean_db").get<double>(), 0.0);
    EXPECT_GT(reduction.at("highest_db").get<double>(), reduction.at("mean_db").get<double>());
    EXPECT_GT(reduction.at("share_of_time").get<double>(), 0.0);
    EXPECT_LE(reduction.at("share_of_time").get<double>(), 1.0);
}

TEST_F(RenderReport, AFileThatGoesTooFarIsRenderedAgain) {
    // Without true-peak limiting the peaks between samples go beyond the ceiling.
    const Signal tone = sine(kRate / 4.0, kRate, kRate, 0.9, 0.785398);
    writeSound(folder / "tone.wav", {tone}, kFormat, kRate);
    const ProgramRun done = run({"render", "tone.wav", "out.wav", "--true-peak", "off", "--gain", "6",
                                 "--max-true-peak", "-1", "--report", "report.json"});
    ASSERT_EQ(done.code, 0) << done.err;
    EXPECT_THAT(done.out, HasSubstr(" renders with Output Level at "));
    EXPECT_LE(truePeakDb("out.wav"), -0.999);
    EXPECT_GT(report("report.json").at("files").at(0).at("renders").get<int>(), 1);
}

TEST_F(RenderReport, OneGainServesAnAlbum) {
    ASSERT_EQ(run({"render", "in.wav", "soft.wav", "--out-dir", ".", "--format", "aiff", "--loudness", "-20",
                   "--loudness-mode", "album", "--report", "report.json"})
                  .code,
              0);
    const Json all = report("report.json");
    EXPECT_NEAR(all.at("together").at("integrated_lufs").get<double>(), -20.0, 0.1);
    EXPECT_EQ(all.at("files").at(0).at("gain_db"), all.at("files").at(1).at("gain_db"));
    EXPECT_GT(lufs("in.aiff"), lufs("soft.aiff") + 1.0);
}

TEST_F(RenderReport, ALoudnessOutOfReachIsSaidAndNothingWritten) {
    const ProgramRun quieter = run({"render", "in.wav", "out.wav", "--loudness", "-60"});
    EXPECT_EQ(quieter.code, 1);
    EXPECT_THAT(quieter.err, HasSubstr("-60.00 LUFS cannot be reached"));
    const ProgramRun louder =
        run({"render", "in.wav", "out.wav", "--loudness", "-5", "--output-level", "-12"});
    EXPECT_EQ(louder.code, 1);
    EXPECT_THAT(louder.err, HasSubstr("-5.00 LUFS cannot be reached"));
    EXPECT_EQ(run({"render", "in.wav", "out.wav", "--loudness", "-14", "--gain", "3"}).code, 2);
    EXPECT_EQ(run({"render", "in.wav", "out.wav", "--loudness-mode", "album"}).code, 2);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"in.wav", "soft.wav"}));
}

TEST_F(RenderReport, MeasureTellsPeopleMachinesAndScripts) {
    const ProgramRun table = run({"measure", "in.wav", "soft.wav", "--target", "-60"});
    EXPECT_EQ(table.code, 3);
    EXPECT_THAT(table.out, HasSubstr("All 2 together"));
    EXPECT_THAT(table.out, HasSubstr("in.wav: misses -60.00 LUFS by "));
    EXPECT_EQ(run({"measure", "in.wav", "--max-true-peak", "0"}).code, 0);
    EXPECT_EQ(run({"measure", "in.wav", "missing.wav"}).code, 1);

    const Json file = measured("in.wav");
    for (const char* key :
         {"file", "format", "channels", "layout", "sample_rate", "duration_s", "integrated_lufs", "range_lu",
          "range_low_lufs", "range_high_lufs", "max_momentary_lufs", "max_short_term_lufs",
          "sample_peak_dbfs", "true_peak_dbtp", "rms_dbfs", "crest_db"}) {
        EXPECT_TRUE(file.contains(key)) << key;
    }
    EXPECT_NEAR(file.at("true_peak_dbtp").get<double>(), truePeakDb("in.wav"), 0.2);
}

}  // namespace
}  // namespace vanta::test
