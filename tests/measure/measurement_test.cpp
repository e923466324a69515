#include "measure/measurement.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

#include "foundation/failure.hpp"
#include "measure/loudness_plot.hpp"
#include "measure/measurement_export.hpp"
#include "measure/requirements.hpp"
#include "tests/support/sound_files.hpp"

namespace vanta::test {
namespace {

using Json = nlohmann::json;

constexpr int kRate = 48000;
constexpr int kFormat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;

/// The cells of a CSV text without quotes, row by row.
std::vector<std::vector<std::string>> rowsOf(const std::string& csv) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(csv);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream cells(line + ",");
        rows.emplace_back();
        for (std::string cell; std::getline(cells, cell, ',');) rows.back().push_back(cell);
    }
    return rows;
}

class Measuring : public testing::Test {
protected:
    Measuring() {
        // A soft half and a loud one, so that the range has something to tell apart.
        Channels noise = {pinkNoise(1, 20 * kRate, 0.1), pinkNoise(2, 20 * kRate, 0.1)};
        for (Signal& signal : noise)
            std::for_each_n(signal.begin(), 10 * kRate, [](float& sample) { sample *= 0.3f; });
        writeSound(folder / "noise.wav", noise, kFormat, kRate);
        writeSound(folder / "tone.wav", {sine(1000.0, kRate, 6 * kRate, 0.1)}, kFormat, kRate);
        writeSound(folder / "soft.wav", {sine(1000.0, kRate, 6 * kRate, 0.02)}, kFormat, kRate);
        writeSound(folder / "blip.wav", {sine(1000.0, kRate, kRate / 5, 0.1)}, kFormat, kRate);
    }
    Measurement measure(const std::string& name) const { return measureFile(folder / name, {}); }

    TempFolder folder;
};

TEST_F(Measuring, FiguresAreThoseOfASecondMeter) {
    const Measurement noise = measure("noise.wav");
    const ProgrammeFigures& figures = noise.figures;
    const SecondOpinion other = secondOpinion({folder / "noise.wav"});
    EXPECT_NEAR(*figures.integrated, other.integrated, 0.1);
    EXPECT_NEAR(*figures.range, other.range, 1.0);
    EXPECT_NEAR(*figures.rangeHigh - *figures.rangeLow, *figures.range, 0.11);
    EXPECT_NEAR(figures.highestMomentary->level, other.momentary, 0.1);
    EXPECT_NEAR(figures.highestShortTerm->level, other.shortTerm, 0.1);
    EXPECT_NEAR(figures.total.truePeak->level, other.truePeak, 0.2);

    const Measurement tone = measure("tone.wav");
    // A mono tone of 1 kHz reads 3 dB less than its peak level in stereo.
    EXPECT_NEAR(*tone.figures.integrated, -23.0, 0.1);
    EXPECT_NEAR(*tone.figures.total.rms, -23.0, 0.02);
    EXPECT_NEAR(*tone.figures.total.crest, 3.0, 0.02);

    Programme together = noise.programme;
    together.merge(tone.programme);
    const SecondOpinion both = secondOpinion({folder / "noise.wav", folder / "tone.wav"});
    EXPECT_NEAR(*together.figures().integrated, both.integrated, 0.1);
    EXPECT_EQ(together.figures().seconds, 26.0);
    Programme apart = tone.programme;
    apart.merge(measure("soft.wav").programme);
    EXPECT_NEAR(*apart.figures().range, secondOpinion({folder / "tone.wav", folder / "soft.wav"}).range, 0.2);
    Programme twice = tone.programme;
    twice.merge(tone.programme);
    EXPECT_NEAR(*twice.figures().total.rms, *tone.figures.total.rms, 1e-6);
}

