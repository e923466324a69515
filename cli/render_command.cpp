#include "cli/render_command.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <thread>
#include <utility>

#include "cli/chosen.hpp"
#include "cli/chosen_layout.hpp"
#include "cli/exit_code.hpp"
#include "cli/interrupt.hpp"
#include "cli/messages.hpp"
#include "cli/output_file.hpp"
#include "cli/piped_files.hpp"
#include "cli/progress_bar.hpp"
#include "cli/render_text.hpp"
#include "cli/routes.hpp"
#include "cli/standard_streams.hpp"
#include "cli/texts.hpp"
#include "foundation/output_check.hpp"
#include "foundation/printable.hpp"
#include "mastering/render_report.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

RenderOptions::ReplayGain replayGainOf(const std::string& mode) {
    using enum RenderOptions::ReplayGain;
    if (mode.empty()) return None;
    if (mode == "track") return Track;
    if (mode == "album") return Album;
    throw UsageError(fmt::format("unknown ReplayGain mode '{}': use track or album", mode));
}

RenderOptions optionsOf(const RenderArguments& arguments) {
    RenderOptions options;
    options.sideChain = arguments.sideChain;
    options.layout = chosenLayout(arguments.layout);
    options.format = {chosenFileType(arguments.format),
                      chosenFileSubtype(arguments.subtype),
                      arguments.sampleRate,
                      {arguments.quality, arguments.bitrate}};
    if (arguments.quality && arguments.bitrate)
        throw UsageError("--quality and --bitrate cannot be combined: choose one");
    options.replayGain = replayGainOf(arguments.replayGain);
    options.keepsMetadata = !arguments.strip;
    options.dither = arguments.settings.setterOf("Dithering").empty();
    options.blockSamples = arguments.blockSamples;
    options.tailSeconds = arguments.tailSeconds;
    options.ditherSeed = arguments.ditherSeed;
    options.replace = arguments.replace;
    options.makeFolders = !arguments.outDir.empty();
    options.measure = !arguments.quiet || !arguments.reportFile.empty();
    options.threads = arguments.jobs > 0 ? static_cast<std::size_t>(arguments.jobs)
                                         : std::max(1u, std::thread::hardware_concurrency());
    for (const std::string& file : arguments.settings.files()) options.alsoRead.emplace_back(file);
    options.watcher = terminalWatcher(arguments.quiet);
    return options;
}

RenderGoals goalsOf(const RenderArguments& arguments) {
    const std::string& mode = arguments.loudnessMode;
    if (!mode.empty() && mode != "track" && mode != "album")
        throw UsageError(fmt::format("unknown loudness mode '{}': use track or album", mode));
    if (!mode.empty() && !arguments.loudnessLufs) throw UsageError("--loudness-mode needs --loudness");
    RenderGoals goals;
    goals.loudnessLufs = arguments.loudnessLufs;
    goals.album = mode == "album";
    goals.maxTruePeakDb = arguments.maxTruePeakDb;
    goals.replacesGain = arguments.loudnessLufs && !arguments.settings.files().empty();
    return goals;
}

void checkGain(const RenderArguments& arguments) {
    const std::string setter = arguments.settings.setterOf("Gain");
    if (arguments.loudnessLufs && !setter.empty())
        throw UsageError(
            fmt::format("{} and --loudness cannot be combined: --loudness finds the Gain itself", setter));
}

/// With Gain and Output Level out of effect there is nothing to reach a goal with.
void checkGoals(const RenderGoals& goals, const LimiterSettings& settings) {
    if (!goals.any()) return;
    const std::string_view goal = goals.loudnessLufs ? "--loudness" : "--max-true-peak";
    for (const auto* parameter : {&settings.bypass, &settings.unityGain, &settings.auditionLimiting}) {
        if (parameter->mapped())
            throw UsageError(
                fmt::format("{} cannot be reached with {} on: turn it off", goal, parameter->name()));
    }
}

