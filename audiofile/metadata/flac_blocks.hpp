#pragma once

#include <filesystem>
#include <string>

namespace vanta {

/// The metadata blocks of a FLAC file that are neither about its coding nor tags nor pictures, as they stand
/// (RFC 9639, section 8).
struct FlacBlocks {
    std::string applications;  ///< data of other programs
    std::string cueSheet;      ///< positions in samples
};

/// None for a file that is no FLAC, or damaged.
FlacBlocks readFlacBlocks(const std::filesystem::path& file);
/// Puts blocks into a finished FLAC file. Failure, without a name in front, if the disk refuses.
void addFlacBlocks(const std::filesystem::path& file, const std::string& blocks);

}  // namespace vanta
