#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <map>

#include "audiofile/audio_file_reader.hpp"
#include "audiofile/metadata/metadata_transfer.hpp"
#include "foundation/failure.hpp"
#include "tests/support/sound_files.hpp"

namespace vanta::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr int kRate = 48000;
constexpr std::size_t kFrames = 333;  // an odd number of bytes in a mono file of 24 bits

std::string little(std::uint64_t value, int width = 4) {
    std::string bytes;
    for (int i = 0; i < width; ++i) bytes += static_cast<char>(value >> 8 * i & 0xFF);
    return bytes;
}
std::string big(std::uint64_t value, int width = 4) {
    std::string bytes = little(value, width);
    std::ranges::reverse(bytes);
    return bytes;
}
std::string padded(std::string text, std::size_t width) {
    text.resize(width, '\0');
    return text;
}

struct Part {
    std::string name;
    std::string content;
};

/// EBU Tech 3285 as it stands in the document: description to origination time, time reference, version,
/// UMID, five figures of loudness, reserve, history.
std::string broadcast(std::uint64_t timeReference, int version, std::array<int, 5> loudness,
                      const std::string& history) {
    std::string bytes = padded("mix 3", 256) + padded("desk", 32) + padded("ref", 32) + "2026-01-0203:04:05" +
                        little(timeReference, 8) + little(static_cast<unsigned>(version), 2) +
                        std::string(64, 'u');
    for (const int figure : loudness) bytes += little(static_cast<unsigned>(figure) & 0xFFFF, 2);
    return bytes + std::string(180, '\0') + history;
}
std::string broadcast() {
    return broadcast(172800000, 1, {0, 0, 0, 0, 0}, "A=ANALOGUE,M=stereo,T=tape\r\n");
}

std::string cues(std::uint32_t position) {
    return little(1) + little(7) + little(position) + "data" + little(0) + little(0) + little(position);
}
std::string labels(std::uint32_t length) {
    return "adtllabl" + little(9) + little(7) + "Refr" + std::string("\0\0", 2) + "ltxt" + little(20) +
           little(7) + little(length) + "rgn " + std::string(8, '\0');
}
std::string sampler(std::uint32_t period, std::uint32_t start, std::uint32_t end) {
    return std::string(8, '\1') + little(period) + std::string(16, '\2') + little(1) + little(0) + little(1) +
           little(0) + little(start) + little(end) + little(0) + little(0);
}
std::string production(const std::string& rate, const std::string& bits) {
    return "<BWFXML><SPEED><FILE_SAMPLE_RATE>" + rate + "</FILE_SAMPLE_RATE><AUDIO_BIT_DEPTH>" + bits +
           "</AUDIO_BIT_DEPTH></SPEED></BWFXML>\n";
}

/// Chunks by this test's own hand, put around the audio of a file that libsndfile made.
void insertParts(const std::filesystem::path& file, const std::vector<Part>& before,
                 const std::vector<Part>& behind, bool isBig = false) {
    std::string bytes = readBytes(file);
    const auto put = [&](std::size_t at, const std::vector<Part>& parts) {
        std::string all;
        for (const Part& part : parts) {
            const auto size = static_cast<std::uint32_t>(part.content.size());
            all += part.name + (isBig ? big(size) : little(size)) + part.content;
            if (size % 2) all += '\0';
        }
        bytes.insert(at, all);
    };
    if (bytes.size() % 2) bytes += '\0';
    put(bytes.size(), behind);
    put(bytes.find(isBig ? "SSND" : "data"), before);
    const auto length = static_cast<std::uint32_t>(bytes.size() - 8);
    bytes.replace(4, 4, isBig ? big(length) : little(length));
    writeBytes(file, bytes);
}

/// Names and contents of all chunks of a WAV, RF64 or AIFF, and that their sizes add up.
std::vector<Part> partsOf(const std::filesystem::path& file) {
    const std::string bytes = readBytes(file);
    const bool isBig = bytes.starts_with("FORM");
    const auto number = [&](std::size_t at) {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < 4; ++i)
            value |= std::uint64_t{static_cast<unsigned char>(bytes[at + i])} << 8 * (isBig ? 3 - i : i);
        return value;
    };
    EXPECT_EQ(bytes.starts_with("RF64") ? number(20) : number(4), bytes.size() - 8) << file;
    std::vector<Part> parts;
    for (std::size_t at = 12; at + 8 <= bytes.size();) {
        std::uint64_t size = number(at + 4);
        const std::string name = bytes.substr(at, 4);
        if (size == 0xFFFFFFFF) size = number(28);
        parts.push_back({name, bytes.substr(at + 8, size)});
        at += 8 + size + size % 2;
        EXPECT_LE(at, bytes.size() + 1) << name;
    }
    return parts;
}

