#include "cli/routes.hpp"

#include <fmt/format.h>

#include <set>

#include "cli/exit_code.hpp"
#include "cli/inputs.hpp"
#include "foundation/failure.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kStem = "{stem}";

std::string namedAfter(const std::string& pattern, const std::string& stem) {
    if (pattern.empty()) return stem;
    std::string name = pattern;
    for (std::size_t at = name.find(kStem); at != std::string::npos; at = name.find(kStem, at + stem.size()))
        name.replace(at, kStem.size(), stem);
    return name;
}

void checkName(const std::string& pattern) {
    if (pattern.empty()) return;
    if (pattern.find(kStem) == std::string::npos)
        throw UsageError(
            fmt::format("--name '{}' gives all outputs one name: use {{stem}} for the input's, as in "
                        "'{{stem}}-master'",
                        pattern));
    if (pattern.find('/') != std::string::npos)
        throw UsageError("--name is a name without folders: use --out-dir for the folder");
}

fs::path placeInFolder(const fs::path& folder, const Input& input, const RouteWishes& wishes) {
    const FileType* own = fileTypeFor(input.place);
    fs::path extension = input.place.extension();
    if (wishes.type && (!own || own->usualExtension() != wishes.type->usualExtension()))
        extension = fmt::format(".{}", wishes.type->usualExtension());
    const std::string name = namedAfter(wishes.name, input.place.stem().string());
    return folder / input.place.parent_path() / (name + extension.string());
}

std::vector<Route> routesInto(const fs::path& folder, std::span<const std::string> arguments,
                              const RouteWishes& wishes) {
    std::vector<Route> routes;
    std::set<fs::path> seen;
    for (const Input& input : inputsOf(arguments, wishes.recursive)) {
        const fs::path output = placeInFolder(folder, input, wishes);
        if (!seen.insert(output.lexically_normal()).second)
            throw UsageError(
                fmt::format("two inputs would be written to {}: rename one of them", output.string()));
        routes.push_back({input.file, output});
    }
    return routes;
}

}  // namespace

std::vector<Route> routesOf(const RouteWishes& wishes) {
    const auto& files = wishes.files;
    checkName(wishes.name);
    if (!wishes.outDir.empty() && !files.empty()) return routesInto(wishes.outDir, files, wishes);
    if (files.size() < 2) throw UsageError("render needs an input and an output; see 'vanta render --help'");
    std::error_code error;
    if (fs::is_directory(files.back(), error))
        return routesInto(files.back(), files.first(files.size() - 1), wishes);
    if (files.size() > 2) throw UsageError("several inputs need a folder for their outputs: use --out-dir");
    if (fs::is_directory(files.front(), error))
        throw UsageError(fmt::format(
            "{} is a folder, so its files need a folder for their outputs: use --out-dir", files.front()));
    if (!wishes.name.empty()) throw UsageError("--name needs --out-dir: here the output is named already");
    return {{files[0], files[1]}};
}

}  // namespace vanta
