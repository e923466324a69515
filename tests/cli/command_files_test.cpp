#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <thread>

#include "tests/cli/program.hpp"
#include "tests/support/sound_files.hpp"

// What becomes of everything in a file that is not audio, and of the kinds of file, as other programs see it:
// ffmpeg and ffprobe, and the tools of FLAC.

namespace vanta::test {
namespace {

using Json = nlohmann::json;
using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

constexpr int kRate = 48000;

std::string outputOf(const std::string& command) {
    std::string text;
    std::array<char, 4096> piece{};
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(::popen((command + " 2>&1").c_str(), "r"),
                                                               ::pclose);
    while (const std::size_t got = std::fread(piece.data(), 1, piece.size(), pipe.get()))
        text.append(piece.data(), got);
    return text;
}

class CommandFiles : public testing::Test {
protected:
    ProgramRun render(const std::string& arguments) const {
        ProgramRun run = runProgram(folder.path, words("render " + arguments));
        EXPECT_EQ(run.code, 0) << arguments << ": " << run.err;
        return run;
    }
    void run(const std::string& command) const {
        const std::string said = outputOf("cd " + folder.path.string() + " && " + command);
        EXPECT_EQ(said, "") << command;
    }
    /// Four seconds of stereo.
    void writeNoise(const std::string& name, int format) const {
        writeSound(folder / name, {pinkNoise(1, 4 * kRate, 0.1), pinkNoise(2, 4 * kRate, 0.1)}, format,
                   kRate);
    }

    struct Probed {
        std::map<std::string, std::string> tags;  ///< under lower-case names
        Json audio;
        int pictures = 0;
        std::size_t chapters = 0;
    };
    Probed probe(const std::string& name) const {
        const std::string text =
            outputOf("ffprobe -v error -show_streams -show_format -show_chapters -of json " +
                     (folder / name).string());
        Probed probed;
        const Json all = Json::parse(text, nullptr, false);
        if (!all.is_object() || !all.contains("streams")) {
            ADD_FAILURE() << name << ": " << text;
            return probed;
        }
        const auto take = [&](const Json& part) {
            if (!part.contains("tags")) return;
            for (const auto& [field, value] : part.at("tags").items()) {
                std::string lower = field;
                for (char& c : lower) c = static_cast<char>(std::tolower(c));
                probed.tags[lower] = value.get<std::string>();
            }
        };
        take(all.at("format"));
        for (const Json& stream : all.at("streams")) {
            if (stream.at("codec_type") == "audio") {
                take(stream);
                probed.audio = stream;
            }
            probed.pictures += stream.at("disposition").at("attached_pic").get<int>();
        }
        probed.chapters = all.at("chapters").size();
        return probed;
    }

    /// A FLAC with what its own tools can put into one.
    void makeTagged(const std::string& name) const {
        writeNoise(name, SF_FORMAT_FLAC | SF_FORMAT_PCM_24);
        run("ffmpeg -v error -f lavfi -i color=red:s=32x32:d=1 -frames:v 1 cover.png");
        run("metaflac --set-tag=TITLE=L\xC3\xA4ufer --set-tag=ARTIST=Ann --set-tag=ARTIST=Bob "
            "--set-tag=ALBUM=Alb "
            "--set-tag=TRACKNUMBER=3 --set-tag=TRACKTOTAL=12 --set-tag=DISCNUMBER=1 --set-tag=DATE=2024 "
            "--set-tag=GENRE=Folk --set-tag=COMPOSER=Cee --set-tag=ISRC=DEAB12400001 --set-tag=X_OWN=mine "
            "--set-tag='REPLAYGAIN_TRACK_GAIN=-3.00 dB' --import-picture-from=cover.png " +
            name);
    }

