#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "tests/app/program.hpp"
#include "tests/app/second_meter.hpp"
#include "tests/app/sound_files.hpp"
#include "tools/song/song.hpp"

namespace vanta::test {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;

constexpr int kRate = 48000;
constexpr int kFormat = SF_FORMAT_WAV | SF_FORMAT_PCM_16;

class RenderReport : public testing::Test {
protected:
    void SetUp() override {
        writeSound(folder / "in.wav", {program(1, 0.05), program(2, 0.05)}, kFormat, kRate);
        writeSound(folder / "soft.wav", {program(3, 0.02), program(4, 0.02)}, kFormat, kRate);
    }

    /// Noise without what lies next to half the sample rate, of which each meter has its own opinion.
    static Signal program(std::uint64_t seed, double rmsLevel) {
        Signal signal = pinkNoise(seed, 5 * kRate, rmsLevel);
        for (int pass = 0; pass < 4; ++pass) {
            for (std::size_t i = signal.size() - 1; i > 0; --i)
                signal[i] = 0.5f * (signal[i] + signal[i - 1]);
        }
        return signal;
    }

    ProgramRun run(std::vector<std::string> arguments) const { return runProgram(folder.path, arguments); }
    double lufs(const std::string& name) const { return secondOpinion({folder / name}).integrated; }
    double truePeakDb(const std::string& name) const {
        double highest = 0.0;
        for (const Signal& channel : readSound(folder / name).channels)
            highest = std::max(highest, truePeak(channel));
        return db(highest);
    }
    /// As the command itself judges, for files near half of whose rate there is much.
    double verifiedPeakDb(const std::string& name) const {
        const ProgramRun measured = run({"measure", name, "--json"});
        return Json::parse(measured.out).at(0).at("true_peak_dbtp").get<double>();
    }
    Json report(const std::string& name) const { return Json::parse(readBytes(folder / name)); }

