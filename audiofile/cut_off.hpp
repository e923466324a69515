#pragma once

#include <filesystem>

namespace vanta {

/// Whether the header of a WAV, RF64, Wave64, AIFF, CAF or AU file promises more samples than the file holds.
/// libsndfile takes such a file for a shorter one, and the lost end would go unnoticed. False for other
/// files.
bool isCutOff(const std::filesystem::path& path);

}  // namespace vanta
