#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vanta {

/// The order in which files put their speakers when they do not say it.
enum class SpeakerOrder {
    Wave,   ///< that of the bits in a WAV's channel mask; also of FLAC, and taken for AIFF and CAF
    Vorbis  ///< Xiph's: L C R, and the LFE last
};

/// A kind of file that can be written.
struct FileType {
    std::string_view name;
    int format;                   ///< libsndfile's major format
    std::string_view extensions;  ///< the usual one first, separated by blanks
    std::string_view description;
    SpeakerOrder order;
    bool has32BitSizes;  ///< cannot grow beyond 4 GiB
};

/// A kind of sample.
struct FileSubtype {
    std::string_view name;
    int format;  ///< libsndfile's subtype
    enum Kind { Integer, Float, Companded, Lossy } kind;
    int bits;  ///< that a sample takes, or for Companded is worth; 0 for Lossy
    std::string_view description;
    bool written = true;  ///< false: only read

    /// Whether a sample beyond full scale cannot be written.
    bool isLimited() const { return kind == Integer || kind == Companded; }
};

std::span<const FileType> fileTypes();
/// Those that can be written.
std::vector<FileSubtype> fileSubtypes();

/// By name, without regard to case. Null if there is none that can be written.
const FileType* findFileType(std::string_view name);
const FileSubtype* findFileSubtype(std::string_view name);
/// Of a libsndfile format; null for those that are only read.
const FileType* fileTypeOf(int format);
const FileSubtype* fileSubtypeOf(int format);
/// The type whose extension the path bears; null if none does.
const FileType* fileTypeFor(const std::filesystem::path& path);
/// "wav pcm_24"; libsndfile's own words for what is only read.
std::string formatName(int format);

/// What a user asked of the output file; null where nothing was said.
struct FormatWish {
    const FileType* type = nullptr;
    const FileSubtype* subtype = nullptr;
};

/// A stream, as far as it matters to the choice of a format.
struct StreamShape {
    int format;  ///< libsndfile's, of the file that it comes from
    int sampleRate;
    int channels;
    std::int64_t frames;
};

/// The format, as libsndfile's number, for `path`: what was wished for; else the type that the extension
/// says, or the source's own; else the source's subtype, or the nearest that loses nothing. WAV becomes RF64
/// where it would grow too large. Failure if the type cannot hold the stream.
int chooseFormat(const StreamShape& source, const std::filesystem::path& path, const FormatWish& wish);

/// The same type with float samples; nothing if it has none.
std::optional<int> floatFormat(int format, const StreamShape& stream);

}  // namespace vanta