std::vector<std::string> namesOf(const std::vector<Part>& parts) {
    std::vector<std::string> names;
    for (const Part& part : parts) names.push_back(part.name);
    return names;
}

const std::string& contentOf(const std::vector<Part>& parts, const std::string& name) {
    static const std::string kNone = "none";
    const auto found = std::ranges::find(parts, name, &Part::name);
    return found == parts.end() ? kNone : found->content;
}

class Metadata : public testing::Test {
protected:
    void write(const std::string& name, int format, int rate = kRate) const {
        writeSound(folder / name, {whiteNoise(3, kFrames, 0.5)}, format, rate);
    }
    static int formatOf(const std::filesystem::path& file) { return AudioFileReader(file).info().format; }

    /// What was left out. The audio must have come to no harm.
    std::vector<std::string> transfer(const std::string& from, const std::string& to,
                                      int toRate = kRate) const {
        const Channels audio = readSound(folder / to).channels;
        const auto lost = transferMetadata({.from = folder / from,
                                            .to = folder / to,
                                            .fromFormat = formatOf(folder / from),
                                            .toFormat = formatOf(folder / to),
                                            .change = {kRate, toRate, loudness, "A=PCM,T=us", 16}});
        EXPECT_TRUE(readSound(folder / to).channels == audio) << to;
        return lost;
    }

    TempFolder folder;
    WrittenLoudness loudness{-14.25, 6.5, -1.0, -10.0, -12.0};
};

constexpr int kWav24 = SF_FORMAT_WAV | SF_FORMAT_PCM_24;

TEST_F(Metadata, ChunksGoWhereTheyWereAndSayWhatIsTrueNow) {
    write("in.wav", kWav24);
    insertParts(folder / "in.wav",
                {{"JUNK", "room"}, {"bext", broadcast()}, {"iXML", production("48000", "24")}},
                {{"cue ", cues(100)},
                 {"LIST", labels(50)},
                 {"smpl", sampler(20833, 10, 200)},
                 {"inst", "abcdefg"},
                 {"cart", padded("0101", 2048)},
                 {"axml", "<a/>"},
                 {"acid", padded("x", 24)},
                 {"xyz ", "?!?"}});
    const std::vector<Part> in = partsOf(folder / "in.wav");
    for (const int type : {SF_FORMAT_WAV, SF_FORMAT_RF64}) {
        write("out", type | SF_FORMAT_PCM_24);
        EXPECT_THAT(transfer("in.wav", "out"), IsEmpty());
        const std::vector<Part> out = partsOf(folder / "out");
        std::vector<std::string> names = namesOf(out);
        names.erase(names.begin(), std::ranges::find(names, "fmt ") + 1);
        EXPECT_THAT(names, ElementsAre("bext", "iXML", "data", "cue ", "LIST", "smpl", "inst", "cart", "axml",
                                       "acid", "xyz "));
        for (const char* same : {"data", "cue ", "LIST", "smpl", "inst", "cart", "axml", "acid", "xyz "})
            EXPECT_EQ(contentOf(out, same), contentOf(in, same)) << same;
        EXPECT_EQ(contentOf(out, "iXML"), production("48000", "16"));
        EXPECT_EQ(contentOf(out, "bext"), broadcast(172800000, 2, {-1425, 650, -100, -1000, -1200},
                                                    "A=ANALOGUE,M=stereo,T=tape\r\nA=PCM,T=us\r\n"));
    }
    // Without figures, those of the old audio are not left standing.
    loudness = {};
    write("in.wav", kWav24);
    insertParts(folder / "in.wav", {{"bext", broadcast(5, 2, {-2300, 1, 2, 3, 4}, "")}}, {});
    write("out", kWav24);
    transfer("in.wav", "out");
    EXPECT_EQ(contentOf(partsOf(folder / "out"), "bext"),
              broadcast(5, 2, {0x7FFF, 0x7FFF, 0x7FFF, 0x7FFF, 0x7FFF}, "A=PCM,T=us\r\n"));
}

TEST_F(Metadata, PositionsInSamplesMoveWithTheSampleRate) {
    write("in.wav", kWav24);
    std::string cart = padded("0101", 684);
    for (int i = 0; i < 8; ++i) cart += "SEGs" + little(4800);
    insertParts(
        folder / "in.wav", {{"bext", broadcast()}, {"iXML", production("48000", "16")}},
        {{"cue ", cues(4800)}, {"LIST", labels(480)}, {"smpl", sampler(20833, 96, 192)}, {"cart", cart}});
    write("out.wav", kWav24, 96000);
    EXPECT_THAT(transfer("in.wav", "out.wav", 96000), IsEmpty());
    const std::vector<Part> out = partsOf(folder / "out.wav");
    EXPECT_EQ(contentOf(out, "cue "), cues(9600));
    EXPECT_EQ(contentOf(out, "LIST"), labels(960));
    EXPECT_EQ(contentOf(out, "smpl"), sampler(10417, 192, 384));
    EXPECT_EQ(contentOf(out, "cart").substr(684, 8), "SEGs" + little(9600));
    EXPECT_EQ(contentOf(out, "iXML"), production("96000", "16"));
    EXPECT_EQ(contentOf(out, "bext").substr(338, 8), little(345600000, 8));
}

