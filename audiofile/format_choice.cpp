#include "audiofile/format_choice.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sndfile.h>

#include <algorithm>
#include <array>
#include <vector>

#include "foundation/ascii.hpp"
#include "foundation/failure.hpp"

namespace vanta {

namespace {

bool canHold(int format, const StreamShape& stream) {
    return canBeWritten(format, stream.channels, stream.sampleRate);
}

Failure unknownExtension(const std::filesystem::path& path) {
    std::vector<std::string_view> known;
    for (const FileType& type : fileTypes()) {
        const auto extension = type.usualExtension();
        if (std::ranges::find(known, extension) == known.end()) known.push_back(extension);
    }
    return Failure(
        fmt::format("{}: {} is no extension of a file type that can be written: use {}, or name the "
                    "type with --format",
                    path.string(), path.extension().string(), fmt::join(known, ", ")));
}

const FileType& chooseType(const StreamShape& source, const std::filesystem::path& path,
                           const FormatWish& wish) {
    if (wish.type) return *wish.type;
    const FileType* own = fileTypeOf(source.format);
    if (own && own->isNamedBy(path)) return *own;
    if (const FileType* named = fileTypeFor(path)) return *named;
    if (path.has_extension()) throw unknownExtension(path);
    if (own) return *own;
    throw Failure(fmt::format("{}: {} files can only be read: choose another extension or file type",
                              path.string(), formatName(source.format)));
}

/// Subtypes that could stand in for the source's, the best first.
std::vector<int> substitutes(const FileSubtype* own) {
    if (own && own->kind == FileSubtype::Integer && own->bits <= 8) {
        return {SF_FORMAT_PCM_S8, SF_FORMAT_PCM_U8, SF_FORMAT_PCM_16, SF_FORMAT_VORBIS,
                SF_FORMAT_MPEG_LAYER_III};
    }
    // A compressed source has no word length of its own; what it was made from rarely had more than 16 bits,
    // but what the limiter makes of it is worth 24.
    if (own && own->kind != FileSubtype::Float && own->bits > 0 && own->bits <= 16) {
        return {SF_FORMAT_PCM_16, SF_FORMAT_PCM_24, SF_FORMAT_VORBIS, SF_FORMAT_MPEG_LAYER_III};
    }
    if (own && own->kind == FileSubtype::Integer && own->bits <= 24) {
        return {SF_FORMAT_PCM_24, SF_FORMAT_PCM_32, SF_FORMAT_FLOAT, SF_FORMAT_VORBIS,
                SF_FORMAT_MPEG_LAYER_III};
    }
    if (own && own->kind == FileSubtype::Integer) {
        return {SF_FORMAT_PCM_32, SF_FORMAT_FLOAT, SF_FORMAT_PCM_24, SF_FORMAT_VORBIS,
                SF_FORMAT_MPEG_LAYER_III};
    }
    return {SF_FORMAT_FLOAT, SF_FORMAT_PCM_24, SF_FORMAT_VORBIS, SF_FORMAT_OPUS, SF_FORMAT_MPEG_LAYER_III};
}

int chooseSubtype(const StreamShape& source, const FileType& type, const std::filesystem::path& path,
                  const FormatWish& wish) {
    if (wish.subtype) return wish.subtype->format;
    const bool opusFile = equalsIgnoringCase(path.extension().string(), ".opus");
    if (opusFile && type.format == SF_FORMAT_OGG) return SF_FORMAT_OPUS;
    const FileSubtype* own = fileSubtypeOf(source.format);
    if (own && canHold(type.format | own->format, source)) return own->format;
    for (const int subtype : substitutes(own)) {
        if (canHold(type.format | subtype, source)) return subtype;
    }
    throw Failure(fmt::format("{}: {} files cannot hold {} channels at {} Hz: choose another file type",
                              path.string(), type.name, source.channels, source.sampleRate));
}

/// Larger than what the file will have, headers, tags and pictures included.
std::int64_t sizeBound(const StreamShape& stream, int format) {
    constexpr std::int64_t kHeaders = 64 << 20;
    const FileSubtype* subtype = fileSubtypeOf(format);
    const int bits = subtype ? subtype->bits : 64;
    const int bytes = subtype && subtype->kind == FileSubtype::Companded ? 1 : (bits + 7) / 8;
    return stream.frames * stream.channels * bytes + kHeaders;
}

}  // namespace

int chooseFormat(const StreamShape& source, const std::filesystem::path& path, const FormatWish& wish) {
    const FileType* type = &chooseType(source, path, wish);
    const bool sameType = (source.format & SF_FORMAT_TYPEMASK) == type->format;
    // Only the extensible header says which channel is which.
    if (source.channels > 2 && type->format == SF_FORMAT_WAV && !sameType) type = fileTypeOf(SF_FORMAT_WAVEX);
    int format = type->format | chooseSubtype(source, *type, path, wish);
    const int order = source.format & SF_FORMAT_ENDMASK;
    if (sameType && canHold(format | order, source)) format |= order;
    constexpr std::int64_t kLargest = 0xFFFFFFFF;
    if (type->beyond4GiB != FileType::Beyond4GiB::TheSame && sizeBound(source, format) > kLargest) {
        if (type->beyond4GiB == FileType::Beyond4GiB::Nothing) {
            throw Failure(fmt::format("{}: {} files cannot exceed 4 GB: choose caf or rf64", path.string(),
                                      type->name));
        }
        format = SF_FORMAT_RF64 | (format & SF_FORMAT_SUBMASK);
    }
    if (!canHold(format, source)) {
        throw Failure(fmt::format(
            "{}: {} files cannot hold {} channels of {} at {} Hz: choose another file type or subtype",
            path.string(), type->name, source.channels, fileSubtypeOf(format)->name, source.sampleRate));
    }
    return format;
}

int chooseSampleRate(int format, int sampleRate) {
    // RFC 6716, section 2; ISO/IEC 11172-3 and 13818-3, and the extension of MP3 to low rates.
    static constexpr std::array kOpus{8000, 12000, 16000, 24000, 48000};
    static constexpr std::array kMp3{8000, 11025, 12000, 16000, 22050, 24000, 32000, 44100, 48000};
    const auto among = [&](std::span<const int> rates, int otherwise) {
        return std::ranges::find(rates, sampleRate) == rates.end() ? otherwise : sampleRate;
    };
    switch (format & SF_FORMAT_SUBMASK) {
        case SF_FORMAT_OPUS:
            return among(kOpus, 48000);
        case SF_FORMAT_MPEG_LAYER_III:
            // Simple ratios convert best.
            return among(kMp3, sampleRate % 11025 == 0 ? 44100 : 48000);
        default:
            return sampleRate;
    }
}

bool isReduced(int from, int to) {
    const FileSubtype* before = fileSubtypeOf(from);
    const FileSubtype* after = fileSubtypeOf(to);
    if (!after || after->kind != FileSubtype::Integer) return false;
    const bool hasWordLength =
        before && (before->kind == FileSubtype::Integer || before->kind == FileSubtype::Companded);
    return !hasWordLength || before->bits > after->bits;
}

std::optional<int> floatFormat(int format, const StreamShape& stream, const std::filesystem::path& path) {
    const int candidate = (format & SF_FORMAT_TYPEMASK) | SF_FORMAT_FLOAT;
    if (!canHold(candidate, stream)) return std::nullopt;
    StreamShape as = stream;
    as.format = candidate;
    return chooseFormat(as, path, {fileTypeOf(candidate), fileSubtypeOf(candidate)});
}

}  // namespace vanta
