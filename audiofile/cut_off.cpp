#include "audiofile/cut_off.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <span>
#include <string_view>

namespace vanta {

namespace {

enum class Endian { Little, Big };

std::uint64_t number(std::span<const char> bytes, Endian endian) {
    std::uint64_t result = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::size_t from = endian == Endian::Big ? i : bytes.size() - 1 - i;
        result = result << 8 | static_cast<unsigned char>(bytes[from]);
    }
    return result;
}

/// How a kind of file is made of chunks.
struct ChunkFormat {
    Endian endian;
    std::size_t nameBytes;
    std::size_t sizeBytes;
    bool countsHeader;         ///< the size is that of the whole chunk
    std::uint64_t firstChunk;  ///< offset
    std::string_view audio;    ///< how the name of the chunk with the samples begins
    std::uint64_t grain;       ///< chunks start at multiples of it

    std::size_t headerBytes() const { return nameBytes + sizeBytes; }
};

constexpr std::uint64_t kUnknown32 = 0xFFFFFFFF;
constexpr std::uint64_t kUnknown64 = 0xFFFFFFFFFFFFFFFF;

const ChunkFormat* formatOf(std::string_view magic) {
    static constexpr ChunkFormat kRiff{Endian::Little, 4, 4, false, 12, "data", 2};
    static constexpr ChunkFormat kRifx{Endian::Big, 4, 4, false, 12, "data", 2};
    static constexpr ChunkFormat kForm{Endian::Big, 4, 4, false, 12, "SSND", 2};
    static constexpr ChunkFormat kCaff{Endian::Big, 4, 8, false, 8, "data", 1};
    static constexpr ChunkFormat kWave64{Endian::Little, 16, 8, true, 40, "data", 8};
    if (magic == "RIFF" || magic == "RF64") return &kRiff;
    if (magic == "RIFX") return &kRifx;
    if (magic == "FORM") return &kForm;
    if (magic == "riff") return &kWave64;
    return magic == "caff" ? &kCaff : nullptr;
}

template <std::size_t N>
bool readAt(std::ifstream& file, std::uint64_t offset, std::array<char, N>& bytes, std::size_t count = N) {
    file.seekg(static_cast<std::streamoff>(offset));
    return static_cast<bool>(file.read(bytes.data(), static_cast<std::streamsize>(count)));
}

/// Of the samples of an RF64, from its "ds64" chunk.
std::uint64_t largeSize(std::ifstream& file, std::uint64_t chunk) {
    std::array<char, 8> size{};
    constexpr std::uint64_t kBehindRiffSize = 16;
    return readAt(file, chunk + kBehindRiffSize, size) ? number(size, Endian::Little) : kUnknown64;
}

bool promisesMore(std::ifstream& file, std::uint64_t length, const ChunkFormat& format) {
    std::uint64_t large = kUnknown64;
    std::array<char, 24> header{};
    const std::size_t headerBytes = format.headerBytes();
    std::uint64_t chunk = format.firstChunk;
    while (chunk + headerBytes <= length && readAt(file, chunk, header, headerBytes)) {
        const std::string_view name(header.data(), 4);
        std::uint64_t size =
            number(std::span(header).subspan(format.nameBytes, format.sizeBytes), format.endian);
        if (format.countsHeader) size -= std::min<std::uint64_t>(size, headerBytes);
        const bool unknown = size == (format.sizeBytes == 4 ? kUnknown32 : kUnknown64);
        if (name == "ds64") large = largeSize(file, chunk);
        const std::uint64_t left = length - chunk - headerBytes;
        if (name == format.audio) {
            // A recorder that cannot go back leaves the size open: the samples then reach to the end.
            if (unknown) size = large;
            return size != kUnknown64 && size > left;
        }
        if (size > left) return false;
        chunk += headerBytes + size;
        chunk += (format.grain - chunk % format.grain) % format.grain;
    }
    return false;
}

/// AU files have one header and no chunks: magic, offset and size of the samples.
bool auPromisesMore(std::ifstream& file, std::uint64_t length) {
    std::array<char, 8> numbers{};
    if (!readAt(file, 4, numbers)) return false;
    const std::uint64_t offset = number(std::span(numbers).first(4), Endian::Big);
    const std::uint64_t size = number(std::span(numbers).last(4), Endian::Big);
    return size != kUnknown32 && offset + size > length;
}

}  // namespace

bool isCutOff(const std::filesystem::path& path) {
    std::error_code error;
    const std::uint64_t length = std::filesystem::file_size(path, error);
    std::ifstream file(path, std::ios::binary);
    std::array<char, 4> magic{};
    if (error || !file || !readAt(file, 0, magic)) return false;
    const std::string_view name(magic.data(), magic.size());
    if (name == ".snd") return auPromisesMore(file, length);
    const ChunkFormat* format = formatOf(name);
    return format && promisesMore(file, length, *format);
}

}  // namespace vanta
