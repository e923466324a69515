#include "app/render_command.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <cstdio>

#include "app/channel_mapping.hpp"
#include "app/failure.hpp"
#include "app/interrupt.hpp"
#include "app/output_path.hpp"
#include "app/parameter_text.hpp"
#include "app/preset_library.hpp"
#include "app/render_report.hpp"
#include "app/session_file.hpp"
#include "app/suggestion.hpp"
#include "app/text_file.hpp"
#include "foundation/file_replacement.hpp"

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
    options.measure = !command.quiet || !command.reportFile.empty() || command.loudnessLufs.has_value() ||
                      command.maxTruePeakDb.has_value();
    for (const std::string& file : {command.preset, command.state})
        if (!file.empty()) options.alsoRead.emplace_back(file);
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

bool isAlbum(const RenderCommand& command) {
    return command.loudnessMode == "album";
}

void checkGoals(const RenderCommand& command) {
    if (!command.loudnessMode.empty() && !isAlbum(command) && command.loudnessMode != "track") {
        throw UsageError(
            fmt::format("--loudness-mode: '{}' is none: there are track and album", command.loudnessMode));
    }
    if (!command.loudnessLufs) {
        if (!command.loudnessMode.empty()) throw UsageError("--loudness-mode needs --loudness");
        return;
    }
    for (const auto& [option, text] : command.parameters) {
        if (option->parameter == "Gain")
            throw UsageError("--gain and --loudness, which finds it, exclude each other");
    }
}

/// What leaves Gain and Output Level without effect leaves nothing to reach a goal with.
void checkGoals(const RenderCommand& command, const LimiterSettings& settings) {
    if (!command.loudnessLufs && !command.maxTruePeakDb) return;
    const std::string_view goal = command.loudnessLufs ? "--loudness" : "--max-true-peak";
    for (const auto* parameter : {&settings.bypass, &settings.unityGain}) {
        if (parameter->mapped())
            throw UsageError(fmt::format("{}: cannot be reached with {} on", goal, parameter->name()));
    }
}

void checkReport(const RenderCommand& command, std::span<const Route> routes) {
    if (command.reportFile.empty()) return;
    std::vector<fs::path> taken;
    for (const Route& route : routes) {
        taken.push_back(route.input);
        std::error_code error;
        if (fs::weakly_canonical(route.output, error) == fs::weakly_canonical(command.reportFile, error))
            throw UsageError("--report: is an output, too");
    }
    if (!command.sideChain.empty()) taken.emplace_back(command.sideChain);
    for (const std::string& file : {command.preset, command.state})
        if (!file.empty()) taken.emplace_back(file);
    checkOutput(command.reportFile, taken, true);
}

RenderGoals goalsOf(const RenderCommand& command, const LimiterSettings& settings) {
    RenderGoals goals;
    goals.loudnessLufs = command.loudnessLufs;
    goals.maxTruePeakDb = command.maxTruePeakDb;
    goals.gainDb = static_cast<double>(settings.gain.value());
    goals.outputLevelDb = static_cast<double>(settings.outputLevel.value());
    return goals;
}

void writeReport(const RenderCommand& command, std::span<const RenderOutcome> outcomes) {
    if (command.reportFile.empty()) return;
    FileReplacement replacement(command.reportFile);
    writeText(replacement.temporary(), command.reportFile, renderReportJson(outcomes));
    if (!replacement.commit()) throw Failure(fmt::format("{}: cannot be put in place", command.reportFile));
}

/// All files of a command: an album at once, other files one after the other.
class Batch {
public:
    Batch(const RenderCommand& renderCommand, const RenderOptions& renderOptions,
          const LimiterSettings& limiterSettings, std::span<const Route> fileRoutes)
        : command(renderCommand), options(renderOptions), settings(limiterSettings) {
        for (const Route& route : fileRoutes) {
            RenderOutcome& outcome = outcomes.emplace_back();
            outcome.report.input = route.input;
            outcome.report.output = route.output;
            outcome.goals = goalsOf(command, settings);
            outcome.album = isAlbum(command);
            if (command.loudnessLufs && !(command.preset.empty() && command.state.empty()))
                outcome.replacedGainDb = outcome.goals.gainDb;
        }
    }

