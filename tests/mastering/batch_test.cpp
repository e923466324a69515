#include "mastering/batch.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "mastering/render_report.hpp"
#include "tests/support/sound_files.hpp"

namespace vanta::test {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;

constexpr int kRate = 48000;
constexpr int kWav16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16;

struct Listener final : BatchListener {
    void failed(const Failure& failure) override { failures.emplace_back(failure.what()); }
    void written(const RenderOutcome&) override { ++files; }
    std::vector<std::string> failures;
    int files = 0;
};

class Mastering : public testing::Test {
protected:
    Mastering() {
        writeSound(folder / "in.wav", {program(1, 0.05), program(2, 0.05)}, kWav16, kRate);
        writeSound(folder / "soft.wav", {program(3, 0.02), program(4, 0.02)}, kWav16, kRate);
    }

    static Signal program(std::uint64_t seed, double rmsLevel) {
        return softened(pinkNoise(seed, 5 * kRate, rmsLevel));
    }

    /// The whole report. Each input is followed by its output.
    Json masterAll(const std::vector<std::string>& names) {
        std::vector<Route> routes;
        for (std::size_t i = 0; i < names.size(); i += 2)
            routes.push_back({folder / names[i], folder / names[i + 1]});
        options.replace = true;
        const MasteringJob job{settings, options, goals};
        listener = {};
        return Json::parse(renderReportJson(job, renderBatch(job, routes, listener)));
    }
    /// The report on a file that has to be written.
    Json master(const std::string& input, const std::string& output) {
        const Json report = masterAll({input, output});
        EXPECT_THAT(listener.failures, testing::IsEmpty());
        EXPECT_EQ(listener.files, 1);
        return report.at("files").at(0);
    }

    double lufs(const std::string& name) const { return secondOpinion({folder / name}).integrated; }
    double truePeakDb(const std::string& name) const {
        double highest = 0.0;
        for (const Signal& channel : readSound(folder / name).channels)
            highest = std::max(highest, truePeak(channel));
        return db(highest);
    }

    TempFolder folder;
    LimiterSettings settings;
    RenderOptions options;
    RenderGoals goals;
    Listener listener;
};

TEST_F(Mastering, LoudnessIsReachedAndTheTruePeakHoldsInTheWrittenFile) {
    goals = {.loudnessLufs = -9.0, .maxTruePeakDb = -1.0};
    const Json file = master("in.wav", "out.wav");
    EXPECT_NEAR(lufs("out.wav"), -9.0, 0.1);
    EXPECT_LE(truePeakDb("out.wav"), -0.999);

    EXPECT_NEAR(file.at("after").at("integrated_lufs").get<double>(), lufs("out.wav"), 0.1);
    EXPECT_NEAR(file.at("before").at("integrated_lufs").get<double>(), lufs("in.wav"), 0.1);
    EXPECT_EQ(file.at("before").at("format"), "wav pcm_16");
    EXPECT_EQ(file.at("renders"), file.at("loudness").at("passes"));
    EXPECT_LE(file.at("loudness").at("passes").get<int>(), 3);
    EXPECT_TRUE(file.at("loudness").at("replaced_gain_db").is_null());
    EXPECT_GE(file.at("max_true_peak").at("holds_by_db").get<double>(), 0.0);
    const Json& reduction = file.at("gain_reduction");
    EXPECT_GT(reduction.at("mean_db").get<double>(), 0.0);
    EXPECT_GT(reduction.at("highest_db").get<double>(), reduction.at("mean_db").get<double>());
    EXPECT_GT(reduction.at("share_of_time").get<double>(), 0.0);
    EXPECT_LE(reduction.at("share_of_time").get<double>(), 1.0);
}

TEST_F(Mastering, AGainThatWasFoundRendersWhatTheSameGainRendersWhenItIsSet) {
    goals.loudnessLufs = -12.0;
    const auto route = Route{folder / "in.wav", folder / "found.wav"};
    const auto found = renderBatch({settings, options, goals}, std::array{route}, listener);
    settings.gain.setValue(found.at(0).file.settings->gain.value(), 0);
    goals = {};
    master("in.wav", "set.wav");
    EXPECT_EQ(readBytes(folder / "set.wav"), readBytes(folder / "found.wav"));
}

TEST_F(Mastering, AFileThatExceedsTheTruePeakIsRenderedAgainNoLowerThanItMust) {
    // Full-band noise at full drive passes the ceiling between samples even with true-peak limiting.
    writeSound(folder / "noise.wav", {whiteNoise(5, 2 * kRate, 0.5)}, kWav16, kRate);
    settings.gain.setValue(18.0f, 0);
    settings.outputLevel.setValue(-1.0f, 0);
    goals.maxTruePeakDb = -1.0;
    const Json file = master("noise.wav", "out.wav");
    EXPECT_LE(measureFile(folder / "out.wav", {}).figures.total.truePeak->level, -1.0);
    EXPECT_GT(file.at("renders").get<int>(), 1);
    EXPECT_LE(file.at("renders").get<int>(), 4);
    EXPECT_LT(file.at("output_level_db").get<double>(), -1.05);
    EXPECT_EQ(file.at("max_true_peak").at("output_level_asked_db"), -1.0);
    EXPECT_LT(file.at("max_true_peak").at("holds_by_db").get<double>(), 0.1);

    // What holds anyway is left alone.
    settings.gain.setValue(0.0f, 0);
    settings.outputLevel.setValue(0.0f, 0);
    const Json quiet = master("in.wav", "out.wav");
    EXPECT_EQ(quiet.at("renders"), 1);
    EXPECT_EQ(quiet.at("output_level_db"), 0.0);
    EXPECT_NEAR(lufs("out.wav"), lufs("in.wav"), 0.01);
}

TEST_F(Mastering, WhatACodecDoesToTheFileIsMadeUpFor) {
    goals = {.loudnessLufs = -11.0, .maxTruePeakDb = -1.0};
    EXPECT_EQ(master("in.wav", "out.ogg").at("warnings"), Json::array());
    EXPECT_NEAR(lufs("out.ogg"), -11.0, 0.1);
    EXPECT_LE(truePeakDb("out.ogg"), -0.999);
}

TEST_F(Mastering, OneGainServesAnAlbumWithoutWhatCannotBeRead) {
    writeBytes(folder / "broken.wav", "no sound");
    // Opens well and fails while it is read.
    writeSound(folder / "damaged.flac", {program(1, 0.1)}, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, kRate);
    std::string bytes = readBytes(folder / "damaged.flac");
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 2), 20000, '\0');
    writeBytes(folder / "damaged.flac", bytes);
    goals.loudnessLufs = -20.0;
    goals.album = true;
    const Json all = masterAll(
        {"broken.wav", "a.aiff", "in.wav", "in.aiff", "damaged.flac", "b.aiff", "soft.wav", "soft.aiff"});
    EXPECT_THAT(listener.failures,
                testing::ElementsAre(HasSubstr("broken.wav: "), HasSubstr("damaged.flac: ")));
    EXPECT_EQ(listener.files, 2);
    const Json& files = all.at("files");
    EXPECT_EQ(files.at(0).at("error"), listener.failures[0]);
    EXPECT_FALSE(files.at(0).contains("after"));
    EXPECT_TRUE(files.at(2).contains("error"));
    EXPECT_EQ(files.at(1).at("gain_db"), files.at(3).at("gain_db"));
    EXPECT_EQ(files.at(3).at("loudness").at("files"), 2);
    EXPECT_NEAR(all.at("together").at("integrated_lufs").get<double>(), -20.0, 0.1);
    EXPECT_NEAR(secondOpinion({folder / "in.aiff", folder / "soft.aiff"}).integrated, -20.0, 0.1);
    EXPECT_GT(lufs("in.aiff"), lufs("soft.aiff") + 1.0);
    EXPECT_THAT(folder.names(), testing::Not(testing::Contains("b.aiff")));
}

