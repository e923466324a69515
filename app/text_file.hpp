#pragma once

#include <filesystem>
#include <string>

namespace vanta {

/// Writes `text` into `file`. Failure, which calls it `name`, if that cannot be done.
void writeText(const std::filesystem::path& file, const std::filesystem::path& name, const std::string& text);

}  // namespace vanta
