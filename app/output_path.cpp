#include "app/output_path.hpp"

#include <fmt/format.h>

#include <set>

#include "app/failure.hpp"

namespace vanta {

namespace fs = std::filesystem;

fs::path pathInFolder(const fs::path& folder, const fs::path& input, const FileType* type) {
    fs::path name = input.filename();
    const FileType* borne = fileTypeFor(name);
    const std::string_view wanted = type ? type->extensions.substr(0, type->extensions.find(' ')) : "";
    const std::string_view has = borne ? borne->extensions.substr(0, borne->extensions.find(' ')) : "";
    if (type && wanted != has) name.replace_extension(wanted);
    return folder / name;
}

void checkOutput(const fs::path& output, std::span<const fs::path> read, bool replace) {
    const auto refuse = [&](std::string_view why) {
        throw Failure(fmt::format("{}: {}", output.string(), why));
    };
    std::error_code error;
    const auto status = fs::status(output, error);
    if (status.type() == fs::file_type::not_found) {
        if (fs::is_symlink(fs::symlink_status(output, error)))
            refuse("is a link to a file that does not exist");
        const fs::path folder = output.has_parent_path() ? output.parent_path() : fs::path(".");
        if (!fs::is_directory(folder, error)) refuse("its folder does not exist");
        return;
    }
    if (fs::is_directory(status)) refuse("is a directory");
    // A device would be replaced by a file.
    if (!fs::is_regular_file(status)) refuse("is not a regular file and cannot be replaced");
    for (const fs::path& path : read) {
        if (fs::equivalent(output, path, error)) {
            refuse(fmt::format("is the same file as {}, which is read", path.string()));
        }
    }
    if (!replace) refuse("exists; --force replaces it");
}

void requireDistinct(std::span<const fs::path> outputs) {
    std::set<fs::path> seen;
    for (const fs::path& output : outputs) {
        if (!seen.insert(output.lexically_normal()).second) {
            throw UsageError(fmt::format("two inputs would be written to {}", output.string()));
        }
    }
}

}  // namespace vanta
