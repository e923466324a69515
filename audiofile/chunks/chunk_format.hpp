#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "audiofile/chunks/packed_number.hpp"

namespace vanta {

/// How a kind of file is made of chunks.
struct ChunkFormat {
    /// Chunks mean the same in all files of a family.
    enum Family { Riff, Wave64, Aiff, Caf } family;
    Endian endian;
    std::size_t nameBytes;
    std::size_t sizeBytes;
    bool countsHeader;         ///< the size is that of the whole chunk
    std::uint64_t firstChunk;  ///< offset
    std::string_view audio;    ///< how the name of the chunk with the samples begins
    std::uint64_t grain;       ///< chunks start at multiples of it

    std::size_t headerBytes() const { return nameBytes + sizeBytes; }
    /// What is missing from `offset` to where a chunk may start.
    std::uint64_t padding(std::uint64_t offset) const { return (grain - offset % grain) % grain; }
    /// A whole chunk: header, content and padding. `name` has `nameBytes` characters.
    std::string chunk(std::string_view name, std::string_view content) const;
    std::string sizeField(std::uint64_t contentBytes) const;
};

/// The format of a file that begins with these four characters; null for one that is not made of chunks.
const ChunkFormat* chunkFormatOf(std::string_view magic);

/// The name of a chunk in a Wave64 file: a GUID that begins with the four characters of the WAV's.
std::string wave64Name(std::string_view fourCharacters);

}  // namespace vanta
