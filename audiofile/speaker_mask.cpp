#include "audiofile/speaker_mask.hpp"

#include <fmt/format.h>
#include <sndfile.h>
#include <taglib/flacfile.h>
#include <taglib/xiphcomment.h>

#include <algorithm>
#include <array>
#include <charconv>

#include "audiofile/chunks/chunk_list.hpp"
#include "audiofile/chunks/chunk_writing.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kExtensible = 0xFFFE;
constexpr std::size_t kPlainFormatBytes = 16;
constexpr std::size_t kMaskAt = 20;
/// Apple's tag of a channel layout that is a bitmap, with the bits of the WAV's mask.
constexpr std::uint64_t kUseBitmap = 0x10000;
constexpr const char* kFlacMaskTag = "WAVEFORMATEXTENSIBLE_CHANNEL_MASK";

const Chunk* formatChunk(const ChunkList& list) {
    return list.find(list.format->family == ChunkFormat::Wave64 ? wave64Name("fmt ") : "fmt ");
}

const char* layoutChunkName(const ChunkList& list) {
    return list.format->family == ChunkFormat::Aiff ? "CHAN" : "chan";
}

bool hasFormatChunk(const ChunkList& list) {
    return list.format->family == ChunkFormat::Riff || list.format->family == ChunkFormat::Wave64;
}

bool isExtensible(std::string_view format, Endian endian) {
    return format.size() >= kMaskAt + 4 && unpacked(format.substr(0, 2), endian) == kExtensible;
}

std::optional<std::uint32_t> maskInChunks(const fs::path& file, const ChunkList& list) {
    const Endian endian = list.format->endian;
    const bool isWave = hasFormatChunk(list);
    const Chunk* chunk = isWave ? formatChunk(list) : list.find(layoutChunkName(list));
    if (!chunk) return std::nullopt;
    const std::string bytes = readRange(file, chunk->begin, std::min<std::uint64_t>(chunk->size, 40));
    const std::string_view text = bytes;
    if (isWave && isExtensible(text, endian))
        return static_cast<std::uint32_t>(unpacked(text.substr(kMaskAt, 4), endian));
    if (!isWave && text.size() >= 8 && unpacked(text.substr(0, 4), endian) == kUseBitmap)
        return static_cast<std::uint32_t>(unpacked(text.substr(4, 4), endian));
    return std::nullopt;
}

std::optional<std::uint32_t> maskInFlac(const fs::path& path) {
    TagLib::FLAC::File file(path.c_str(), false);
    if (!file.isValid() || !file.hasXiphComment()) return std::nullopt;
    const auto& fields = file.xiphComment()->fieldListMap();
    if (!fields.contains(kFlacMaskTag)) return std::nullopt;
    const std::string text = fields[kFlacMaskTag].front().to8Bit();
    std::uint32_t mask = 0;
    const std::size_t digits = text.starts_with("0x") || text.starts_with("0X") ? 2 : 0;
    const auto end = text.data() + text.size();
    const auto read = std::from_chars(text.data() + digits, end, mask, 16);
    return read.ec == std::errc() && read.ptr == end ? std::optional(mask) : std::nullopt;
}

bool isFlac(const fs::path& file) {
    return readRange(file, 0, 4) == "fLaC";
}

/// A plain format becomes an extensible one, which is longer, with the old code as the start of a GUID.
void extendFormat(const fs::path& file, const ChunkList& list, const Chunk& chunk, std::uint32_t mask) {
    const Endian endian = list.format->endian;
    const std::string plain = readRange(file, chunk.begin, kPlainFormatBytes);
    std::string format = packed(kExtensible, 2, endian) + plain.substr(2) + packed(22, 2, endian);
    format += plain.substr(14, 2) + packed(mask, 4, endian) + plain.substr(0, 2);
    format += std::string("\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 14);
    const std::uint64_t old = chunk.size + list.format->padding(chunk.end());
    const std::string room(format.size() - old, '\0');
    writeRange(file, chunk.begin + old, room, true);
    writeRange(file, chunk.header, chunk.name + list.format->sizeField(format.size()) + format);
    updateLength(file);
}

bool stateInFormat(const fs::path& file, const ChunkList& list, std::uint32_t mask) {
    const Chunk* chunk = formatChunk(list);
    if (!chunk || chunk->size < kPlainFormatBytes) return false;
    const std::string format = readRange(file, chunk->begin, kMaskAt + 4);
    const Endian endian = list.format->endian;
    if (isExtensible(format, endian)) {
        writeRange(file, chunk->begin + kMaskAt, packed(mask, 4, endian));
        return true;
    }
    if (chunk->size > 24) return false;
    extendFormat(file, list, *chunk, mask);
    return true;
}

}  // namespace

std::optional<std::uint32_t> maskOf(std::span<const int> speakers) {
    std::uint32_t mask = 0;
    for (const int speaker : speakers) {
        const auto found = std::ranges::find(kSpeakerOfMaskBit, speaker);
        if (found == kSpeakerOfMaskBit.end()) return std::nullopt;
        const std::uint32_t bit = 1U << (found - kSpeakerOfMaskBit.begin());
        if (mask >= bit) return std::nullopt;
        mask |= bit;
    }
    return mask;
}

std::vector<int> speakersOf(std::uint32_t mask) {
    std::vector<int> speakers;
    for (std::size_t bit = 0; bit < kSpeakerOfMaskBit.size(); ++bit) {
        if (mask >> bit & 1) speakers.push_back(kSpeakerOfMaskBit[bit]);
    }
    return speakers;
}

std::optional<std::uint32_t> statedMask(const fs::path& file) {
    const ChunkList list = listChunks(file);
    if (list.format) return maskInChunks(file, list);
    return isFlac(file) ? maskInFlac(file) : std::nullopt;
}

bool stateMask(const fs::path& path, std::uint32_t mask) {
    const ChunkList list = listChunks(path);
    if (list.format && hasFormatChunk(list)) return stateInFormat(path, list, mask);
    if (list.format) {
        if (list.find(layoutChunkName(list))) return false;
        const Endian endian = list.format->endian;
        const std::string layout =
            packed(kUseBitmap, 4, endian) + packed(mask, 4, endian) + packed(0, 4, endian);
        const NewChunk chunk{layoutChunkName(list), layout, true};
        addChunks(path, std::span(&chunk, 1));
        return true;
    }
    if (!isFlac(path)) return false;
    TagLib::FLAC::File file(path.c_str(), false);
    file.xiphComment(true)->addField(kFlacMaskTag, fmt::format("{:#06X}", mask));
    return file.save();
}

}  // namespace vanta
