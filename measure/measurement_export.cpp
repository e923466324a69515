#include "measure/measurement_export.hpp"

#include <fmt/format.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

#include "foundation/numbers.hpp"

namespace vanta {

namespace {

using Json = nlohmann::ordered_json;

/// One figure of a file under the name that machines know it by.
struct Field {
    std::string name;
    Json value;
};

/// Figures are rounded to what a meter resolves.
Json number(std::optional<double> value) {
    return value ? Json(std::round(*value * 100.0) / 100.0) : Json(nullptr);
}
Json level(const std::optional<TimedLevel>& timed) {
    return timed ? number(timed->level) : Json(nullptr);
}
Json seconds(const std::optional<TimedLevel>& timed) {
    return timed ? Json(std::round(timed->seconds * 1e4) / 1e4) : Json(nullptr);
}

void addChannelFields(std::vector<Field>& fields, const ChannelFigures& figures) {
    fields.push_back({"sample_peak_dbfs", level(figures.samplePeak)});
    fields.push_back({"sample_peak_at_s", seconds(figures.samplePeak)});
    fields.push_back({"true_peak_dbtp", level(figures.truePeak)});
    fields.push_back({"true_peak_at_s", seconds(figures.truePeak)});
    fields.push_back({"rms_dbfs", number(figures.rms)});
    fields.push_back({"crest_db", number(figures.crest)});
}

std::vector<Field> fieldsOf(const Measurement& measurement) {
    const ProgrammeFigures& figures = measurement.figures;
    const bool failed = !measurement.error.empty();
    const auto unlessFailed = [&](Json value) { return failed ? Json(nullptr) : std::move(value); };
    std::vector<Field> fields;
    fields.push_back({"file", measurement.file.string()});
    fields.push_back({"format", unlessFailed(measurement.format)});
    fields.push_back({"channels", unlessFailed(channelCount(measurement.layout))});
    fields.push_back({"layout", unlessFailed(channelLayoutName(measurement.layout))});
    fields.push_back({"sample_rate", unlessFailed(measurement.sampleRate)});
    fields.push_back({"duration_s", unlessFailed(std::round(figures.seconds * 1e6) / 1e6)});
    fields.push_back({"integrated_lufs", number(figures.integrated)});
    fields.push_back({"range_lu", number(figures.range)});
    fields.push_back({"range_low_lufs", number(figures.rangeLow)});
    fields.push_back({"range_high_lufs", number(figures.rangeHigh)});
    fields.push_back({"max_momentary_lufs", level(figures.highestMomentary)});
    fields.push_back({"max_momentary_at_s", seconds(figures.highestMomentary)});
    fields.push_back({"max_short_term_lufs", level(figures.highestShortTerm)});
    fields.push_back({"max_short_term_at_s", seconds(figures.highestShortTerm)});
    addChannelFields(fields, figures.total);
    return fields;
}

Json object(const std::vector<Field>& fields) {
    Json result = Json::object();
    for (const Field& field : fields) result[field.name] = field.value;
    return result;
}

/// RFC 4180: quoted where a comma, a quote or a line break asks for it.
std::string csvText(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
    return quoted + '"';
}

std::string csvText(const Json& value) {
    if (value.is_null()) return {};
    return value.is_string() ? csvText(value.get<std::string>()) : value.dump();
}

}  // namespace

Json measurementObject(const Measurement& measurement) {
    Json entry = object(fieldsOf(measurement));
    Json channels = Json::array();
    for (const ChannelFigures& figures : measurement.figures.channels) {
        std::vector<Field> fields;
        addChannelFields(fields, figures);
        channels.push_back(object(fields));
    }
    entry["per_channel"] = channels;
    if (!measurement.error.empty()) entry["error"] = measurement.error;
    return entry;
}

std::string measurementJson(std::span<const Measurement> measurements) {
    Json all = Json::array();
    for (const Measurement& measurement : measurements) all.push_back(measurementObject(measurement));
    return all.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string measurementCsv(std::span<const Measurement> measurements) {
    std::string text;
    for (const Measurement& measurement : measurements) {
        const auto fields = fieldsOf(measurement);
        if (text.empty()) {
            for (const Field& field : fields) text += field.name + ",";
            text += "error\n";
        }
        for (const Field& field : fields) text += csvText(field.value) + ",";
        text += csvText(measurement.error) + "\n";
    }
    return text;
}

std::string timelineCsv(std::span<const Measurement> measurements) {
    std::string text = "file,time_s,momentary_lufs,short_term_lufs,sample_peak_dbfs,true_peak_dbtp\n";
    const auto loudness = [](float lufs) {
        return lufs > kNoLoudness ? fmt::format("{:.2f}", lufs) : std::string();
    };
    const auto decibels = [](float gain) {
        return gain > kSilence ? fmt::format("{:.2f}", dbFromGain(static_cast<double>(gain))) : std::string();
    };
    for (const Measurement& measurement : measurements) {
        const std::string name = csvText(measurement.file.string());
        for (const TimelinePoint& point : measurement.timeline) {
            text +=
                fmt::format("{},{:.4f},{},{},{},{}\n", name, point.seconds, loudness(point.momentary),
                            loudness(point.shortTerm), decibels(point.samplePeak), decibels(point.truePeak));
        }
    }
    return text;
}

}  // namespace vanta
