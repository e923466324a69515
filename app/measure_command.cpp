#include "app/measure_command.hpp"

#include <fmt/format.h>

#include <cstdio>
#include <filesystem>

#include "app/channel_mapping.hpp"
#include "app/failure.hpp"
#include "app/interrupt.hpp"
#include "app/loudness_plot.hpp"
#include "app/measurement.hpp"
#include "app/measurement_text.hpp"
#include "app/output_path.hpp"
#include "app/text_file.hpp"
#include "foundation/file_replacement.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

void check(const MeasureCommand& command) {
    if (command.files.empty()) throw UsageError("measure: a file is needed; see 'vanta measure --help'");
    if (command.json && command.csv) throw UsageError("measure: --json and --csv exclude each other");
    const std::vector<fs::path> read(command.files.begin(), command.files.end());
    for (const std::string* output : {&command.timeline, &command.plot}) {
        // A report may be made anew as often as one likes, but never over what is measured.
        if (!output->empty()) checkOutput(*output, read, true);
    }
    if (!command.timeline.empty() && command.timeline == command.plot) {
        throw UsageError("measure: --timeline and --plot cannot be one file");
    }
}

/// Files that cannot be measured are told at once, and named in the report.
std::vector<Measurement> measureAll(const MeasureCommand& command) {
    const auto layout = chosenLayout(command.layout);
    std::vector<Measurement> measurements;
    for (const std::string& file : command.files) {
        try {
            measurements.push_back(measureFile(file, layout, !command.quiet));
            for (const std::string& warning : measurements.back().warnings) {
                fmt::print(stderr, "vanta: warning: {}\n", warning);
            }
        } catch (const Failure& failure) {
            fmt::print(stderr, "vanta: {}\n", failure.what());
            measurements.emplace_back();
            measurements.back().file = file;
            measurements.back().error = failure.what();
        }
    }
    return measurements;
}

/// The file appears when it is whole, and not before.
template <typename Write>
bool replaced(const fs::path& file, Write&& write) {
    try {
        FileReplacement replacement(file);
        write(replacement.temporary());
        if (replacement.commit()) return true;
        fmt::print(stderr, "vanta: {}: cannot be put in place\n", file.string());
    } catch (const std::exception& error) {
        fmt::print(stderr, "vanta: {}\n", error.what());
    }
    return false;
}

bool writeReports(const MeasureCommand& command, std::span<const Measurement> measurements,
                  const Requirements& requirements) {
    bool done = true;
    if (!command.timeline.empty()) {
        done &= replaced(command.timeline, [&](const fs::path& file) {
            writeText(file, command.timeline, timelineCsv(measurements));
        });
    }
    if (!command.plot.empty()) {
        done &= replaced(command.plot,
                         [&](const fs::path& file) { writeLoudnessPlot(file, measurements, requirements); });
    }
    return done;
}

void print(const MeasureCommand& command, std::span<const Measurement> measurements,
           const Requirements& requirements) {
    if (command.json) {
        fmt::print("{}", measurementJson(measurements));
    } else if (command.csv) {
        fmt::print("{}", measurementCsv(measurements));
    } else {
        fmt::print("{}", measurementTable(measurements, requirements));
    }
    if (std::fflush(stdout) != 0) throw Failure("the figures cannot be written to stdout");
}

}  // namespace

int runMeasure(const MeasureCommand& command) {
    check(command);
    const Requirements requirements{command.targetLufs, command.toleranceLu, command.maxTruePeakDb};
    watchForInterrupts();
    const auto measurements = measureAll(command);
    print(command, measurements, requirements);
    bool failed = !writeReports(command, measurements, requirements);
    bool missed = false;
    for (const Measurement& measurement : measurements) {
        failed |= !measurement.error.empty();
        missed |= measurement.error.empty() && requirements.misses(measurement.figures);
    }
    if (failed) return kExitFailed;
    return missed ? kExitMissed : kExitDone;
}

}  // namespace vanta