    int run() {
        std::vector<RenderOutcome*> all;
        for (RenderOutcome& outcome : outcomes) all.push_back(&outcome);
        if (isAlbum(command)) {
            renderTogether(all);
        } else {
            for (RenderOutcome* outcome : all) renderTogether({outcome});
        }
        writeReport(command, outcomes);
        return failed ? kExitFailed : kExitDone;
    }

private:
    void fail(std::span<RenderOutcome* const> which, const std::string& text) {
        fmt::print(stderr, "vanta: {}\n", text);
        for (RenderOutcome* outcome : which) outcome->error = text;
        failed = true;
    }

    /// With one Gain, if a loudness is asked for. A file that fails is left out.
    void renderTogether(std::vector<RenderOutcome*> which) {
        std::vector<std::unique_ptr<FileRender>> files;
        std::erase_if(which, [&](RenderOutcome* outcome) {
            try {
                files.push_back(std::make_unique<FileRender>(outcome->report.input, outcome->report.output,
                                                             settings, options));
                return false;
            } catch (const Failure& failure) {
                fail(std::span(&outcome, 1), failure.what());
                return true;
            }
        });
        while (!files.empty() && !reach(which, files)) {
        }
        for (std::size_t i = 0; i < files.size(); ++i) putInPlace(*which[i], *files[i]);
    }

    /// False if a file had to be left out: the rest has to begin anew.
    bool reach(std::vector<RenderOutcome*>& which, std::vector<std::unique_ptr<FileRender>>& files) {
        try {
            const GoalsReached reached = reachGoals(files, which[0]->goals, options.measure);
            for (RenderOutcome* outcome : which) outcome->reached = reached;
            return true;
        } catch (const FileFailure& failure) {
            const auto at = static_cast<std::ptrdiff_t>(failure.index);
            fail(std::span(&which[failure.index], 1), failure.what());
            which.erase(which.begin() + at);
            files.erase(files.begin() + at);
        } catch (const Failure& failure) {
            fail(which, failure.what());
            files.clear();
        }
        return false;
    }

    void putInPlace(RenderOutcome& outcome, FileRender& file) {
        try {
            file.commit();
        } catch (const Failure& failure) {
            return fail(std::array{&outcome}, failure.what());
        }
        outcome.report = file.report();
        for (const std::string& warning : outcome.report.warnings)
            fmt::print(stderr, "vanta: warning: {}\n", warning);
        if (options.quiet) return;
        fmt::print("{}\n{}", summary(outcome.report, settings), renderFigures(outcome));
        std::fflush(stdout);
    }

    const RenderCommand& command;
    const RenderOptions& options;
    const LimiterSettings& settings;
    std::vector<RenderOutcome> outcomes;
    bool failed = false;
};

}  // namespace

// The more particular has the last word.
std::string applySettings(LimiterSettings& settings, const RenderCommand& command) {
    if (!command.state.empty()) recallState(settings, command.state);
    std::string preset;
    if (!command.preset.empty()) preset = loadNamedPreset(settings, command.preset);
    if (!command.sideChain.empty()) settings.sideChainTriggering.setMapped(true);
    for (const auto& [option, text] : command.parameters) setByOption(settings, *option, text);
    for (const std::string& assignment : command.assignments) {
        if (&setByAssignment(settings, assignment) == &settings.gain && command.loudnessLufs)
            throw UsageError("--set Gain and --loudness, which finds it, exclude each other");
    }
    return preset;
}

int runRender(const RenderCommand& command) {
    checkGoals(command);
    const RenderOptions options = optionsOf(command);
    LimiterSettings settings;
    applySettings(settings, command);
    checkGoals(command, settings);
    const auto routes = routesOf(command, options.format.type);
    checkReport(command, routes);

    watchForInterrupts();
    return Batch(command, options, settings, routes).run();
}

}  // namespace vanta
