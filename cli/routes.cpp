#include "cli/routes.hpp"

#include <fmt/format.h>

#include <set>

#include "cli/exit_code.hpp"
#include "foundation/failure.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

fs::path pathInFolder(const fs::path& folder, const fs::path& input, const FileType* type) {
    fs::path name = input.filename();
    const FileType* own = fileTypeFor(name);
    if (type && (!own || own->usualExtension() != type->usualExtension()))
        name.replace_extension(type->usualExtension());
    return folder / name;
}

std::vector<Route> routesInto(const fs::path& folder, std::span<const std::string> inputs,
                              const FileType* type) {
    std::error_code error;
    if (!fs::is_directory(folder, error))
        throw Failure(fmt::format("{}: is not a folder: create it first or use another", folder.string()));
    std::vector<Route> routes;
    std::set<fs::path> seen;
    for (const std::string& input : inputs) {
        const fs::path output = pathInFolder(folder, input, type);
        if (!seen.insert(output.lexically_normal()).second)
            throw UsageError(
                fmt::format("two inputs would be written to {}: rename one of them", output.string()));
        routes.push_back({input, output});
    }
    return routes;
}

}  // namespace

std::vector<Route> routesOf(std::span<const std::string> files, const std::string& outDir,
                            const FileType* type) {
    if (!outDir.empty() && !files.empty()) return routesInto(outDir, files, type);
    if (files.size() < 2) throw UsageError("render needs an input and an output; see 'vanta render --help'");
    std::error_code error;
    if (fs::is_directory(files.back(), error))
        return routesInto(files.back(), files.first(files.size() - 1), type);
    if (files.size() > 2) throw UsageError("several inputs need a folder for their outputs: use --out-dir");
    return {{files[0], files[1]}};
}

}  // namespace vanta
