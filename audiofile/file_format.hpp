#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace vanta {

/// The order of the speakers in files that do not name them.
enum class SpeakerOrder {
    Wave,   ///< that of the bits in a WAV's channel mask; also of FLAC, and taken for AIFF and CAF
    Vorbis  ///< Xiph's: L C R, and the LFE last
};

/// A kind of file that can be written. What can be read needs no row.
struct FileType {
    std::string_view name;
    int format;                   ///< libsndfile's major format
    std::string_view extensions;  ///< the usual one first, separated by blanks
    std::string_view description;
    SpeakerOrder order;
    /// What is written where the file would exceed 4 GiB, the most that 32-bit sizes can count.
    enum class Beyond4GiB { TheSame, Rf64, Nothing } beyond4GiB;
    /// Its usual order is what any reader takes for granted.
    bool orderIsFixed = false;

    std::string_view usualExtension() const { return extensions.substr(0, extensions.find(' ')); }
    /// Whether the path ends in one of the extensions.
    bool isNamedBy(const std::filesystem::path& path) const;
};

/// A kind of sample that can be written.
struct FileSubtype {
    std::string_view name;
    int format;  ///< libsndfile's subtype
    enum Kind { Integer, Float, Companded, Lossy } kind;
    int bits;  ///< that a sample takes, or for Companded is worth; 0 for Lossy
    std::string_view description;

    /// Whether a sample beyond full scale cannot be written.
    bool isLimited() const { return kind == Integer || kind == Companded; }
};

std::span<const FileType> fileTypes();
std::span<const FileSubtype> fileSubtypes();

/// By name, without regard to case. Null if there is none that can be written.
const FileType* findFileType(std::string_view name);
const FileSubtype* findFileSubtype(std::string_view name);
/// Of a libsndfile format; null for what can only be read.
const FileType* fileTypeOf(int format);
const FileSubtype* fileSubtypeOf(int format);
/// The first type that the path's extension names; null if there is none.
const FileType* fileTypeFor(const std::filesystem::path& path);
/// Whether this is Apple Lossless of more than 16 bits: `audiofile/alac` writes it, of one or two channels.
bool isOwnAlac(int format);
/// Whether there are files of this format, channels and sample rate.
bool canBeWritten(int format, int channels, int sampleRate);
/// "wav pcm_24", or "mp3"; libsndfile's own words for what can only be read.
std::string formatName(int format);

}  // namespace vanta