    TempFolder folder;
};

TEST_F(CommandFiles, TagsAndPicturesSurviveFromEveryKindOfFileToEveryOther) {
    makeTagged("flac.flac");
    const std::vector<std::string> kinds{"flac.flac", "ogg.ogg",  "opus.opus", "mp3.mp3",
                                         "wav.wav",   "rf64.wav", "aiff.aiff"};
    // ffprobe's names where they differ.
    const std::map<std::string, std::vector<std::string>> others{
        {"tracknumber", {"track"}}, {"discnumber", {"disc"}}, {"isrc", {"tsrc"}}, {"composer", {"imus"}}};
    const std::map<std::string, std::string> expected{
        {"title", "L\xC3\xA4ufer"}, {"artist", "Ann"}, {"album", "Alb"},   {"tracknumber", "3"},
        {"date", "2024"},           {"genre", "Folk"}, {"composer", "Cee"}};
    // What one test has found sound is the source of the next.
    for (const std::string& from : kinds) {
        for (const std::string& kind : kinds) {
            const std::string to = from == "flac.flac" && kind != from ? kind : "out-" + kind;
            const ProgramRun run =
                render(from + " " + to + " --force --quiet" + (kind == "rf64.wav" ? " --format rf64" : ""));
            EXPECT_EQ(run.err, "") << "all of it has a place";
            const Probed probed = probe(to);
            for (const auto& [name, value] : expected) {
                std::string found;
                std::vector<std::string> names{name};
                if (others.contains(name))
                    names.insert(names.end(), others.at(name).begin(), others.at(name).end());
                for (const std::string& each : names)
                    if (probed.tags.contains(each)) found = probed.tags.at(each);
                EXPECT_TRUE(found.starts_with(value))
                    << from << " to " << to << ": " << name << " is '" << found << "'";
            }
            EXPECT_EQ(probed.pictures, 1) << from << " to " << to;
            EXPECT_FALSE(probed.tags.contains("replaygain_track_gain")) << "of the old audio";
        }
        // All of it, fields with several values included, when it comes home.
        EXPECT_THAT(
            outputOf("metaflac --export-tags-to=- " + (folder / "out-flac.flac").string()),
            AllOf(HasSubstr("ARTIST=Ann\nARTIST=Bob\n"), HasSubstr("TRACKNUMBER=3\n"),
                  HasSubstr("TRACKTOTAL=12\n"), HasSubstr("ISRC=DEAB12400001\n"), HasSubstr("X_OWN=mine\n")))
            << from;
        run("metaflac --export-picture-to=again.png out-flac.flac");
        EXPECT_EQ(readBytes(folder / "again.png"), readBytes(folder / "cover.png")) << from;
    }
    EXPECT_THAT(render("flac.flac out.caf --quiet").err, HasSubstr("has no place for it: a picture"));
    EXPECT_EQ(probe("out.caf").tags.at("title"), "L\xC3\xA4ufer");
    EXPECT_THAT(render("flac.flac out.au --quiet").err,
                HasSubstr("out.au, which has no place for it: tags, a picture"));
    EXPECT_EQ(outputOf("flac -t -s " + (folder / "out-flac.flac").string()), "");
}

TEST_F(CommandFiles, WhatOnlyOneKindOfTagKnowsStaysInItAndIsNamedElsewhere) {
    writeNoise("in.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24);
    writeBytes(folder / "meta",
               ";FFMETADATA1\ntitle=T\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=900\ntitle=one\n");
    run("ffmpeg -v error -i in.wav -i meta -map_metadata 1 -map_chapters 1 -metadata id3v2_priv.me=abc "
        "in.mp3");
    render("in.mp3 out.mp3 --quiet");
    render("in.mp3 out.aiff --quiet");
    EXPECT_EQ(probe("out.mp3").chapters, 1u);
    EXPECT_EQ(probe("out.mp3").tags.at("id3v2_priv.me"), "abc");
    EXPECT_EQ(probe("out.aiff").chapters, 1u);
    EXPECT_THAT(render("in.mp3 out.flac --quiet").err,
                HasSubstr("in.mp3: left out of out.flac, which has no place for it: "));

    writeNoise("in.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24);
    writeBytes(folder / "sheet", "FILE \"x\" WAVE\n  TRACK 01 AUDIO\n    INDEX 01 00:01:00\n");
    run("metaflac --import-cuesheet-from=sheet in.flac");
    render("in.flac out2.flac --quiet");
    const auto sheet = [&](const char* name) {
        return outputOf("metaflac --list --block-type=CUESHEET " + (folder / name).string() +
                        " | tail -n +4");
    };
    EXPECT_THAT(sheet("in.flac"), HasSubstr("LEAD-OUT"));
    EXPECT_EQ(sheet("out2.flac"), sheet("in.flac"));
    EXPECT_THAT(render("in.flac out2.wav --quiet").err, HasSubstr("the cue sheet"));

    run("ffmpeg -v error -i in.wav -write_bext 1 -metadata description=mix -metadata "
        "coding_history=A=ANALOGUE bext.wav");
    render("bext.wav bext2.wav --quiet --gain 3 --subtype pcm_24");
    const Probed broadcast = probe("bext2.wav");
    EXPECT_EQ(broadcast.tags.at("comment"), "mix");
    EXPECT_THAT(broadcast.tags.at("coding_history"),
                ContainsRegex("A=ANALOGUE\r\nA=PCM,F=48000,W=24,M=stereo,T=Vanta 2; Modern; Gain 3.00 dB"));
    // EBU Tech 3285: in hundredths, 412 bytes into the chunk, the true peak four bytes on.
    const std::string bytes = readBytes(folder / "bext2.wav");
    const auto figure = [&](std::size_t offset) {
        std::int16_t value = 0;
        std::memcpy(&value, bytes.data() + bytes.find("bext") + 8 + offset, sizeof value);
        return value / 100.0;
    };
    const SecondOpinion judged = secondOpinion({folder / "bext2.wav"});
    EXPECT_NEAR(figure(412), judged.integrated, 0.05);
    EXPECT_NEAR(figure(416), judged.truePeak, 0.2);
}

TEST_F(CommandFiles, MasksOfSpeakersSurvive) {
    writeSound(folder / "mono.wav", {pinkNoise(1, 4800, 0.1)}, SF_FORMAT_WAV | SF_FORMAT_PCM_24, kRate);
    const std::vector<std::string> layouts{"2.1", "4.0",       "quad(side)", "4.1",
                                           "5.1", "5.1(side)", "7.1",        "7.1(wide)"};
    for (const std::string& layout : layouts) {
        run(fmt::format("ffmpeg -v error -y -i mono.wav -af 'aformat=channel_layouts={}' in.wav", layout));
        run(fmt::format("ffmpeg -v error -y -i mono.wav -af 'aformat=channel_layouts={}' in.w64", layout));
        ASSERT_EQ(probe("in.wav").audio.at("channel_layout"), layout);
        for (const char* files : {"in.wav out.wav", "in.w64 out.w64", "in.wav out.w64", "in.wav out.flac",
                                  "in.wav out.aiff", "in.wav out.caf"}) {
            render(std::string(files) + " --force --quiet");
            const std::string output = words(files).back();
            // In these three ffprobe takes the usual layout for one with the pair at the sides; back in a WAV
            // it is what it was.
            if (output.ends_with("flac") || output.ends_with("aiff") || output.ends_with("caf")) {
                render(output + " back.wav --force --quiet --format wavex");
                EXPECT_EQ(probe("back.wav").audio.at("channel_layout"), layout) << files;
            } else {
                EXPECT_EQ(probe(output).audio.at("channel_layout"), layout) << files;
            }
        }
    }
    run("ffmpeg -v error -y -i mono.wav -af aformat=channel_layouts=2.1 in.wav");
    render("in.wav out.flac --force --quiet");
    EXPECT_EQ(probe("out.flac").audio.at("channel_layout"), "2.1");
    EXPECT_THAT(render("in.wav out.ogg --quiet").err,
                HasSubstr("has no place for which channel is which speaker"));
}

TEST_F(CommandFiles, EqualSettingsGiveEqualBytesAtAnyTime) {
    makeTagged("in.flac");
    const std::vector<std::string> kinds{"wav", "w64", "aiff", "caf", "flac", "ogg", "opus", "mp3", "au"};
    const auto renderAll = [&](const std::string& stem) {
        for (const std::string& kind : kinds) {
            render(fmt::format("in.flac {}.{} --quiet", stem, kind));
            const bool hasFloat = kind != "flac" && kind != "ogg" && kind != "opus" && kind != "mp3";
            if (hasFloat) render(fmt::format("in.flac {}-float.{} --quiet --subtype float", stem, kind));
        }
    };
    renderAll("a");
    // Time stamps and random numbers of libraries change by the second.
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    renderAll("b");
    int compared = 0;
    for (const std::string& name : folder.names()) {
        if (!name.starts_with("a")) continue;
        std::string again = name;
        again[0] = 'b';
        EXPECT_EQ(readBytes(folder / name), readBytes(folder / again)) << name;
        ++compared;
    }
    EXPECT_GE(compared, 14);
}

TEST_F(CommandFiles, CodecsAndRatesAreWhatWasAskedFor) {
    writeNoise("in.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24);
    const auto kbps = [&](const std::string& options, const char* output) {
        render(fmt::format("in.wav {} --force --quiet {}", output, options));
        return 8.0 * static_cast<double>(std::filesystem::file_size(folder / output)) / 4.0 / 1000.0;
    };
    for (const double asked : {64.0, 128.0, 320.0})
        EXPECT_NEAR(kbps(fmt::format("--bitrate {}", asked), "out.mp3"), asked, 0.03 * asked);
    EXPECT_THAT(outputOf("ffmpeg -v error -i " + (folder / "out.mp3").string() + " -f null -"), "");
    for (const double asked : {64.0, 256.0})
        EXPECT_NEAR(kbps(fmt::format("--bitrate {}", asked), "out.opus"), asked, 0.15 * asked);
    EXPECT_GT(kbps("--quality 0", "out.mp3"), 1.5 * kbps("--quality 9", "out.mp3"));
    EXPECT_EQ(kbps("", "out.mp3"), kbps("--quality 0", "out.mp3"));
    EXPECT_GT(kbps("--quality 9", "out.ogg"), 2.0 * kbps("--quality 1", "out.ogg"));
    EXPECT_GT(kbps("--quality 0", "out.flac"), kbps("--quality 8", "out.flac"));

    render("in.wav lossless.caf --quiet --subtype alac_24");
    EXPECT_EQ(probe("lossless.caf").audio.at("codec_name"), "alac");
    render("in.wav plain.wav --quiet");
    const auto samples = [&](const char* name) {
        return outputOf("ffmpeg -v error -i " + (folder / name).string() + " -c:a pcm_s32le -f md5 -");
    };
    EXPECT_EQ(samples("lossless.caf"), samples("plain.wav"));

    render("in.wav cd.wav --quiet --rate 44100");
    EXPECT_EQ(probe("cd.wav").audio.at("sample_rate"), "44100");
    EXPECT_EQ(readSound(folder / "cd.wav").channels[0].size(), 4u * 44100u);
    // The ceiling holds for what is written, not for what was converted.
    render("in.wav loud.wav --quiet --rate 44100 --gain 24 --output-level -1 --true-peak off");
    EXPECT_LE(db(peak(readSound(folder / "loud.wav").channels[0])), -1.0);
    EXPECT_THAT(render("cd.wav cd.opus --quiet").err,
                HasSubstr("cd.opus: converted to 48000 Hz: ogg opus cannot have 44100 Hz"));
    EXPECT_EQ(readSound(folder / "cd.opus").channels[0].size(), 4u * 48000u);
    EXPECT_THAT(render("in.wav high.mp3 --quiet --rate 96000").err, HasSubstr("converted to 48000 Hz: mp3"));
}

TEST_F(CommandFiles, ReplayGainIsWrittenAndStrippingLeavesNothing) {
    makeTagged("in.flac");
    writeSound(folder / "soft.wav", {pinkNoise(3, 4 * kRate, 0.02)}, SF_FORMAT_WAV | SF_FORMAT_PCM_24, kRate);
    std::filesystem::create_directory(folder / "out");
    render("in.flac soft.wav --out-dir out --replaygain album --quiet");
    const auto gainOf = [](double lufs) { return -18.0 - lufs; };
    for (const char* name : {"out/in.flac", "out/soft.wav"}) {
        const auto tags = probe(name).tags;
        EXPECT_NEAR(std::stod(tags.at("replaygain_track_gain")),
                    gainOf(secondOpinion({folder / name}).integrated), 0.05);
        EXPECT_NEAR(std::stod(tags.at("replaygain_album_gain")),
                    gainOf(secondOpinion({folder / "out/in.flac", folder / "out/soft.wav"}).integrated),
                    0.05);
        EXPECT_NEAR(db(std::stod(tags.at("replaygain_track_peak"))), secondOpinion({folder / name}).truePeak,
                    0.2);
    }
    render("in.flac a.opus --replaygain track --quiet");
    EXPECT_NEAR(std::stod(probe("a.opus").tags.at("r128_track_gain")),
                256.0 * (-23.0 - secondOpinion({folder / "a.opus"}).integrated), 13.0);
    EXPECT_FALSE(probe("a.opus").tags.contains("replaygain_track_gain"));

    for (const char* name : {"bare.flac", "bare.mp3", "bare.wav", "bare.ogg", "bare.caf"}) {
        EXPECT_EQ(render(std::string("in.flac ") + name + " --strip --quiet").err, "");
        Probed bare = probe(name);
        bare.tags.erase("encoder");  // the library's own
        EXPECT_THAT(bare.tags, testing::IsEmpty()) << name;
        EXPECT_EQ(bare.pictures, 0) << name;
    }
    render("in.flac gain.mp3 --strip --replaygain track --quiet");
    EXPECT_TRUE(probe("gain.mp3").tags.contains("replaygain_track_gain"));
    EXPECT_FALSE(probe("gain.mp3").tags.contains("title"));
}

}  // namespace
}  // namespace vanta::test
