#include "audiofile/chunks/chunk_list.hpp"

#include <algorithm>
#include <fstream>

namespace vanta {

namespace {

constexpr std::uint64_t kUnknown32 = 0xFFFFFFFF;
constexpr std::uint64_t kUnknown64 = 0xFFFFFFFFFFFFFFFF;
/// No file has more; a damaged one may claim so.
constexpr std::size_t kMostChunks = 65536;

std::string readAt(std::ifstream& file, std::uint64_t offset, std::uint64_t size) {
    std::string bytes(size, '\0');
    file.clear();
    file.seekg(static_cast<std::streamoff>(offset));
    file.read(bytes.data(), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
    return bytes;
}

class Lister {
public:
    Lister(std::ifstream& file, ChunkList& list) : file_(file), list_(list), format_(*list.format) {}

    void run() {
        std::uint64_t at = format_.firstChunk;
        while (at + format_.headerBytes() <= list_.length && list_.chunks.size() < kMostChunks) {
            const std::string header = readAt(file_, at, format_.headerBytes());
            if (header.size() < format_.headerBytes()) return;
            Chunk chunk = parsed(header, at);
            const std::uint64_t left = list_.length - chunk.begin;
            const bool isWhole = chunk.size <= left;
            if (!isWhole && !chunk.isAudio) return;
            list_.chunks.push_back(chunk);
            if (!isWhole) return;
            at = chunk.end() + format_.padding(chunk.end());
        }
    }

private:
    Chunk parsed(const std::string& header, std::uint64_t at) {
        Chunk chunk{header.substr(0, format_.nameBytes), at, at + format_.headerBytes(), 0};
        chunk.size =
            unpacked(std::string_view(header).substr(format_.nameBytes, format_.sizeBytes), format_.endian);
        const bool isUnknown = chunk.size == (format_.sizeBytes == 4 ? kUnknown32 : kUnknown64);
        chunk.isAudio = chunk.name.starts_with(format_.audio);
        if (chunk.name == "ds64") large_ = largeSize(chunk);
        if (isUnknown && chunk.isAudio) chunk.size = large_;
        chunk.sizeIsOpen = chunk.isAudio && chunk.size == kUnknown64;
        if (chunk.sizeIsOpen) {
            chunk.size = list_.length - chunk.begin;
        } else if (format_.countsHeader) {
            chunk.size -= std::min<std::uint64_t>(chunk.size, format_.headerBytes());
        }
        return chunk;
    }

    /// Of the samples of an RF64.
    std::uint64_t largeSize(const Chunk& chunk) {
        constexpr std::uint64_t kBehindRiffSize = 8;
        const std::string size = readAt(file_, chunk.begin + kBehindRiffSize, 8);
        return size.size() == 8 ? unpacked(size, Endian::Little) : kUnknown64;
    }

    std::ifstream& file_;
    ChunkList& list_;
    const ChunkFormat& format_;
    std::uint64_t large_ = kUnknown64;
};

}  // namespace

const Chunk* ChunkList::audio() const {
    const auto found = std::ranges::find_if(chunks, &Chunk::isAudio);
    return found == chunks.end() ? nullptr : &*found;
}

const Chunk* ChunkList::find(std::string_view name) const {
    const auto found = std::ranges::find(chunks, name, &Chunk::name);
    return found == chunks.end() ? nullptr : &*found;
}

ChunkList listChunks(const std::filesystem::path& path) {
    ChunkList list;
    std::error_code error;
    list.length = std::filesystem::file_size(path, error);
    std::ifstream file(path, std::ios::binary);
    if (error || !file) return {};
    list.format = chunkFormatOf(readAt(file, 0, 4));
    if (list.format) Lister(file, list).run();
    return list;
}

std::string readRange(const std::filesystem::path& path, std::uint64_t offset, std::uint64_t size) {
    std::error_code error;
    const std::uint64_t length = std::filesystem::file_size(path, error);
    if (error || offset >= length) return {};
    std::ifstream file(path, std::ios::binary);
    return readAt(file, offset, std::min(size, length - offset));
}

}  // namespace vanta
