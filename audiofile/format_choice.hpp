#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "audiofile/encoding.hpp"
#include "audiofile/file_format.hpp"

namespace vanta {

/// What a user asked of the output file; null where nothing was said.
struct FormatWish {
    const FileType* type = nullptr;
    const FileSubtype* subtype = nullptr;
    std::optional<int> sampleRate = std::nullopt;  ///< Hz
    Encoding encoding = {};
};

/// A stream, as far as it matters to the choice of a format.
struct StreamShape {
    int format;  ///< libsndfile's, of the file that it comes from
    int sampleRate;
    int channels;
    std::int64_t frames;
};

/// The format, as libsndfile's number, for `path`: what was wished for; else the type that the extension
/// names, or the source's own where there is none; else the source's subtype, or the nearest that loses
/// nothing. WAV becomes RF64 where it would grow too large. Failure, with the path in front, if the extension
/// is unknown or the type cannot hold the stream.
int chooseFormat(const StreamShape& source, const std::filesystem::path& path, const FormatWish& wish);

/// The sample rate in Hz that the format takes instead of this one: the same, or for codecs that know only a
/// few rates the one that loses least.
int chooseSampleRate(int format, int sampleRate);

/// Whether samples of the one format have more bits than the other can hold, as far as integers are
/// concerned.
bool isReduced(int from, int to);

/// The format for `path` of the same type with float samples; nothing if the type has none.
std::optional<int> floatFormat(int format, const StreamShape& stream, const std::filesystem::path& path);

}  // namespace vanta
