#include "audiofile/metadata/flac_blocks.hpp"

#include "audiofile/chunks/chunk_list.hpp"
#include "audiofile/chunks/chunk_writing.hpp"

namespace vanta {

namespace {

constexpr unsigned kApplication = 2;
constexpr unsigned kCueSheet = 5;
constexpr unsigned kLastBlock = 0x80;
constexpr std::size_t kHeaderBytes = 4;
constexpr std::uint64_t kStreamInfoBytes = 34;

/// Where "fLaC" stands: some files have an ID3v2 tag in front of it.
std::uint64_t markerOf(const std::filesystem::path& file) {
    const std::string start = readRange(file, 0, 10);
    if (start.size() < 10 || !start.starts_with("ID3")) return 0;
    std::uint64_t size = 0;
    for (std::size_t i = 6; i < 10; ++i) size = size << 7 | (static_cast<unsigned char>(start[i]) & 0x7FU);
    return 10 + size;
}

}  // namespace

FlacBlocks readFlacBlocks(const std::filesystem::path& file) {
    FlacBlocks blocks;
    std::uint64_t at = markerOf(file);
    if (readRange(file, at, 4) != "fLaC") return blocks;
    at += 4;
    for (bool isLast = false; !isLast;) {
        const std::string header = readRange(file, at, kHeaderBytes);
        if (header.size() < kHeaderBytes) break;
        const auto first = static_cast<unsigned char>(header[0]);
        isLast = first & kLastBlock;
        const unsigned type = first & ~kLastBlock;
        const std::uint64_t size = unpacked(std::string_view(header).substr(1), Endian::Big);
        if (type == kApplication || type == kCueSheet) {
            std::string block = readRange(file, at, kHeaderBytes + size);
            if (block.size() < kHeaderBytes + size) break;
            block[0] = static_cast<char>(type);
            (type == kApplication ? blocks.applications : blocks.cueSheet) += block;
        }
        at += kHeaderBytes + size;
    }
    return blocks;
}

void addFlacBlocks(const std::filesystem::path& file, const std::string& blocks) {
    // Behind the stream information, which must be the first and, before tags, is never the last.
    if (!blocks.empty()) writeRange(file, 4 + kHeaderBytes + kStreamInfoBytes, blocks, true);
}

}  // namespace vanta
