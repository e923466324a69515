#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace vanta {

/// A chunk to be added to a file.
struct NewChunk {
    std::string name;  ///< as the file's format spells it
    std::string content;
    bool beforeAudio = false;  ///< else behind all others
};

/// Adds chunks to a finished file that is made of chunks, in their order, and corrects its sizes. In a Wave64
/// all of them stand before the audio. Failure,
/// without a name in front, if the file would grow beyond what its sizes can count or the disk refuses; it is
/// then damaged.
void addChunks(const std::filesystem::path& file, std::span<const NewChunk> chunks);

/// Puts bytes over those at `offset`, or, with `insert`, in front of them. Failure as above.
void writeRange(const std::filesystem::path& file, std::uint64_t offset, std::string_view bytes,
                bool insert = false);

/// Corrects what the head of a file that is made of chunks says of the file's length. Failure as above.
void updateLength(const std::filesystem::path& file);

}  // namespace vanta
