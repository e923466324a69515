#pragma once

#include <filesystem>
#include <span>
#include <vector>

#include "app/file_format.hpp"

namespace vanta {

/// Where an input goes in a folder: its own name, with the extension of the type if one is asked for that
/// the name does not bear.
std::filesystem::path pathInFolder(const std::filesystem::path& folder, const std::filesystem::path& input,
                                   const FileType* type);

/// Failure if `output` may not be written: it is one of the files that are read, it stands and is not to be
/// replaced, or it is no ordinary file.
void checkOutput(const std::filesystem::path& output, std::span<const std::filesystem::path> read,
                 bool replace);

/// UsageError if two inputs would be written to one file.
void requireDistinct(std::span<const std::filesystem::path> outputs);

}  // namespace vanta