void checkReport(const RenderArguments& arguments, std::span<const Route> routes,
                 std::span<const fs::path> alsoRead) {
    if (arguments.reportFile.empty()) return;
    std::vector<fs::path> taken;
    for (const Route& route : routes) {
        taken.push_back(route.input);
        std::error_code error;
        if (fs::weakly_canonical(route.output, error) == fs::weakly_canonical(arguments.reportFile, error))
            throw UsageError("--report and an output are the same file: use two different ones");
    }
    if (!arguments.sideChain.empty()) taken.emplace_back(arguments.sideChain);
    taken.insert(taken.end(), alsoRead.begin(), alsoRead.end());
    checkOutput(arguments.reportFile, taken, true);
}

/// From here on all arguments name files that can be read and written as often as it takes.
void takePipes(RenderArguments& arguments, PipedFiles& pipes) {
    const bool hasOutput = arguments.outDir.empty() && arguments.files.size() > 1;
    for (std::string& file : arguments.files) {
        const bool isOutput = hasOutput && &file == &arguments.files.back();
        file = isOutput ? pipes.output(file) : pipes.input(file);
    }
}

/// Tells the person at the terminal what becomes of each file.
class Reporter final : public BatchListener {
public:
    Reporter(const MasteringJob& job, const PipedFiles& pipes, bool quiet)
        : job_(job), pipes_(pipes), quiet_(quiet) {}

    bool anyFailed() const { return failed_; }

    void failed(const Failure& failure) override {
        const std::string text = pipes_.named(failure.what());
        text == failure.what() ? printFailure(failure) : printError(text);
        failed_ = true;
    }

    void written(const RenderOutcome& outcome) override {
        for (const std::string& warning : outcome.file.warnings) printWarning(pipes_.named(warning));
        if (quiet_ || muted_) return;
        // The files come first: what cannot be told does not keep them from being written.
        try {
            // Where standard output holds audio, people read standard error.
            const std::string text = pipes_.named(renderText(job_, outcome));
            pipes_.usesStandardOutput() ? printOnError(text) : printOut(text);
        } catch (const Failure& failure) {
            if (!std::exchange(muted_, true)) failed(failure);
        }
    }

private:
    const MasteringJob& job_;
    const PipedFiles& pipes_;
    bool quiet_;
    bool failed_ = false;
    bool muted_ = false;  ///< standard output takes no more
};

/// Says what would be written, and finds what stands in the way.
int tryOut(const MasteringJob& job, std::span<const Route> routes) {
    bool failed = false;
    for (const Route& route : routes) {
        try {
            const FileRender render(route, job);
            printOut(fmt::format("{} -> {} ({})\n", printable(route.input.string()),
                                 printable(route.output.string()), formatName(render.format())));
        } catch (const Failure& failure) {
            printFailure(failure);
            failed = true;
        }
    }
    return failed ? kExitFailed : kExitDone;
}

}  // namespace

int runRender(RenderArguments arguments, std::optional<RenderPatch> patch) {
    const RenderGoals goals = goalsOf(arguments);
    checkGain(arguments);
    RenderOptions options = optionsOf(arguments);
    if (patch) {
        options.patch = std::move(patch->style);
        options.alsoRead.emplace_back(patch->file);
    }
    LimiterSettings settings;
    arguments.settings.applyTo(settings, !arguments.sideChain.empty());
    checkGoals(goals, settings);
    watchForInterrupts();
    PipedFiles pipes;
    takePipes(arguments, pipes);
    const auto routes = routesOf({.files = arguments.files,
                                  .outDir = arguments.outDir,
                                  .name = arguments.name,
                                  .recursive = arguments.recursive,
                                  .type = options.format.type});
    checkReport(arguments, routes, options.alsoRead);
    const MasteringJob job{settings, options, goals};
    if (arguments.dryRun) return tryOut(job, routes);

    Reporter reporter(job, pipes, arguments.quiet);
    const auto outcomes = renderBatch(job, routes, reporter);
    pipes.deliver();
    if (!arguments.reportFile.empty())
        writeOutput(arguments.reportFile, pipes.named(renderReportJson(job, outcomes)));
    return reporter.anyFailed() ? kExitFailed : kExitDone;
}

Command declareRender(CLI::App& program) {
    CLI::App* const app = program.add_subcommand("render", std::string(text::kRender));
    app->footer(std::string(text::kRenderExamples));
    const auto arguments = std::make_shared<RenderArguments>();
    arguments->declareTo(*app);
    return {app, [arguments] { return runRender(*arguments); }};
}

}  // namespace vanta
