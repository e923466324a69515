#include "mastering/render_report.hpp"

#include <fmt/format.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "mastering/verification.hpp"
#include "measure/measurement_export.hpp"
#include "plugin/parameters/abstract_plugin_parameter.hpp"

namespace vanta {

namespace {

using Json = nlohmann::ordered_json;

Json rounded(double value, double steps = 1000.0) {
    return std::round(value * steps) / steps + 0.0;
}
Json rounded(const AbstractPluginParameter& parameter) {
    return rounded(static_cast<double>(parameter.value()));
}
Json roundedOrNull(std::optional<double> value, double steps = 1000.0) {
    return value ? rounded(*value, steps) : Json(nullptr);
}
Json measured(const std::optional<Measurement>& measurement) {
    return measurement ? measurementObject(*measurement) : Json(nullptr);
}

Json loudnessObject(const MasteringJob& job, const GoalsReached& reached) {
    return {{"target_lufs", *job.goals.loudnessLufs},
            {"reached_lufs", rounded(*reached.lufs)},
            {"mode", job.goals.album ? "album" : "track"},
            {"files", reached.files},
            {"passes", reached.passes},
            {"replaced_gain_db", job.goals.replacesGain ? rounded(job.settings.gain) : Json(nullptr)}};
}

Json truePeakObject(const MasteringJob& job, const RenderedFile& file) {
    const double limitDb = *job.goals.maxTruePeakDb;
    const auto margin = marginDb(file, limitDb);
    return {{"limit_dbtp", limitDb},
            {"true_peak_dbtp", roundedOrNull(writtenTruePeak(file))},
            {"holds_by_db", margin ? Json(*margin) : Json(nullptr)},
            {"output_level_asked_db", rounded(job.settings.outputLevel)}};
}

Json renderObject(const MasteringJob& job, const RenderOutcome& outcome) {
    const RenderedFile& file = outcome.file;
    Json object;
    object["input"] = file.route.input.string();
    object["output"] = file.route.output.string();
    if (!outcome.error.empty()) {
        object["error"] = outcome.error;
        return object;
    }
    const LimiterSettings& settings = *file.settings;
    object["format"] = formatName(file.format);
    object["sample_rate"] = file.sampleRate;
    object["dither_bits"] = VantaParameters::ditherBits(settings.dithering.currentIndex());
    object["style"] = job.styleName();
    object["input_trim_db"] = rounded(file.inputTrimDb);
    object["gain_db"] = rounded(settings.gain);
    object["output_level_db"] = rounded(settings.outputLevel);
    object["before"] = measured(file.before);
    object["after"] = measured(file.after);
    object["gain_reduction"] = {{"mean_db", rounded(file.result.meanReductionDb)},
                                {"highest_db", rounded(file.result.largestReductionDb)},
                                {"share_of_time", rounded(file.result.reducedShare, 1e4)}};
    object["renders"] = file.renders;
    if (job.goals.loudnessLufs) object["loudness"] = loudnessObject(job, outcome.reached);
    if (job.goals.maxTruePeakDb) object["max_true_peak"] = truePeakObject(job, file);
    object["warnings"] = file.warnings;
    return object;
}

}  // namespace

std::string renderReportJson(const MasteringJob& job, std::span<const RenderOutcome> outcomes) {
    Json files = Json::array();
    Programme together;
    for (const RenderOutcome& outcome : outcomes) {
        files.push_back(renderObject(job, outcome));
        if (outcome.file.after) together.merge(outcome.file.after->programme);
    }
    const ProgrammeFigures figures = together.figures();
    Json all;
    all["files"] = files;
    all["together"] = {{"integrated_lufs", roundedOrNull(figures.integrated, 100.0)},
                       {"range_lu", roundedOrNull(figures.range, 100.0)}};
    return all.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace vanta
