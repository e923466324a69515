#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace vanta {

/// A file to be read.
struct Input {
    std::filesystem::path file;
    std::filesystem::path place;  ///< below a folder that outputs go to
};

/// What the arguments name: files as they are, and of folders the audio files that they hold, in the order of
/// their names; with `recursive` those in folders below as well. Failure for a folder without audio files.
std::vector<Input> inputsOf(std::span<const std::string> arguments, bool recursive);

}  // namespace vanta