    TempFolder folder;
};

TEST_F(RenderReport, LoudnessIsHitAndTheTruePeakHoldsInTheWrittenFile) {
    const ProgramRun done = run({"render", "in.wav", "out.wav", "--loudness", "-9", "--max-true-peak", "-1",
                                 "--report", "report.json"});
    ASSERT_EQ(done.code, 0) << done.err;
    EXPECT_THAT(done.out, HasSubstr("\n  before "));
    EXPECT_THAT(done.out, HasSubstr("\n  after "));
    EXPECT_THAT(done.out, HasSubstr("true peak holds -1.00 dBTP by "));
    EXPECT_NEAR(lufs("out.wav"), -9.0, 0.1);
    EXPECT_LE(truePeakDb("out.wav"), -0.999);

    const Json file = report("report.json").at("files").at(0);
    EXPECT_NEAR(file.at("after").at("integrated_lufs").get<double>(), lufs("out.wav"), 0.1);
    EXPECT_NEAR(file.at("before").at("integrated_lufs").get<double>(), lufs("in.wav"), 0.1);
    EXPECT_EQ(file.at("before").at("format"), "wav pcm_16");
    EXPECT_EQ(file.at("renders"), file.at("loudness").at("passes"));
    EXPECT_LE(file.at("loudness").at("passes").get<int>(), 5);
    EXPECT_GE(file.at("max_true_peak").at("holds_by_db").get<double>(), 0.0);
    const Json reduction = file.at("gain_reduction");
    EXPECT_GT(reduction.at("mean_db").get<double>(), 0.0);
    EXPECT_GT(reduction.at("highest_db").get<double>(), reduction.at("mean_db").get<double>());
    EXPECT_GT(reduction.at("share_of_time").get<double>(), 0.0);
    EXPECT_LE(reduction.at("share_of_time").get<double>(), 1.0);
}

TEST_F(RenderReport, AFileThatGoesTooFarIsRenderedAgain) {
    // Full-band noise at full drive passes the ceiling between samples even with true-peak limiting.
    writeSound(folder / "noise.wav", {whiteNoise(5, 2 * kRate, 0.5)}, kFormat, kRate);
    const ProgramRun done = run({"render", "noise.wav", "out.wav", "--gain", "18", "--output-level", "-1",
                                 "--max-true-peak", "-1", "--report", "report.json"});
    ASSERT_EQ(done.code, 0) << done.err;
    EXPECT_THAT(done.out, HasSubstr("instead of -1.00 dB, after "));
    EXPECT_LE(verifiedPeakDb("out.wav"), -1.0);
    const Json file = report("report.json").at("files").at(0);
    EXPECT_GT(file.at("renders").get<int>(), 1);
    EXPECT_LE(file.at("renders").get<int>(), 4);
    EXPECT_LT(file.at("output_level_db").get<double>(), -1.05);
    EXPECT_EQ(file.at("max_true_peak").at("output_level_asked_db"), -1.0);
    EXPECT_LT(file.at("max_true_peak").at("holds_by_db").get<double>(), 0.1) << "no lower than it must";
}

TEST_F(RenderReport, WhatHoldsAnywayIsLeftAlone) {
    ASSERT_EQ(run({"render", "in.wav", "out.wav", "--max-true-peak", "-1", "--report", "report.json"}).code,
              0);
    const Json file = report("report.json").at("files").at(0);
    EXPECT_EQ(file.at("renders"), 1);
    EXPECT_EQ(file.at("output_level_db"), 0.0);
    EXPECT_NEAR(lufs("out.wav"), lufs("in.wav"), 0.01);
}

TEST_F(RenderReport, WhatACodecDoesToTheFileIsMadeUpFor) {
    const ProgramRun done =
        run({"render", "in.wav", "out.ogg", "--loudness", "-11", "--max-true-peak", "-1"});
    ASSERT_EQ(done.code, 0) << done.err;
    EXPECT_EQ(done.err, "");
    EXPECT_NEAR(lufs("out.ogg"), -11.0, 0.1);
    EXPECT_LE(truePeakDb("out.ogg"), -0.999);
}

TEST_F(RenderReport, OneGainServesAnAlbum) {
    ASSERT_EQ(run({"render", "in.wav", "soft.wav", "--out-dir", ".", "--format", "aiff", "--loudness", "-20",
                   "--loudness-mode", "album", "--report", "report.json"})
                  .code,
              0);
    const Json all = report("report.json");
    EXPECT_NEAR(all.at("together").at("integrated_lufs").get<double>(), -20.0, 0.1);
    EXPECT_EQ(all.at("files").at(0).at("gain_db"), all.at("files").at(1).at("gain_db"));
    EXPECT_NEAR(secondOpinion({folder / "in.aiff", folder / "soft.aiff"}).integrated, -20.0, 0.1);
    EXPECT_GT(lufs("in.aiff"), lufs("soft.aiff") + 1.0);
}

TEST_F(RenderReport, AnAlbumDoesWithoutWhatCannotBeRead) {
    writeBytes(folder / "broken.wav", "no sound");
    // Opens well and fails while it is read.
    writeSound(folder / "damaged.flac", {program(1, 0.1)}, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, kRate);
    std::string bytes = readBytes(folder / "damaged.flac");
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 2), 20000, '\0');
    writeBytes(folder / "damaged.flac", bytes);
    const ProgramRun done =
        run({"render", "broken.wav", "in.wav", "damaged.flac", "soft.wav", "--out-dir", ".", "--format",
             "aiff", "--loudness", "-18", "--loudness-mode", "album", "--report", "report.json"});
    EXPECT_EQ(done.code, 1);
    EXPECT_THAT(done.err, HasSubstr("broken.wav: "));
    EXPECT_THAT(done.err, HasSubstr("damaged.flac: "));
    EXPECT_NEAR(secondOpinion({folder / "in.aiff", folder / "soft.aiff"}).integrated, -18.0, 0.1);
    const Json files = report("report.json").at("files");
    EXPECT_TRUE(files.at(0).contains("error"));
    EXPECT_TRUE(files.at(2).contains("error"));
    EXPECT_EQ(files.at(3).at("loudness").at("files"), 2);
    EXPECT_EQ(std::ranges::count(folder.names(), "damaged.aiff"), 0);
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
    EXPECT_EQ(run({"render", "in.wav", "out.wav", "--loudness", "-14", "--set", "gain=3"}).code, 2);
    EXPECT_EQ(run({"render", "in.wav", "soft.wav", "--out-dir", ".", "--format", "aiff", "--loudness", "-5",
                   "--loudness-mode", "album"})
                  .code,
              1);
    EXPECT_EQ(run({"render", "in.wav", "out.wav", "--loudness-mode", "album"}).code, 2);
    EXPECT_EQ(run({"render", "in.wav", "out.wav", "--loudness", "-14", "--unity-gain"}).code, 2);
    EXPECT_EQ(run({"render", "in.wav", "out.wav", "--max-true-peak", "-1", "--set", "Bypass=on"}).code, 2);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"in.wav", "soft.wav"}));
}

