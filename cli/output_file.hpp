#pragma once

#include <filesystem>
#include <functional>
#include <string_view>

namespace vanta {

/// Writes a file whole or not at all: `write` fills the path that it is given. Failure if that cannot be
/// done, and whatever `write` throws.
void writeOutput(const std::filesystem::path& file,
                 const std::function<void(const std::filesystem::path&)>& write);
/// The same for a text or any other bytes.
void writeOutput(const std::filesystem::path& file, std::string_view content);

}  // namespace vanta
