#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "audiofile/chunks/chunk_format.hpp"

namespace vanta {

/// A chunk of a file, as its header states it.
struct Chunk {
    std::string name;
    std::uint64_t header;  ///< offset
    std::uint64_t begin;   ///< offset of its content
    std::uint64_t size;    ///< of its content; that of an audio chunk may be more than the file holds
    bool isAudio = false;
    bool sizeIsOpen =
        false;  ///< a recorder that could not go back: the content reaches to the end of the file

    std::uint64_t end() const { return begin + size; }
};

/// The chunks of a file, in order. The last may be an audio chunk that promises more than there is; behind
/// other damage there are none.
struct ChunkList {
    const ChunkFormat* format = nullptr;  ///< null for a file that is not made of chunks
    std::uint64_t length = 0;             ///< of the file
    std::vector<Chunk> chunks;

    const Chunk* audio() const;
    const Chunk* find(std::string_view name) const;
};

ChunkList listChunks(const std::filesystem::path& file);

/// Bytes of a file; fewer where it ends.
std::string readRange(const std::filesystem::path& file, std::uint64_t offset, std::uint64_t size);

}  // namespace vanta
