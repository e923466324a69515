#pragma once

#include <span>
#include <string>
#include <vector>

#include "audiofile/file_format.hpp"
#include "mastering/file_render.hpp"

namespace vanta {

/// What a command line says of inputs and outputs.
struct RouteWishes {
    std::span<const std::string> files;  ///< inputs, and last the output or a folder unless there is `outDir`
    std::string outDir;                  ///< empty: none
    std::string name;                ///< of outputs in a folder, "{stem}" for the input's; empty: the same
    bool recursive = false;          ///< take the audio files in folders below those named
    const FileType* type = nullptr;  ///< whose extension outputs in a folder get; null: the input's
};

/// Where the files of a command go. What comes out of a folder keeps its place below it. UsageError if there
/// are too few or too many files or two would have one output, Failure for folders without audio.
std::vector<Route> routesOf(const RouteWishes& wishes);

}  // namespace vanta