TEST_F(Mastering, AGoalOutOfReachIsSaidWithWhatCouldBeHadAndNothingWritten) {
    const auto before = folder.names();
    const auto refused = [&](double target, bool album = false) {
        goals.loudnessLufs = target;
        goals.album = album;
        masterAll({"in.wav", "out.wav", "soft.wav", "out2.wav"});
        EXPECT_EQ(listener.files, 0);
        EXPECT_EQ(folder.names(), before);
        return listener.failures;
    };
    settings.outputLevel.setValue(-12.0f, 0);
    const auto failures = refused(-5.0);
    EXPECT_EQ(failures.size(), 2u) << "each by itself";
    EXPECT_THAT(failures.front(),
                testing::ContainsRegex("-5.00 LUFS cannot be reached: the nearest is -1.\\...? "
                                       "LUFS, at Gain ..\\... dB with Output Level -12.00 dB"));
    EXPECT_THAT(refused(-5.0, true), testing::ElementsAre(HasSubstr("the 2 inputs together: -5.00 LUFS")));
}

TEST_F(Mastering, MaterialAboveTheTargetIsTurnedDownInFrontOfTheLimiter) {
    goals = {.loudnessLufs = -45.0, .maxTruePeakDb = -1.0};
    const Json file = master("in.wav", "out.wav");
    EXPECT_NEAR(lufs("out.wav"), -45.0, 0.1);
    EXPECT_NEAR(file.at("input_trim_db").get<double>(), -45.0 - lufs("in.wav"), 0.1);
    EXPECT_EQ(file.at("gain_db"), 0.0);
    EXPECT_EQ(file.at("gain_reduction").at("highest_db"), 0.0);
    EXPECT_EQ(file.at("renders"), 1);
}

TEST_F(Mastering, FiguresAreThoseOfTheFileAsItWasWritten) {
    // So soft that eight bits leave nothing of it but the dither of the writer.
    writeSound(folder / "quiet.wav", {sine(997.0, kRate, 5 * kRate, 0.001)}, kWav16, kRate);
    options.format.subtype = findFileSubtype("pcm_u8");
    const Json file = master("quiet.wav", "out.wav");
    EXPECT_TRUE(file.at("after").at("sample_peak_dbfs").is_null());
    EXPECT_TRUE(file.at("after").at("integrated_lufs").is_null());
    EXPECT_NEAR(file.at("before").at("sample_peak_dbfs").get<double>(), -60.0, 0.1);
    EXPECT_EQ(file.at("gain_reduction").at("highest_db"), 0.0);
}

TEST_F(Mastering, WorkThatIsStoppedLeavesNothingHalfDone) {
    const auto before = folder.names();
    std::vector<std::string> titles;
    options.watcher = [&](const Work& work) -> Progress {
        titles.push_back(work.title);
        EXPECT_EQ(work.frames, 5 * kRate);
        return [rendering = titles.size() > 1](std::int64_t done) { return !rendering || done < kRate; };
    };
    EXPECT_THROW(masterAll({"in.wav", "out.wav"}), Stopped);
    EXPECT_THAT(titles, testing::ElementsAre("measuring in.wav", "rendering out.wav"));
    EXPECT_EQ(folder.names(), before);
}

}  // namespace
}  // namespace vanta::test
