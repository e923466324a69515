#include "app/render_command.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cmath>
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

/// What is promised of a loudness.
constexpr double kToleranceLu = 0.1;
/// Searches after the first, for what a codec does to the file.
constexpr int kMostSearches = 3;

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
    options.maxTruePeakDb = command.maxTruePeakDb;
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

void writeReport(const RenderCommand& command, std::span<const RenderOutcome> outcomes) {
    if (command.reportFile.empty()) return;
    FileReplacement replacement(command.reportFile);
    writeText(replacement.temporary(), command.reportFile, renderReportJson(outcomes));
    if (!replacement.commit()) throw Failure(fmt::format("{}: cannot be put in place", command.reportFile));
}

/// All files of a command, one after the other.
class Batch {
public:
    Batch(const RenderCommand& renderCommand, const RenderOptions& renderOptions,
          const LimiterSettings& limiterSettings, std::span<const Route> fileRoutes)
        : command(renderCommand), options(renderOptions), settings(limiterSettings), routes(fileRoutes) {}

    int run() {
        if (!planAlbum()) return finish();
        for (std::size_t i = 0; i < routes.size(); ++i) {
            RenderOutcome& outcome = begin(routes[i]);
            try {
                renderOne(i, outcome);
            } catch (const Failure& failure) {
                fail(outcome, failure.what());
            }
        }
        return finish();
    }

private:
    RenderOutcome& begin(const Route& route) {
        RenderOutcome& outcome = outcomes.emplace_back();
        outcome.report.input = route.input;
        outcome.report.output = route.output;
        outcome.maxTruePeakDb = options.maxTruePeakDb;
        return outcome;
    }

    void fail(RenderOutcome& outcome, const std::string& text) {
        fmt::print(stderr, "vanta: {}\n", text);
        outcome.error = text;
        code = kExitFailed;
    }

    /// One Gain is for all or for none: false if it could not be found.
    bool planAlbum() {
        if (!command.loudnessLufs || !isAlbum(command)) return true;
        std::vector<fs::path> inputs;
        for (const Route& route : routes) inputs.push_back(route.input);
        try {
            album = planLoudness(inputs, settings, options, *command.loudnessLufs);
            return true;
        } catch (const Failure& failure) {
            for (const Route& route : routes) begin(route).error = failure.what();
            fmt::print(stderr, "vanta: {}\n", failure.what());
            code = kExitFailed;
            return false;
        }
    }

    void renderOne(std::size_t index, RenderOutcome& outcome) {
        if (command.loudnessLufs && !album) checkDestination(routes[index]);
        LimiterSettings chosen;
        render(index, {settings, options, command.loudnessLufs}, outcome, chosen);
        if (misses(outcome)) renderAgain(index, outcome, chosen);
        noteMiss(outcome);
        tell(outcome, chosen);
    }

    /// What a render starts from. The loudness to aim at need not be the one that is wanted.
    struct Start {
        const LimiterSettings& settings;
        const RenderOptions& options;
        std::optional<double> aimLufs;
    };

    void render(std::size_t index, const Start& start, RenderOutcome& outcome,
                LimiterSettings& chosen) const {
        const Route& route = routes[index];
        start.settings.applyTo(chosen);
        if (album) {
            outcome.plan = album;
        } else if (start.aimLufs) {
            outcome.plan =
                planLoudness(std::span(&route.input, 1), start.settings, start.options, *start.aimLufs);
            outcome.plan->targetLufs = *command.loudnessLufs;
        }
        if (outcome.plan) {
            const auto& levels = outcome.plan->outputLevelDb;
            chosen.gain.setValue(static_cast<float>(outcome.plan->gainDb), 0);
            chosen.outputLevel.setValue(static_cast<float>(levels[album ? index : 0]), 0);
        }
        outcome.report = renderFile(route.input, route.output, chosen, start.options);
    }

