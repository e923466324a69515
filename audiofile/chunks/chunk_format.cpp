#include "audiofile/chunks/chunk_format.hpp"

namespace vanta {

const ChunkFormat* chunkFormatOf(std::string_view magic) {
    using enum Endian;
    static constexpr ChunkFormat kRiff{ChunkFormat::Riff, Little, 4, 4, false, 12, "data", 2};
    static constexpr ChunkFormat kRifx{ChunkFormat::Riff, Big, 4, 4, false, 12, "data", 2};
    static constexpr ChunkFormat kForm{ChunkFormat::Aiff, Big, 4, 4, false, 12, "SSND", 2};
    static constexpr ChunkFormat kCaff{ChunkFormat::Caf, Big, 4, 8, false, 8, "data", 1};
    static constexpr ChunkFormat kWave64{ChunkFormat::Wave64, Little, 16, 8, true, 40, "data", 8};
    if (magic == "RIFF" || magic == "RF64") return &kRiff;
    if (magic == "RIFX") return &kRifx;
    if (magic == "FORM") return &kForm;
    if (magic == "riff") return &kWave64;
    return magic == "caff" ? &kCaff : nullptr;
}

std::string ChunkFormat::sizeField(std::uint64_t contentBytes) const {
    return packed(contentBytes + (countsHeader ? headerBytes() : 0), sizeBytes, endian);
}

std::string ChunkFormat::chunk(std::string_view name, std::string_view content) const {
    std::string bytes(name);
    bytes += sizeField(content.size());
    bytes += content;
    return bytes.append(padding(bytes.size()), '\0');
}

std::string wave64Name(std::string_view fourCharacters) {
    // Sony, Wave64: "list" has the end of Microsoft's own GUIDs for RIFF, the others one of their own.
    const std::string_view end =
        fourCharacters == "list" ? std::string_view("\x2F\x91\xCF\x11\xA5\xD6\x28\xDB\x04\xC1\x00\x00", 12)
                                 : std::string_view("\xF3\xAC\xD3\x11\x8C\xD1\x00\xC0\x4F\x8E\xDB\x8A", 12);
    return std::string(fourCharacters).append(end);
}

}  // namespace vanta
