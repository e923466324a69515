#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>

#include "audiofile/audio_file_reader.hpp"
#include "audiofile/audio_file_writer.hpp"
#include "audiofile/cut_off.hpp"
#include "foundation/failure.hpp"
#include "tests/support/allocation_failure.hpp"
#include "tests/support/sound_files.hpp"

namespace vanta::test {
namespace {

constexpr int kRate = 48000;

AudioFileWriter::Target targetAt(const std::filesystem::path& path, int format, int channels,
                                 AudioFileWriter::Limit limit = AudioFileWriter::Limit::Refuse) {
    AudioFileWriter::Target target{path, path.string(), format, kRate, {}, {}, limit};
    for (int i = 0; i < channels; ++i) target.fileChannel.push_back(i);
    return target;
}

void writeAll(AudioFileWriter& writer, const Channels& channels) {
    // Uneven pieces, as a host's first and last are.
    const std::size_t frames = channels[0].size();
    for (std::size_t at = 0; at < frames;) {
        const std::size_t count = std::min<std::size_t>(at == 0 ? 7 : 1000, frames - at);
        std::vector<const float*> pieces;
        for (const Signal& channel : channels) pieces.push_back(channel.data() + at);
        writer.write(pieces, count);
        at += count;
    }
    writer.finish();
}

Channels readAll(AudioFileReader& reader) {
    Channels channels(static_cast<std::size_t>(reader.channelCount()));
    std::vector<Signal> piece(channels.size(), Signal(777));
    std::vector<float*> pointers;
    for (Signal& channel : piece) pointers.push_back(channel.data());
    std::size_t got = 0;
    do {
        got = reader.read(pointers, 777);
        for (std::size_t c = 0; c < channels.size(); ++c) {
            channels[c].insert(channels[c].end(), piece[c].begin(),
                               piece[c].begin() + static_cast<std::ptrdiff_t>(got));
        }
    } while (got == 777);
    return channels;
}

/// Samples on the grid of `bits` bits, both ends of it included.
Signal onGrid(int bits, std::uint64_t seed, std::size_t count) {
    const double scale = std::ldexp(1.0, std::min(bits, 24) - 1);
    Signal signal{-1.0f, static_cast<float>((scale - 1) / scale), 0.0f, static_cast<float>(1 / scale)};
    Random random(seed);
    while (signal.size() < count) {
        signal.push_back(static_cast<float>(std::floor(random.bipolar() * scale) / scale));
    }
    return signal;
}

TEST(AudioFiles, EveryExactFormatGivesBackWhatItTook) {
    const TempFolder folder;
    int tried = 0;
    for (const FileType& type : fileTypes()) {
        for (const FileSubtype& subtype : fileSubtypes()) {
            SF_INFO info{0, kRate, 2, type.format | subtype.format, 0, 0};
            const bool exact = subtype.kind == FileSubtype::Integer || subtype.kind == FileSubtype::Float;
            if (!exact || !canBeWritten(info.format, 2, kRate)) continue;
            const std::string name = formatName(info.format);
            const Channels channels{onGrid(subtype.bits, 1, 5003), onGrid(subtype.bits, 2, 5003)};
            const auto path = folder / (name + ".audio");
            AudioFileWriter writer(targetAt(path, info.format, 2));
            writeAll(writer, channels);
            AudioFileReader reader(path);
            EXPECT_EQ(formatName(reader.info().format), name);
            EXPECT_TRUE(readAll(reader) == channels) << name;
            reader.rewind();
            EXPECT_TRUE(readAll(reader) == channels) << name << ", a second time";
            ++tried;
        }
    }
    EXPECT_GE(tried, 40);
}

TEST(AudioFiles, AppleLosslessOfAnyWordLengthGivesBackExtremes) {
    const TempFolder folder;
    constexpr std::size_t kPacket = 4096;
    Signal clicks(3 * kPacket);
    for (std::size_t i = 0; i < clicks.size(); i += 997) clicks[i] = i % 2 ? 1e-6f : -0.75f;
    Signal signs(2 * kPacket);
    for (std::size_t i = 0; i < signs.size(); ++i) signs[i] = i % 3 ? -1.0f : 0.75f;
    const Signal silence(kPacket + 1);
    const Signal programs[] = {silence, clicks, signs, sine(997, kRate, 5 * kPacket - 1, 0.9),
                               onGrid(20, 5, 9000)};
    for (const Signal& program : programs) {
        for (const int subtype : {SF_FORMAT_ALAC_20, SF_FORMAT_ALAC_24, SF_FORMAT_ALAC_32}) {
            for (const std::size_t frames :
                 {std::size_t{1}, std::size_t{9}, kPacket - 1, kPacket, program.size()}) {
                const Signal part(program.begin(), program.begin() + static_cast<std::ptrdiff_t>(
                                                                         std::min(frames, program.size())));
                Signal other(part.rbegin(), part.rend());
                for (const Channels& channels : {Channels{part}, Channels{part, other}}) {
                    const int width = static_cast<int>(channels.size());
                    for (const int major : {SF_FORMAT_CAF | subtype, SF_FORMAT_WAV | SF_FORMAT_PCM_32}) {
                        const int bits = fileSubtypeOf(subtype)->bits;
                        Channels rounded = channels;
                        for (Signal& channel : rounded)
                            for (float& s : channel)
                                s = static_cast<float>(quantised(s, std::min(bits, 24)) / 2147483648.0);
                        const auto path = folder / fmt::format("{:x}", major);
                        std::filesystem::remove(path);
                        AudioFileWriter writer(targetAt(path, major, width));
                        writeAll(writer, rounded);
                    }
                    ASSERT_TRUE(readIntegers(folder / fmt::format("{:x}", SF_FORMAT_CAF | subtype)) ==
                                readIntegers(folder / fmt::format("{:x}", SF_FORMAT_WAV | SF_FORMAT_PCM_32)))
                        << fmt::format("{:x}", subtype) << ", " << frames << " frames, " << width;
                }
            }
        }
    }
}

TEST(AudioFiles, LossyAndCompandedFormatsKeepLengthAndLevel) {
    const TempFolder folder;
    for (const char* name : {"wav ulaw", "wav alaw", "ogg vorbis", "ogg opus", "mp3 mp3"}) {
        const std::string_view text(name);
        const auto blank = text.find(' ');
        const int format =
            findFileType(text.substr(0, blank))->format | findFileSubtype(text.substr(blank + 1))->format;
        const Channels channels{sine(997, kRate, 20011, 0.5), sine(440, kRate, 20011, 0.25)};
        AudioFileWriter writer(targetAt(folder / name, format, 2));
        writeAll(writer, channels);
        AudioFileReader reader(folder / name);
        const Channels back = readAll(reader);
        ASSERT_EQ(back[0].size(), channels[0].size()) << name;
        EXPECT_NEAR(rms(back[0]), rms(channels[0]), 0.02) << name;
        EXPECT_NEAR(rms(back[1]), rms(channels[1]), 0.02) << name;
    }
}

TEST(AudioFiles, IntegersAreTheNearestAndEndAtFullScale) {
    const auto in16 = [](float sample) { return quantised(sample, 16) / 65536; };
    EXPECT_THAT((std::vector{in16(0.0f), in16(-1.0f), in16(1.0f), in16(1.49f / 32768), in16(-1.51f / 32768)}),
                testing::ElementsAre(0, -32768, 32767, 1, -2));
    EXPECT_EQ(quantised(1.0f, 32), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(quantised(-1.0f, 32), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(quantised(0.5f, 8), 64 << 24);
    EXPECT_EQ(quantised(7.0f, 24), 8388607 * 256);
}

TEST(AudioFiles, SamplesBeyondFullScaleAreRefusedOrCountedNeverSilentlyCut) {
    const TempFolder folder;
    const Channels loud{{0.5f, 1.25f, -1.5f, 1.0f, -1.0f}};
    const int format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    AudioFileWriter strict(targetAt(folder / "a.wav", format, 1));
    EXPECT_THROW(writeAll(strict, loud), BeyondFullScale);
    AudioFileWriter clipping(targetAt(folder / "b.wav", format, 1, AudioFileWriter::Limit::Clip));
    writeAll(clipping, loud);
    EXPECT_EQ(clipping.clipped(), 2);
    AudioFileWriter wide(targetAt(folder / "c.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 1));
    writeAll(wide, loud);
    EXPECT_EQ(readSound(folder / "c.wav").channels, loud);
}

TEST(AudioFiles, FilesThatEndBeforeTheirAudioAreFound) {
    const TempFolder folder;
    const Channels channels{whiteNoise(3, 30000, 0.5), whiteNoise(4, 30000, 0.5)};
    for (const char* type : {"wav", "wavex", "rf64", "w64", "aiff", "caf", "au", "flac", "ogg"}) {
        const auto whole = folder / type;
        const bool isOgg = std::string_view(type) == "ogg";
        const int subtype = isOgg ? SF_FORMAT_VORBIS : SF_FORMAT_PCM_16;
        writeSound(whole, channels, findFileType(type)->format | subtype, kRate);
        EXPECT_FALSE(isCutOff(whole)) << type;
        const std::string bytes = readBytes(whole);
        const auto cut = folder / (std::string(type) + ".cut");
        for (const std::size_t keep : {bytes.size() / 2, bytes.size() * 9 / 10}) {
            writeBytes(cut, bytes.substr(0, keep));
            const auto readWhole = [&] {
                AudioFileReader reader(cut);
                readAll(reader);
            };
            EXPECT_THROW(readWhole(), Failure) << type << " cut to " << keep << " of " << bytes.size();
        }
    }
}

TEST(AudioFiles, AWavThatNeverLearntItsLengthIsReadToItsEnd) {
    const TempFolder folder;
    writeSound(folder / "a.wav", {Signal(1000, 0.25f)}, SF_FORMAT_WAV | SF_FORMAT_PCM_16, kRate);
    std::string bytes = readBytes(folder / "a.wav");
    const auto data = bytes.find("data");
    for (const std::size_t at : {std::size_t{4}, data + 4}) bytes.replace(at, 4, "\xFF\xFF\xFF\xFF");
    writeBytes(folder / "b.wav", bytes);
    AudioFileReader reader(folder / "b.wav");
    EXPECT_EQ(readAll(reader)[0], Signal(1000, 0.25f));
}

TEST(AudioFiles, MemoryThatRunsOutWhileOneIsReadLeavesNothingBehind) {
    const TempFolder folder;
    const auto openFiles = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = openFiles();
    for (const int type : {SF_FORMAT_WAV, SF_FORMAT_FLAC}) {
        const auto path = folder / "sound";
        writeSound(path, {onGrid(16, 1, 500), onGrid(16, 2, 500)}, type | SF_FORMAT_PCM_16, kRate);
        const Channels expected = readSound(path).channels;
        const auto readWhole = [&] {
            AudioFileReader reader(path);
            std::vector<std::string> warnings;
            reader.mapTo({}, warnings);
            EXPECT_TRUE(readAll(reader) == expected);
        };
        failEachAllocation(readWhole, [&] { EXPECT_EQ(openFiles(), before); });
    }
}

TEST(AudioFiles, TheFormatFollowsTheWishTheExtensionTheSource) {
    const int wav24 = SF_FORMAT_WAV | SF_FORMAT_PCM_24;
    // Source, path, type and subtype wished for: what is chosen.
    const std::tuple<int, const char*, const char*, const char*, const char*> cases[] = {
        {wav24, "a.wav", "", "", "wav pcm_24"},
        {wav24, "a", "", "", "wav pcm_24"},
        {wav24, "a.flac", "", "", "flac pcm_24"},
        {wav24, "a.ogg", "", "", "ogg vorbis"},
        {wav24, "a.opus", "", "", "ogg opus"},
        {wav24, "a.wav", "aiff", "", "aiff pcm_24"},
        {wav24, "a.wav", "", "pcm_16", "wav pcm_16"},
        {SF_FORMAT_RF64 | SF_FORMAT_FLOAT, "a.wav", "", "", "rf64 float"},
        {SF_FORMAT_WAV | SF_FORMAT_FLOAT, "a.flac", "", "", "flac pcm_24"},
        {SF_FORMAT_WAV | SF_FORMAT_PCM_U8, "a.flac", "", "", "flac pcm_s8"},
        {SF_FORMAT_WAV | SF_FORMAT_PCM_32, "a.flac", "", "", "flac pcm_24"},
        {SF_FORMAT_CAF | SF_FORMAT_ALAC_20, "a.wav", "", "", "wav pcm_24"},
        {SF_FORMAT_CAF | SF_FORMAT_ALAC_24, "a.caf", "", "", "caf alac_24"},
        {SF_FORMAT_CAF | SF_FORMAT_ALAC_16, "a.caf", "", "", "caf alac_16"},
        {SF_FORMAT_OGG | SF_FORMAT_VORBIS, "a.wav", "", "", "wav float"},
        {wav24, "a.mp3", "", "", "mp3"},
        {SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, "a.wav", "", "", "wav float"},
        {SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, "a.flac", "", "", "flac pcm_24"},
        {wav24, "a.tmp", "wav", "", "wav pcm_24"},
        {SF_FORMAT_WAV | SF_FORMAT_IMA_ADPCM, "a.wav", "", "", "wav float"}};
    for (const auto& [source, path, type, subtype, chosen] : cases) {
        const int format =
            chooseFormat({source, 48000, 2, 1000}, path, {findFileType(type), findFileSubtype(subtype)});
        EXPECT_EQ(formatName(format), chosen) << formatName(source) << " to " << path;
    }
    EXPECT_THROW(chooseFormat({wav24, 48000, 2, 1}, "a.flac", {nullptr, findFileSubtype("float")}), Failure);
    EXPECT_THROW(chooseFormat({wav24, 48000, 10, 1}, "a.flac", {}), Failure);
    for (const char* unknown : {"a.wave2", "a.m4a", "a.WAV.part"})
        EXPECT_THROW(chooseFormat({wav24, 48000, 2, 1}, unknown, {}), Failure) << unknown;

    const StreamShape hours{SF_FORMAT_WAV | SF_FORMAT_PCM_24, 96000, 6, std::int64_t{96000} * 3600};
    EXPECT_EQ(formatName(chooseFormat(hours, "a.wav", {})), "rf64 pcm_24") << "what a WAV cannot hold";
    EXPECT_THROW(chooseFormat(hours, "a.aiff", {}), Failure);
    const StreamShape shape{0, 48000, 2, 10};
    EXPECT_EQ(formatName(*floatFormat(SF_FORMAT_AIFF | SF_FORMAT_PCM_16, shape, "a.aiff")), "aiff float");
    EXPECT_FALSE(floatFormat(SF_FORMAT_FLAC | SF_FORMAT_PCM_16, shape, "a.flac"));
}

}  // namespace
}  // namespace vanta::test
