#include "audiofile/format_choice.hpp"

#include <fmt/format.h>
#include <sndfile.h>

#include <vector>

#include "foundation/ascii.hpp"
#include "foundation/failure.hpp"

namespace vanta {

namespace {

bool canHold(int format, const StreamShape& stream) {
    SF_INFO info{};
    info.samplerate = stream.sampleRate;
    info.channels = stream.channels;
    info.format = format;
    return sf_format_check(&info) != 0;
}

const FileType& chooseType(const StreamShape& source, const std::filesystem::path& path,
                           const FormatWish& wish) {
    if (wish.type) return *wish.type;
    const FileType* own = fileTypeOf(source.format);
    if (own && own->isNamedBy(path)) return *own;
    if (const FileType* named = fileTypeFor(path)) return *named;
    if (own) return *own;
    throw Failure(fmt::format("{}: {} files can only be read: choose another extension or file type",
                              path.string(), formatName(source.format)));
}

/// Subtypes that could stand in for the source's, the best first.
std::vector<int> substitutes(const FileSubtype* own) {
    if (own && own->kind == FileSubtype::Integer && own->bits <= 8) {
        return {SF_FORMAT_PCM_S8, SF_FORMAT_PCM_U8, SF_FORMAT_PCM_16, SF_FORMAT_VORBIS};
    }
    // A compressed source has no word length of its own; what it was made from rarely had more than 16 bits,
    // but what the limiter makes of it is worth 24.
    if (own && own->kind != FileSubtype::Float && own->bits > 0 && own->bits <= 16) {
        return {SF_FORMAT_PCM_16, SF_FORMAT_PCM_24, SF_FORMAT_VORBIS};
    }
    if (own && own->kind == FileSubtype::Integer && own->bits <= 24) {
        return {SF_FORMAT_PCM_24, SF_FORMAT_PCM_32, SF_FORMAT_FLOAT, SF_FORMAT_VORBIS};
    }
    if (own && own->kind == FileSubtype::Integer) {
        return {SF_FORMAT_PCM_32, SF_FORMAT_FLOAT, SF_FORMAT_PCM_24, SF_FORMAT_VORBIS};
    }
    return {SF_FORMAT_FLOAT, SF_FORMAT_PCM_24, SF_FORMAT_VORBIS, SF_FORMAT_OPUS};
}

int chooseSubtype(const StreamShape& source, const FileType& type, const std::filesystem::path& path,
                  const FormatWish& wish) {
    if (wish.subtype) return wish.subtype->format;
    const bool opusFile = equalsIgnoringCase(path.extension().string(), ".opus");
    if (opusFile && type.format == SF_FORMAT_OGG) return SF_FORMAT_OPUS;
    const FileSubtype* own = fileSubtypeOf(source.format);
    if (own && own->written && canHold(type.format | own->format, source)) return own->format;
    for (const int subtype : substitutes(own)) {
        if (canHold(type.format | subtype, source)) return subtype;
    }
    throw Failure(fmt::format("{}: {} files cannot hold {} channels at {} Hz: choose another file type",
                              path.string(), type.name, source.channels, source.sampleRate));
}

/// Larger than what the file will have, headers and tags included.
std::int64_t sizeBound(const StreamShape& stream, int format) {
    constexpr std::int64_t kHeaders = 1 << 20;
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

std::optional<int> floatFormat(int format, const StreamShape& stream, const std::filesystem::path& path) {
    const int candidate = (format & SF_FORMAT_TYPEMASK) | SF_FORMAT_FLOAT;
    if (!canHold(candidate, stream)) return std::nullopt;
    StreamShape as = stream;
    as.format = candidate;
    return chooseFormat(as, path, {fileTypeOf(candidate), fileSubtypeOf(candidate)});
}

}  // namespace vanta
