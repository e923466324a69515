#include "audiofile/file_format.hpp"

#include <fmt/format.h>
#include <sndfile.h>

#include <algorithm>
#include <array>

#include "foundation/ascii.hpp"

namespace vanta {

namespace {

using Beyond4GiB = FileType::Beyond4GiB;

constexpr auto kTypes = std::to_array<FileType>({
    {"wav", SF_FORMAT_WAV, "wav wave bwf", "Microsoft WAV", SpeakerOrder::Wave, Beyond4GiB::Rf64},
    {"wavex", SF_FORMAT_WAVEX, "wav", "WAV with speaker positions", SpeakerOrder::Wave, Beyond4GiB::Rf64},
    {"rf64", SF_FORMAT_RF64, "wav rf64", "WAV for more than 4 GB", SpeakerOrder::Wave, Beyond4GiB::TheSame},
    {"w64", SF_FORMAT_W64, "w64", "Sony Wave64", SpeakerOrder::Wave, Beyond4GiB::TheSame},
    {"aiff", SF_FORMAT_AIFF, "aiff aif aifc", "Apple AIFF", SpeakerOrder::Wave, Beyond4GiB::Nothing},
    {"caf", SF_FORMAT_CAF, "caf", "Apple Core Audio", SpeakerOrder::Wave, Beyond4GiB::TheSame},
    {"flac", SF_FORMAT_FLAC, "flac", "FLAC, lossless", SpeakerOrder::Wave, Beyond4GiB::TheSame, true},
    {"ogg", SF_FORMAT_OGG, "ogg oga opus", "Ogg Vorbis or Opus, lossy", SpeakerOrder::Vorbis,
     Beyond4GiB::TheSame, true},
    {"mp3", SF_FORMAT_MPEG, "mp3", "MP3, lossy", SpeakerOrder::Wave, Beyond4GiB::TheSame},
    {"au", SF_FORMAT_AU, "au snd", "Sun/NeXT AU", SpeakerOrder::Wave, Beyond4GiB::TheSame},
});

constexpr auto kSubtypes = std::to_array<FileSubtype>({
    {"pcm_u8", SF_FORMAT_PCM_U8, FileSubtype::Integer, 8, "8-bit integer, unsigned"},
    {"pcm_s8", SF_FORMAT_PCM_S8, FileSubtype::Integer, 8, "8-bit integer"},
    {"pcm_16", SF_FORMAT_PCM_16, FileSubtype::Integer, 16, "16-bit integer"},
    {"pcm_24", SF_FORMAT_PCM_24, FileSubtype::Integer, 24, "24-bit integer"},
    {"pcm_32", SF_FORMAT_PCM_32, FileSubtype::Integer, 32, "32-bit integer"},
    {"float", SF_FORMAT_FLOAT, FileSubtype::Float, 32, "32-bit floating point"},
    {"double", SF_FORMAT_DOUBLE, FileSubtype::Float, 64, "64-bit floating point"},
    {"alac_16", SF_FORMAT_ALAC_16, FileSubtype::Integer, 16, "16-bit Apple Lossless"},
    {"alac_20", SF_FORMAT_ALAC_20, FileSubtype::Integer, 20, "20-bit Apple Lossless"},
    {"alac_24", SF_FORMAT_ALAC_24, FileSubtype::Integer, 24, "24-bit Apple Lossless"},
    {"alac_32", SF_FORMAT_ALAC_32, FileSubtype::Integer, 32, "32-bit Apple Lossless"},
    {"ulaw", SF_FORMAT_ULAW, FileSubtype::Companded, 14, "G.711 mu-law"},
    {"alaw", SF_FORMAT_ALAW, FileSubtype::Companded, 13, "G.711 A-law"},
    {"vorbis", SF_FORMAT_VORBIS, FileSubtype::Lossy, 0, "Vorbis"},
    {"opus", SF_FORMAT_OPUS, FileSubtype::Lossy, 0, "Opus"},
    {"mp3", SF_FORMAT_MPEG_LAYER_III, FileSubtype::Lossy, 0, "MPEG layer III"},
});

template <typename Entry, std::size_t N>
const Entry* findByName(const std::array<Entry, N>& table, std::string_view name) {
    const auto found = std::find_if(table.begin(), table.end(),
                                    [&](const Entry& e) { return equalsIgnoringCase(e.name, name); });
    return found == table.end() ? nullptr : &*found;
}

}  // namespace

bool FileType::isNamedBy(const std::filesystem::path& path) const {
    const std::string dotted = path.extension().string();
    const std::string_view extension = std::string_view(dotted).substr(dotted.empty() ? 0 : 1);
    std::string_view rest = extensions;
    while (!rest.empty()) {
        const auto end = std::min(rest.find(' '), rest.size());
        if (equalsIgnoringCase(rest.substr(0, end), extension)) return true;
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return false;
}

std::span<const FileType> fileTypes() {
    return kTypes;
}

std::span<const FileSubtype> fileSubtypes() {
    return kSubtypes;
}

const FileType* findFileType(std::string_view name) {
    return findByName(kTypes, name);
}

const FileSubtype* findFileSubtype(std::string_view name) {
    return findByName(kSubtypes, name);
}

const FileType* fileTypeOf(int format) {
    const auto found = std::find_if(kTypes.begin(), kTypes.end(), [&](const FileType& type) {
        return type.format == (format & SF_FORMAT_TYPEMASK);
    });
    return found == kTypes.end() ? nullptr : &*found;
}

const FileSubtype* fileSubtypeOf(int format) {
    const auto found = std::find_if(kSubtypes.begin(), kSubtypes.end(), [&](const FileSubtype& subtype) {
        return subtype.format == (format & SF_FORMAT_SUBMASK);
    });
    return found == kSubtypes.end() ? nullptr : &*found;
}

const FileType* fileTypeFor(const std::filesystem::path& path) {
    const auto found =
        std::ranges::find_if(kTypes, [&](const FileType& type) { return type.isNamedBy(path); });
    return found == kTypes.end() ? nullptr : &*found;
}

bool isOwnAlac(int format) {
    const FileSubtype* subtype = fileSubtypeOf(format);
    return subtype && subtype->bits > 16 && subtype->name.starts_with("alac");
}

bool canBeWritten(int format, int channels, int sampleRate) {
    // libsndfile takes MP3 in other containers for a format, and cannot write it.
    const bool isMp3 = (format & SF_FORMAT_SUBMASK) == SF_FORMAT_MPEG_LAYER_III;
    if (isMp3 && (format & SF_FORMAT_TYPEMASK) != SF_FORMAT_MPEG) return false;
    if (isOwnAlac(format) && channels > 2) return false;
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = channels;
    info.format = format;
    return sf_format_check(&info) != 0;
}

std::string formatName(int format) {
    const FileType* type = fileTypeOf(format);
    const FileSubtype* subtype = fileSubtypeOf(format);
    const auto own = [](int number) {
        SF_FORMAT_INFO info{};
        info.format = number;
        const bool known = sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info) == 0 && info.name;
        return known ? std::string(info.name) : fmt::format("{:#x}", number);
    };
    if (type && subtype && type->name == subtype->name) return std::string(type->name);
    return fmt::format("{} {}", type ? std::string(type->name) : own(format & SF_FORMAT_TYPEMASK),
                       subtype ? std::string(subtype->name) : own(format & SF_FORMAT_SUBMASK));
}

}  // namespace vanta
