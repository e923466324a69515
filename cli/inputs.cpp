#include "cli/inputs.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "audiofile/file_format.hpp"
#include "foundation/failure.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

template <typename Walk>
std::vector<fs::path> audioFilesOf(const fs::path& folder) {
    std::vector<fs::path> files;
    std::error_code error;
    for (Walk at(folder, fs::directory_options::skip_permission_denied, error), end; at != end;
         at.increment(error)) {
        if (error) break;
        std::error_code unknown;
        if (at->is_regular_file(unknown) && fileTypeFor(at->path())) files.push_back(at->path());
    }
    if (error) throw Failure(fmt::format("{}: cannot be listed: {}", folder.string(), error.message()));
    std::ranges::sort(files);
    return files;
}

void addFolder(const fs::path& folder, bool recursive, std::vector<Input>& inputs) {
    const auto files = recursive ? audioFilesOf<fs::recursive_directory_iterator>(folder)
                                 : audioFilesOf<fs::directory_iterator>(folder);
    if (files.empty())
        throw Failure(fmt::format("{}: holds no audio files{}", folder.string(),
                                  recursive ? "" : ": use --recursive for the folders below it"));
    for (const fs::path& file : files) inputs.push_back({file, file.lexically_relative(folder)});
}

}  // namespace

std::vector<Input> inputsOf(std::span<const std::string> arguments, bool recursive) {
    std::vector<Input> inputs;
    for (const std::string& argument : arguments) {
        std::error_code error;
        const fs::path path(argument);
        if (fs::is_directory(path, error)) {
            addFolder(path, recursive, inputs);
        } else {
            inputs.push_back({path, path.filename()});
        }
    }
    return inputs;
}

}  // namespace vanta
