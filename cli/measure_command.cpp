#include "cli/measure_command.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <thread>

#include "cli/chosen_layout.hpp"
#include "cli/exit_code.hpp"
#include "cli/inputs.hpp"
#include "cli/interrupt.hpp"
#include "cli/measure_arguments.hpp"
#include "cli/measurement_text.hpp"
#include "cli/messages.hpp"
#include "cli/output_file.hpp"
#include "cli/piped_files.hpp"
#include "cli/progress_bar.hpp"
#include "cli/standard_streams.hpp"
#include "cli/texts.hpp"
#include "foundation/ascii.hpp"
#include "foundation/news_in_order.hpp"
#include "foundation/output_check.hpp"
#include "foundation/parallel.hpp"
#include "measure/loudness_plot.hpp"
#include "measure/measurement_export.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

void check(const MeasureArguments& arguments) {
    if (arguments.files.empty()) throw UsageError("measure needs a file; see 'vanta measure --help'");
    if (arguments.json && arguments.csv) throw UsageError("--json and --csv cannot be combined: choose one");
    const std::vector<fs::path> read(arguments.files.begin(), arguments.files.end());
    for (const std::string* output : {&arguments.timeline, &arguments.plot}) {
        // A report may be made anew as often as one likes, but never over what is measured.
        if (!output->empty()) checkOutput(*output, read, true);
    }
    if (!arguments.plot.empty() && !equalsIgnoringCase(fs::path(arguments.plot).extension().string(), ".png"))
        throw UsageError(
            fmt::format("--plot draws a PNG: use a name that ends in .png, not '{}'", arguments.plot));
    if (!arguments.timeline.empty() && arguments.timeline == arguments.plot)
        throw UsageError("--timeline and --plot are the same file: use two different ones");
}

/// Files that cannot be measured are reported at once, and named among the figures.
std::vector<Measurement> measureAll(const MeasureArguments& arguments, PipedFiles& pipes) {
    const auto layout = chosenLayout(arguments.layout);
    const WorkWatcher watcher = terminalWatcher(arguments.quiet);
    std::vector<Input> inputs;
    for (const std::string& file : arguments.files) {
        const std::vector<std::string> name{pipes.input(file)};
        std::ranges::move(inputsOf(name, arguments.recursive), std::back_inserter(inputs));
    }
    const auto threads = arguments.jobs > 0 ? static_cast<std::size_t>(arguments.jobs)
                                            : std::max(1u, std::thread::hardware_concurrency());
    std::vector<Measurement> measurements(inputs.size());
    NewsInOrder news(inputs.size());
    inParallel(inputs.size(), threads, [&](std::size_t i) {
        Measurement& measurement = measurements[i];
        try {
            measurement = measureFile(inputs[i].file, layout, watcher);
            news.add(i, [&] { printWarnings(measurement.warnings); });
        } catch (const Failure& failure) {
            measurement.file = inputs[i].file;
            measurement.error = failure.what();
            news.add(i, [&] { printError(pipes.named(measurement.error)); });
        }
        news.end(i);
    });
    for (Measurement& measurement : measurements) {
        measurement.file = pipes.named(measurement.file.string());
        measurement.error = pipes.named(measurement.error);
    }
    return measurements;
}

void print(const MeasureArguments& arguments, std::span<const Measurement> measurements) {
    if (arguments.json) return printOut(measurementJson(measurements));
    if (arguments.csv) return printOut(measurementCsv(measurements));
    printOut(measurementTable(measurements, arguments.requirements));
}

template <typename Write>
bool attempt(const Write& write) {
    try {
        write();
        return true;
    } catch (const std::exception& error) {
        printFailure(error);
        return false;
    }
}

/// False if a file could not be written; the other is written all the same.
bool writeFiles(const MeasureArguments& arguments, std::span<const Measurement> measurements) {
    const bool timeline = arguments.timeline.empty() ||
                          attempt([&] { writeOutput(arguments.timeline, timelineCsv(measurements)); });
    const bool plot = arguments.plot.empty() || attempt([&] {
                          writeOutput(arguments.plot, [&](const fs::path& file) {
                              writeLoudnessPlot(file, measurements, arguments.requirements);
                          });
                      });
    return timeline && plot;
}

int runMeasure(const MeasureArguments& arguments) {
    check(arguments);
    watchForInterrupts();
    PipedFiles pipes;
    const auto measurements = measureAll(arguments, pipes);
    print(arguments, measurements);
    bool failed = !writeFiles(arguments, measurements);
    bool missed = false;
    for (const Measurement& measurement : measurements) {
        failed |= !measurement.error.empty();
        missed |= measurement.error.empty() && arguments.requirements.misses(measurement.figures);
    }
    if (failed) return kExitFailed;
    return missed ? kExitMissed : kExitDone;
}

}  // namespace

Command declareMeasure(CLI::App& program) {
    CLI::App* const app = program.add_subcommand("measure", std::string(text::kMeasure));
    app->footer(std::string(text::kMeasureExamples));
    const auto arguments = std::make_shared<MeasureArguments>();
    arguments->declareTo(*app);
    return {app, [arguments] { return runMeasure(*arguments); }};
}

}  // namespace vanta
