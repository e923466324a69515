#pragma once

#include <span>
#include <string>
#include <vector>

#include "audiofile/file_format.hpp"
#include "mastering/file_render.hpp"

namespace vanta {

/// Where the files of a command go. `files` are inputs and last the output or a folder, or with `outDir`
/// inputs only. In a folder an input keeps its name, with the extension of `type` if that is given and the
/// name has another. UsageError if there are too few or too many files or two would have one output, Failure
/// without the folder.
std::vector<Route> routesOf(std::span<const std::string> files, const std::string& outDir,
                            const FileType* type);

}  // namespace vanta