TEST_F(Measuring, ProgramsFindEveryKeyAndNothingWhereThereIsNoReading) {
    const std::vector<Measurement> measurements{measure("noise.wav"), measure("blip.wav")};
    const Json files = Json::parse(measurementJson(measurements));
    EXPECT_EQ(files[1]["format"], "wav float");
    EXPECT_EQ(files[1]["layout"], "mono");
    EXPECT_EQ(files[1]["channels"], 1);
    EXPECT_EQ(files[1]["sample_rate"], kRate);
    EXPECT_EQ(files[1]["duration_s"], 0.2);
    EXPECT_EQ(files[0]["per_channel"].size(), 2u);
    const char* const loudness[] = {"integrated_lufs",     "range_lu",           "range_low_lufs",
                                    "range_high_lufs",     "max_momentary_lufs", "max_momentary_at_s",
                                    "max_short_term_lufs", "max_short_term_at_s"};
    const char* const levels[] = {"sample_peak_dbfs", "true_peak_dbtp", "rms_dbfs", "crest_db"};
    for (const char* key : loudness) {
        EXPECT_TRUE(files[0].at(key).is_number()) << key;
        EXPECT_TRUE(files[1].at(key).is_null()) << key << ": 0.2 s are too short";
    }
    for (const char* key : levels) EXPECT_TRUE(files[1].at(key).is_number()) << key;
    EXPECT_NEAR(files[1]["sample_peak_dbfs"].get<double>(), -20.0, 0.01);

    const auto rows = rowsOf(measurementCsv(measurements));
    ASSERT_EQ(rows.size(), 3u);
    const auto column =
        static_cast<std::size_t>(std::ranges::find(rows[0], "integrated_lufs") - rows[0].begin());
    EXPECT_NEAR(std::stod(rows[1].at(column)), files[0]["integrated_lufs"].get<double>(), 0.011);
    EXPECT_EQ(rows[2].at(column), "");
    EXPECT_EQ(rows[0].size(), rows[1].size()) << "no cell of a row is missing";
}

TEST_F(Measuring, TheTimelineHasAPointEvery100MsAndThePlotIsAPicture) {
    const std::vector<Measurement> measurements{measure("tone.wav"), measure("noise.wav")};
    const auto rows = rowsOf(timelineCsv(measurements));
    ASSERT_EQ(rows.size(), 1u + 60u + 200u);
    EXPECT_THAT(rows[0], testing::ElementsAre("file", "time_s", "momentary_lufs", "short_term_lufs",
                                              "sample_peak_dbfs", "true_peak_dbtp"));
    EXPECT_EQ(rows[2][2], "") << "after 0.2 s there is no momentary loudness";
    EXPECT_NEAR(std::stod(rows[2][4]), -20.0, 0.02);
    EXPECT_NEAR(std::stod(rows[50][1]), 5.0, 1e-6);
    for (const std::size_t scale : {2, 3}) EXPECT_NEAR(std::stod(rows[50][scale]), -23.0, 0.1);
    EXPECT_NEAR(std::stod(rows[50][5]), -20.0, 0.02);

    writeLoudnessPlot(folder / "plot.png", measurements, {.targetLufs = -23.0, .maxTruePeakDb = -21.0});
    const std::string picture = readBytes(folder / "plot.png");
    EXPECT_EQ(picture.substr(0, 8), "\x89PNG\r\n\x1a\n");
    EXPECT_GT(picture.size(), 5000u);
    EXPECT_THROW(writeLoudnessPlot(folder / "nowhere/plot.png", measurements, {}), Failure);
}

TEST_F(Measuring, RequirementsAreMissedByMoreThanWhatIsPrinted) {
    const ProgrammeFigures tone = measure("tone.wav").figures;  // -23 LUFS, -20 dBTP
    const ProgrammeFigures blip = measure("blip.wav").figures;
    EXPECT_FALSE((Requirements{-23.0, 0.5, -19.0}.misses(tone)));
    EXPECT_FALSE((Requirements{-23.4, 0.5, -20.0}.misses(tone)));
    EXPECT_TRUE((Requirements{-14.0, 0.5, {}}.missesTarget(tone)));
    EXPECT_TRUE((Requirements{{}, 0.5, -21.0}.missesTruePeak(tone)));
    EXPECT_TRUE((Requirements{-23.0, 0.5, {}}.missesTarget(blip))) << "what has no loudness misses any";
}

TEST_F(Measuring, AMeasurementCanBeStopped) {
    std::int64_t last = 0;
    const WorkWatcher stopEarly = [&](const Work& work) -> Progress {
        EXPECT_EQ(work.title, "measuring noise.wav");
        EXPECT_EQ(work.frames, 20 * kRate);
        return [&](std::int64_t done) { return (last = done) < kRate; };
    };
    EXPECT_THROW(measureFile(folder / "noise.wav", {}, stopEarly), Stopped);
    EXPECT_LT(last, 2 * kRate);
}

}  // namespace
}  // namespace vanta::test
