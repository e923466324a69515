#include "app/render_report.hpp"

#include <fmt/format.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "app/measurement_text.hpp"

namespace vanta {

namespace {

using Json = nlohmann::ordered_json;

std::string decibels(std::optional<double> value, int decimals) {
    return value ? fmt::format("{:.{}f}", *value, decimals) : "-";
}

std::string line(std::string_view name, const ProgrammeFigures& figures) {
    const auto& peak = figures.total.truePeak;
    return fmt::format("  {:<7}{:>7} LUFS, range {:>4} LU, true peak {:>6} dBTP{}\n", name,
                       decibels(figures.integrated, 2), decibels(figures.range, 1),
                       decibels(peak ? std::optional(peak->level) : std::nullopt, 2),
                       figures.integrated ? "" : " (too short or too soft for a loudness)");
}

std::string loudnessLine(const RenderOutcome& outcome) {
    const GoalsReached& reached = outcome.reached;
    std::string text =
        fmt::format("  loudness {:.2f} LUFS: Gain {:.2f} dB, found in {} {}", *outcome.goals.loudnessLufs,
                    outcome.report.gainDb, reached.passes, reached.passes == 1 ? "pass" : "passes");
    if (outcome.album)
        text += fmt::format(", gives {} together {:.2f} LUFS",
                            reached.files == 1 ? "1 file" : fmt::format("{} files", reached.files),
                            *reached.lufs);
    if (outcome.replacedGainDb && *outcome.replacedGainDb != 0.0)
        text += fmt::format("; replaces the {:.2f} dB that were set", *outcome.replacedGainDb);
    return text + "\n";
}

/// Rounded towards the limit, so that the line never promises more than there is.
double margin(double limitDb, double truePeakDb) {
    return std::floor(1000.0 * (limitDb - truePeakDb)) / 1000.0;
}

/// The true peak that was held against the limit, in dBTP; nothing for silence.
std::optional<double> verifiedPeak(const RenderOutcome& outcome) {
    const auto& peak = outcome.report.after->figures.total.truePeak;
    return peak ? std::optional(peak->level) : std::nullopt;
}

std::string truePeakLine(const RenderOutcome& outcome) {
    const FileReport& report = outcome.report;
    const double limitDb = *outcome.goals.maxTruePeakDb;
    const auto peak = verifiedPeak(outcome);
    std::string text = fmt::format("  true peak holds {:.2f} dBTP", limitDb);
    text += peak ? fmt::format(" by {:.3f} dB", margin(limitDb, *peak)) : ": silence";
    if (report.outputLevelDb < outcome.goals.outputLevelDb)
        text += fmt::format(", with Output Level at {:.3f} instead of {:.2f} dB", report.outputLevelDb,
                            outcome.goals.outputLevelDb);
    return text + fmt::format(", after {} {}\n", report.renders, report.renders == 1 ? "render" : "renders");
}

Json rounded(double value, double steps = 1000.0) {
    return std::round(value * steps) / steps + 0.0;
}

Json renderObject(const RenderOutcome& outcome) {
    const FileReport& report = outcome.report;
    Json object;
    object["input"] = report.input.string();
    object["output"] = report.output.string();
    if (!outcome.error.empty()) {
        object["error"] = outcome.error;
        return object;
    }
    object["format"] = formatName(report.format);
    object["style"] = report.style;
    object["gain_db"] = rounded(report.gainDb);
    object["output_level_db"] = rounded(report.outputLevelDb);
    object["before"] = report.before ? measurementObject(*report.before) : Json(nullptr);
    object["after"] = report.after ? measurementObject(*report.after) : Json(nullptr);
    object["gain_reduction"] = {{"mean_db", rounded(report.result.meanReductionDb)},
                                {"highest_db", rounded(report.result.largestReductionDb)},
                                {"share_of_time", rounded(report.result.reducedShare, 1e4)}};
    object["renders"] = report.renders;
    if (outcome.goals.loudnessLufs) {
        object["loudness"] = {
            {"target_lufs", *outcome.goals.loudnessLufs},
            {"reached_lufs", rounded(*outcome.reached.lufs)},
            {"mode", outcome.album ? "album" : "track"},
            {"files", outcome.reached.files},
            {"passes", outcome.reached.passes},
            {"replaced_gain_db", outcome.replacedGainDb ? rounded(*outcome.replacedGainDb) : Json(nullptr)}};
    }
    if (outcome.goals.maxTruePeakDb) {
        const double limitDb = *outcome.goals.maxTruePeakDb;
        const auto peak = verifiedPeak(outcome);
        object["max_true_peak"] = {{"limit_dbtp", limitDb},
                                   {"true_peak_dbtp", peak ? rounded(*peak) : Json(nullptr)},
                                   {"holds_by_db", peak ? Json(margin(limitDb, *peak)) : Json(nullptr)},
                                   {"output_level_asked_db", rounded(outcome.goals.outputLevelDb)}};
    }
    object["warnings"] = report.warnings;
    return object;
}

}  // namespace

std::string renderFigures(const RenderOutcome& outcome) {
    const FileReport& report = outcome.report;
    std::string text;
    if (report.before) text += line("before", report.before->figures);
    if (report.after) text += line("after", report.after->figures);
    if (report.after) {
        text += fmt::format(
            "  gain reduction: mean {:.1f} dB, highest {:.1f} dB, above 0.1 dB in {:.0f} % of the time\n",
            report.result.meanReductionDb, report.result.largestReductionDb,
            100.0 * report.result.reducedShare);
    }
    if (outcome.goals.loudnessLufs) text += loudnessLine(outcome);
    if (outcome.goals.maxTruePeakDb) text += truePeakLine(outcome);
    return text;
}

std::string renderReportJson(std::span<const RenderOutcome> outcomes) {
    Json files = Json::array();
    Programme together;
    for (const RenderOutcome& outcome : outcomes) {
        files.push_back(renderObject(outcome));
        if (outcome.report.after) together.merge(outcome.report.after->programme);
    }
    const ProgrammeFigures figures = together.figures();
    const auto orNull = [](std::optional<double> value) {
        return value ? rounded(*value, 100.0) : Json(nullptr);
    };
    Json all;
    all["files"] = files;
    all["together"] = {{"integrated_lufs", orNull(figures.integrated)}, {"range_lu", orNull(figures.range)}};
    return all.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace vanta
