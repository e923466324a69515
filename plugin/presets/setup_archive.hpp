#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace vanta {

// The archive of files that a product brings along. All integers are little-endian.
//
// A header of 53 bytes begins with "QS/ISB/3"; the rest of it has no meaning. Then records follow, 76 bytes
// each: byte 0 is the length of a name that starts at byte 1, bytes 68 to 71 are a size and bytes 72 to
// 75 a second number. -1 there makes a folder: its records follow at once, `size` bytes in all. Else the
// second number is the size of a file, whose bytes follow as one zlib stream (RFC 1950) of `size` bytes, or
// not at all if it is empty. A record with an empty name ends its level.

inline constexpr std::size_t kArchiveHeaderSize = 53;
inline constexpr std::size_t kArchiveRecordSize = 76;
inline constexpr std::size_t kArchiveSizeOffset = 68;
inline constexpr std::size_t kArchiveSecondOffset = 72;
inline constexpr char kArchiveMagic[] = "QS/ISB/3";

/// Writes what the archive holds under the top-level folder `folderName` (without regard to the case of ASCII
/// letters) to `destination`, which is made if needed. With `overwrite` false a file that exists stays. Each
/// file is written whole or not at all, and never outside `destination`. False if the archive has no such
/// folder or anything failed; what can be written is written all the same. Needs no memory to speak of,
/// whatever sizes the archive promises.
bool extractFolder(std::span<const std::byte> archive, const std::string& folderName,
                   const std::filesystem::path& destination, bool overwrite);

/// A file of an archive, in memory.
struct ArchivedFile {
    std::string path;  ///< below the folder that was asked for, with slashes
    std::vector<std::byte> bytes;
};

/// The files below a top-level folder in the archive's order, those of a folder after its name. Damaged ones
/// are left out, as are any above 1 MiB.
std::vector<ArchivedFile> readFolder(std::span<const std::byte> archive, const std::string& folderName);

}  // namespace vanta