TEST_F(Metadata, EveryFamilyKeepsItsOwnAndNamesWhatItCannotHold) {
    write("in.wav", kWav24);
    insertParts(folder / "in.wav", {{"bext", broadcast()}},
                {{"cue ", cues(1)}, {"LIST", labels(1)}, {"xyz ", "?"}});
    const auto marker = [](std::uint32_t at) { return big(1, 2) + big(1, 2) + big(at) + "\4Here" + '\0'; };
    write("in.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_24);
    insertParts(folder / "in.aiff", {{"NAME", "Lamp"}, {"MARK", marker(96)}},
                {{"APPL", "stoc?"}, {"COMT", "cc"}}, true);
    write("out.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_24, 24000);
    EXPECT_THAT(transfer("in.aiff", "out.aiff", 24000), IsEmpty());
    const std::vector<Part> aiff = partsOf(folder / "out.aiff");
    EXPECT_THAT(namesOf(aiff), ElementsAre("COMM", "NAME", "MARK", "SSND", "APPL", "COMT"));
    EXPECT_EQ(contentOf(aiff, "MARK"), marker(48));

    write("in.w64", SF_FORMAT_W64 | SF_FORMAT_PCM_24);
    EXPECT_THAT(transfer("in.wav", "in.w64"), ElementsAre("cue", "LIST adtl", "xyz"));
    EXPECT_THAT(readBytes(folder / "in.w64"), HasSubstr(broadcast().substr(0, 320)));
    write("from64.wav", kWav24);
    EXPECT_THAT(transfer("in.w64", "from64.wav"), IsEmpty());
    EXPECT_THAT(contentOf(partsOf(folder / "from64.wav"), "bext"),
                HasSubstr("tape\r\nA=PCM,T=us\r\nA=PCM,T=us\r\n"));

    write("in.caf", SF_FORMAT_CAF | SF_FORMAT_PCM_16);
    writeBytes(folder / "in.caf", readBytes(folder / "in.caf") + "umid" + big(3, 8) + "abc");
    write("out.caf", SF_FORMAT_CAF | SF_FORMAT_PCM_24);
    EXPECT_THAT(transfer("in.caf", "out.caf"), IsEmpty());
    EXPECT_TRUE(readBytes(folder / "out.caf").ends_with("umid" + big(3, 8) + "abc"));
    for (const int format : {SF_FORMAT_FLAC | SF_FORMAT_PCM_24, SF_FORMAT_AIFF | SF_FORMAT_PCM_24,
                             SF_FORMAT_OGG | SF_FORMAT_VORBIS, SF_FORMAT_AU | SF_FORMAT_PCM_24}) {
        write("out", format);
        EXPECT_THAT(transfer("in.wav", "out"), ElementsAre("bext", "cue", "LIST adtl", "xyz"));
        EXPECT_THAT(transfer("in.caf", "out"), ElementsAre("umid"));
    }
}

TEST_F(Metadata, DamagedOnesHarmNobody) {
    write("in.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    const std::string id3 = std::string("ID3\4\0\0\0\0\0\x2bTIT2\0\0\0\4\0\0\3Lam", 25) +
                            std::string("APIC\0\0\0\xe\0\0\3image/png\0\3\0P", 25);
    insertParts(folder / "in.wav", {{"bext", broadcast()}, {"cue ", cues(9)}},
                {{"LIST", labels(4)},
                 {"smpl", sampler(1, 2, 3)},
                 {"id3 ", id3},
                 {"LIST", "INFOINAM" + little(2) + "ab"}});
    const std::string whole = readBytes(folder / "in.wav");
    Random random(11);
    int taken = 0;
    for (int round = 0; round < 300; ++round) {
        std::string bytes = whole;
        for (int i = 0; i < 6; ++i) {
            const auto at = static_cast<std::size_t>((random.bipolar() + 1.0) / 2.0 *
                                                     static_cast<double>(bytes.size() - 1));
            bytes[at] = static_cast<char>(random.bipolar() * 127.0);
        }
        if (round % 3 == 0) bytes.resize(bytes.size() - static_cast<std::size_t>(round));
        writeBytes(folder / "damaged.wav", bytes);
        write("out.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16);
        try {
            transfer("damaged.wav", "out.wav", round % 2 ? kRate : 44100);
            ++taken;
        } catch (const Failure&) {
        }
    }
    EXPECT_GT(taken, 100);
}

}  // namespace
}  // namespace vanta::test