    /// A codec takes loudness away and moves peaks, and a ceiling that gave way to them costs loudness, too:
    /// another search, that much higher and under the ceiling that held. What was written stays if it leads
    /// nowhere.
    void renderAgain(std::size_t index, RenderOutcome& outcome, LimiterSettings& chosen) const {
        RenderOptions again = options;
        again.replace = true;
        double aimLufs = *command.loudnessLufs;
        for (int round = 0; round < kMostSearches && misses(outcome); ++round) {
            const auto lufs = outcome.report.after->figures.integrated;
            if (!lufs) return;
            // What the lower ceiling took is not the codec's.
            const double ceilingMoved = outcome.plan->outputLevelDb.front() - outcome.report.outputLevelDb;
            aimLufs += *command.loudnessLufs - *lufs - ceilingMoved;
            LimiterSettings lower;
            settings.applyTo(lower);
            lower.outputLevel.setValue(static_cast<float>(outcome.report.outputLevelDb), 0);
            RenderOutcome next = outcome;
            try {
                render(index, {lower, again, aimLufs}, next, chosen);
            } catch (const Failure&) {
                return;
            }
            next.plan->passes += outcome.plan->passes;
            next.report.renders += outcome.report.renders;
            outcome = std::move(next);
        }
    }

    /// Whether the one file is off the loudness that was asked for.
    bool misses(const RenderOutcome& outcome) const {
        return outcome.plan && !album && isOff(outcome.report.after->programme);
    }

    bool isOff(const Programme& written) const {
        const auto lufs = written.figures().integrated;
        return !lufs || std::abs(*lufs - *command.loudnessLufs) > kToleranceLu;
    }

    /// A search takes minutes: what forbids the output is told before it.
    void checkDestination(const Route& route) const {
        std::vector<fs::path> read = options.alsoRead;
        read.push_back(route.input);
        if (!options.sideChain.empty()) read.push_back(options.sideChain);
        checkOutput(route.output, read, options.replace);
    }

    /// What to say if the loudness is off the target: the file's own rounding, or a codec, may still do that.
    std::optional<std::string> missText(const Programme& written, std::string_view name) {
        if (!isOff(written)) return {};
        const auto lufs = written.figures().integrated;
        if (code == kExitDone) code = kExitMissed;
        return fmt::format("{}: what was written has {} instead of {:.2f} LUFS", name,
                           lufs ? fmt::format("{:.2f}", *lufs) : "no loudness", *command.loudnessLufs);
    }

    void noteMiss(RenderOutcome& outcome) {
        if (!outcome.plan || album) return;
        if (const auto text = missText(outcome.report.after->programme, outcome.report.output.string()))
            outcome.report.warnings.push_back(*text);
    }

    /// Nothing if a part of the album is missing: that was said.
    void checkAlbum() {
        if (!album || code != kExitDone) return;
        Programme all;
        for (const RenderOutcome& outcome : outcomes) all.merge(outcome.report.after->programme);
        if (const auto text = missText(all, "the album")) fmt::print(stderr, "vanta: warning: {}\n", *text);
    }

    void tell(const RenderOutcome& outcome, const LimiterSettings& used) const {
        for (const std::string& warning : outcome.report.warnings)
            fmt::print(stderr, "vanta: warning: {}\n", warning);
        if (options.quiet) return;
        fmt::print("{}\n{}", summary(outcome.report, used), renderFigures(outcome));
        std::fflush(stdout);
    }

    int finish() {
        checkAlbum();
        writeReport(command, outcomes);
        return code;
    }

    const RenderCommand& command;
    const RenderOptions& options;
    const LimiterSettings& settings;
    std::span<const Route> routes;
    std::vector<RenderOutcome> outcomes;
    std::optional<LoudnessPlan> album;
    int code = kExitDone;
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
    // A ceiling above the highest true peak could only be found too high, at the cost of a render.
    if (command.maxTruePeakDb && *command.maxTruePeakDb < static_cast<double>(settings.outputLevel.value()))
        settings.outputLevel.setValue(static_cast<float>(*command.maxTruePeakDb), 0);
    const auto routes = routesOf(command, options.format.type);
    checkReport(command, routes);

    watchForInterrupts();
    return Batch(command, options, settings, routes).run();
}

}  // namespace vanta
