#include "audiofile/cut_off.hpp"

#include "audiofile/chunks/chunk_list.hpp"

namespace vanta {

namespace {

/// AU files have one header and no chunks: magic, offset and size of the samples.
bool auPromisesMore(std::string_view header, std::uint64_t length) {
    constexpr std::uint64_t kUnknown = 0xFFFFFFFF;
    if (header.size() < 12) return false;
    const std::uint64_t offset = unpacked(header.substr(4, 4), Endian::Big);
    const std::uint64_t size = unpacked(header.substr(8, 4), Endian::Big);
    return size != kUnknown && offset + size > length;
}

}  // namespace

bool isCutOff(const std::filesystem::path& path) {
    const ChunkList list = listChunks(path);
    if (!list.format) {
        const std::string header = readRange(path, 0, 12);
        return header.starts_with(".snd") && auPromisesMore(header, list.length);
    }
    // A recorder that cannot go back leaves the size open: the samples then reach to the end.
    const Chunk* audio = list.audio();
    return audio && !audio->sizeIsOpen && audio->end() > list.length;
}

}  // namespace vanta
