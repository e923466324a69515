#include "foundation/output_check.hpp"

#include <fmt/format.h>

namespace vanta {

namespace fs = std::filesystem;

void checkOutput(const fs::path& output, std::span<const fs::path> read, bool replace) {
    const auto refuse = [&](std::string_view why) {
        throw Failure(fmt::format("{}: {}", output.string(), why));
    };
    std::error_code error;
    const auto status = fs::status(output, error);
    if (status.type() == fs::file_type::not_found) {
        if (fs::is_symlink(fs::symlink_status(output, error)))
            refuse("is a link to a file that does not exist: use another output");
        const fs::path folder = output.has_parent_path() ? output.parent_path() : fs::path(".");
        if (!fs::is_directory(folder, error)) refuse("its folder does not exist: create it first");
        return;
    }
    if (fs::is_directory(status)) refuse("is a folder: add a file name");
    // A device would be replaced by a file.
    if (!fs::is_regular_file(status))
        refuse("is not a regular file and cannot be replaced: use another output");
    for (const fs::path& path : read) {
        if (fs::equivalent(output, path, error))
            refuse(
                fmt::format("is the same file as {}, which is an input: use another output", path.string()));
    }
    if (!replace) throw OutputExists(fmt::format("{}: already exists", output.string()));
}

}  // namespace vanta
