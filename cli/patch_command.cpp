#include "cli/patch_command.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string_view>

#include "cli/exit_code.hpp"
#include "cli/messages.hpp"
#include "cli/render_command.hpp"
#include "cli/texts.hpp"
#include "foundation/failure.hpp"
#include "foundation/whole_file.hpp"
#include "limiter/styles/style_error.hpp"
#include "limiter/styles/style_patch.hpp"

namespace vanta {

namespace {

/// A style that fills every slot and every parameter takes a third of it.
constexpr std::uintmax_t kLongestSource = 100'000;
constexpr std::size_t kLongestLine = 400;
constexpr std::size_t kMostFaults = 20;

std::string readSource(const std::string& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    const bool tooLong = !error && size > kLongestSource;
    std::string text = tooLong ? std::string() : readWholeFile(file);
    if (tooLong || text.find('\0') != std::string::npos) {
        throw Failure(fmt::format("{}: is not a style source: the source comes first, then the audio", file));
    }
    return text;
}

void printFaults(std::string_view faults) {
    std::size_t count = 0;
    while (!faults.empty()) {
        const std::size_t end = std::min(faults.find('\n'), faults.size());
        const std::string_view line = faults.substr(0, std::min(end, kLongestLine));
        if (++count <= kMostFaults) printError(std::string(line) + (end > kLongestLine ? "..." : ""));
        faults.remove_prefix(std::min(end + 1, faults.size()));
    }
    if (count > kMostFaults) printError(fmt::format("and {} more", count - kMostFaults));
}

int runPatch(RenderArguments arguments) {
    if (!arguments.settings.setterOf("Style").empty())
        throw UsageError("Style cannot be set: the source takes its place");
    const std::size_t fewest = arguments.outDir.empty() ? 3 : 2;
    if (arguments.files.size() < fewest)
        throw UsageError("patch needs a style source, an input and an output; see 'vanta patch --help'");
    const std::string source = arguments.files.front();
    arguments.files.erase(arguments.files.begin());
    try {
        StylePatch patch = readStylePatch(readSource(source), source);
        return runRender(arguments, RenderPatch{std::move(patch), source});
    } catch (const StyleError& error) {
        printFaults(error.what());
        return kExitFailed;
    }
}

}  // namespace

Command declarePatch(CLI::App& program) {
    CLI::App* const app = program.add_subcommand("patch", std::string(text::kPatch));
    app->footer(std::string(text::kPatchExamples));
    const auto arguments = std::make_shared<RenderArguments>();
    arguments->declareTo(*app);
    app->get_option("files")->type_name("SOURCE.style IN... OUT");
    app->remove_option(app->get_option("--style"));
    return {app, [arguments] { return runPatch(*arguments); }};
}

}  // namespace vanta