TEST_F(RenderReport, FiguresAreThoseOfTheFileAsItWasRounded) {
    // So soft that eight bits leave nothing of it but the dither of the writer.
    writeSound(folder / "quiet.wav", {sine(997.0, kRate, 5 * kRate, 0.001)}, kFormat, kRate);
    ASSERT_EQ(run({"render", "quiet.wav", "out.wav", "--subtype", "pcm_u8", "--report", "report.json"}).code,
              0);
    const Json file = report("report.json").at("files").at(0);
    EXPECT_TRUE(file.at("after").at("sample_peak_dbfs").is_null());
    EXPECT_TRUE(file.at("after").at("integrated_lufs").is_null());
    EXPECT_NEAR(file.at("before").at("sample_peak_dbfs").get<double>(), -60.0, 0.1);
    EXPECT_EQ(file.at("gain_reduction").at("highest_db"), 0.0);
}

TEST_F(RenderReport, NamesWhatFailedAndDoesTheRest) {
    writeBytes(folder / "broken.wav", "no sound");
    writeSound(folder / "short.wav", {sine(997.0, kRate, kRate / 5, 0.5)}, kFormat, kRate);
    const ProgramRun done = run({"render", "broken.wav", "short.wav", "in.wav", "--out-dir", ".", "--format",
                                 "aiff", "--gain", "3", "--report", "report.json"});
    EXPECT_EQ(done.code, 1);
    EXPECT_THAT(done.err, HasSubstr("broken.wav: "));
    const Json files = report("report.json").at("files");
    ASSERT_EQ(files.size(), 3u);
    EXPECT_THAT(files.at(0).at("error").get<std::string>(), HasSubstr("broken.wav: "));
    EXPECT_FALSE(files.at(0).contains("after"));
    EXPECT_TRUE(files.at(1).at("after").at("integrated_lufs").is_null()) << "0.2 s have no loudness";
    EXPECT_NEAR(files.at(2).at("after").at("integrated_lufs").get<double>(), lufs("in.aiff"), 0.1);
    EXPECT_EQ(run({"render", "in.wav", "out.wav", "--report", "in.wav"}).code, 1);
    EXPECT_EQ(run({"render", "in.wav", "out.wav", "--report", "out.wav"}).code, 2);
}

TEST_F(RenderReport, MusicComesToItsLoudnessUnderTheLimit) {
    const song::Song music = song::renderSong(song::loadDemoScore(), 44100.0, 8.0);
    writeSound(folder / "song.wav", {music.left, music.right}, SF_FORMAT_WAV | SF_FORMAT_PCM_24, 44100);
    ASSERT_EQ(run({"preset", "save", "./mine.vanta", "--gain", "6", "--style", "Transparent"}).code, 0);
    // The cases, from no limiting at all to more than anyone would ask for.
    for (const double wanted : {-18.0, -14.0, -9.5}) {
        const ProgramRun done = run({"render", "song.wav", "out.wav", "--force", "--preset", "mine.vanta",
                                     "--loudness", std::to_string(wanted), "--max-true-peak", "-0.5",
                                     "--subtype", "pcm_16", "--dither", "16", "--report", "report.json"});
        ASSERT_EQ(done.code, 0) << done.err;
        EXPECT_THAT(done.out, HasSubstr("replaces the 6.00 dB"));
        EXPECT_NEAR(lufs("out.wav"), wanted, 0.1);
        const Json file = report("report.json").at("files").at(0);
        EXPECT_EQ(file.at("style"), "Transparent");
        EXPECT_EQ(file.at("loudness").at("replaced_gain_db"), 6.0);
        EXPECT_LE(file.at("renders").get<int>(), 5) << wanted;
    }
    EXPECT_LE(truePeakDb("out.wav"), -0.499) << "of the hardest driven";
}

}  // namespace
}  // namespace vanta::test
