#pragma once

#include <filesystem>
#include <string>

namespace vanta {

/// The bytes of a file. Failure, with the system's reason, if it cannot be opened or read, or is a folder.
/// For files that fit into memory many times over.
std::string readWholeFile(const std::filesystem::path& path);

}  // namespace vanta
