#include "app/render_command.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstdio>

#include "app/channel_mapping.hpp"
#include "app/failure.hpp"
#include "app/interrupt.hpp"
#include "app/output_path.hpp"
#include "app/parameter_text.hpp"
#include "app/preset_library.hpp"
#include "app/suggestion.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

struct Route {
    fs::path input;
    fs::path output;
};

template <typename Entry>
const Entry* chosen(const std::string& name, const Entry* found, const std::vector<Entry>& table,
                    std::string_view option) {
    if (found || name.empty()) return found;
    std::vector<std::string> names;
    for (const Entry& entry : table) names.emplace_back(entry.name);
    throw UsageError(fmt::format("{}: '{}' is none that can be written{}: there are {}", option, name,
                                 suggestion(name, names), fmt::join(names, ", ")));
}

RenderOptions optionsOf(const RenderCommand& command) {
    RenderOptions options;
    options.sideChain = command.sideChain;
    options.layout = chosenLayout(command.layout);
    const std::vector<FileType> types(fileTypes().begin(), fileTypes().end());
    options.format.type = chosen(command.format, findFileType(command.format), types, "--format");
    options.format.subtype =
        chosen(command.subtype, findFileSubtype(command.subtype), fileSubtypes(), "--subtype");
    options.blockSamples = command.blockSamples;
    options.tailSeconds = command.tailSeconds;
    options.ditherSeed = command.ditherSeed;
    options.replace = command.replace;
    options.quiet = command.quiet;
    if (!command.preset.empty()) options.alsoRead.emplace_back(command.preset);
    return options;
}

std::vector<Route> routesInto(const fs::path& folder, std::span<const std::string> inputs,
                              const FileType* type) {
    std::error_code error;
    if (!fs::is_directory(folder, error)) {
        throw Failure(fmt::format("{}: is not a folder to write into", folder.string()));
    }
    std::vector<Route> routes;
    std::vector<fs::path> outputs;
    for (const std::string& input : inputs) {
        outputs.push_back(pathInFolder(folder, input, type));
        routes.push_back({input, outputs.back()});
    }
    requireDistinct(outputs);
    return routes;
}

std::vector<Route> routesOf(const RenderCommand& command, const FileType* type) {
    const std::span<const std::string> files(command.files);
    if (!command.outDir.empty()) return routesInto(command.outDir, files, type);
    if (files.size() < 2)
        throw UsageError("render: an input and an output are needed; see 'vanta render --help'");
    std::error_code error;
    if (fs::is_directory(files.back(), error))
        return routesInto(files.back(), files.first(files.size() - 1), type);
    if (files.size() > 2) throw UsageError("render: several inputs need --out-dir or a folder to write into");
    return {{files[0], files[1]}};
}

void tell(const FileReport& report, const LimiterSettings& settings, bool quiet) {
    for (const std::string& warning : report.warnings) fmt::print(stderr, "vanta: warning: {}\n", warning);
    if (quiet) return;
    fmt::print("{}\n", summary(report, settings));
    std::fflush(stdout);
}

}  // namespace

// The preset first, then the options, then what is set by name: the more particular has the last word.
void applySettings(LimiterSettings& settings, const RenderCommand& command) {
    if (!command.preset.empty()) loadNamedPreset(settings, command.preset);
    if (!command.sideChain.empty()) settings.sideChainTriggering.setMapped(true);
    for (const auto& [option, text] : command.parameters) setByOption(settings, *option, text);
    for (const std::string& assignment : command.assignments) setByAssignment(settings, assignment);
}

int runRender(const RenderCommand& command) {
    const RenderOptions options = optionsOf(command);
    LimiterSettings settings;
    applySettings(settings, command);
    const auto routes = routesOf(command, options.format.type);

    watchForInterrupts();
    int code = kExitDone;
    for (const auto& [input, output] : routes) {
        try {
            tell(renderFile(input, output, settings, options), settings, options.quiet);
        } catch (const Failure& failure) {
            fmt::print(stderr, "vanta: {}\n", failure.what());
            code = kExitFailed;
        }
    }
    return code;
}

}  // namespace vanta
