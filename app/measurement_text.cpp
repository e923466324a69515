#include "app/measurement_text.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

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
    const auto unlessFailed = [&](Json value) { return failed ? Json(nullptr) : value; };
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

// --- The table ---

struct Column {
    const char* head;
    const char* unit;
    int width;
};
constexpr Column kColumns[] = {{"Integr.", "LUFS", 8}, {"Range", "LU", 6},  {"Max M", "LUFS", 7},
                               {"Max S", "LUFS", 7},   {"Peak", "dBFS", 8}, {"True pk", "dBTP", 8},
                               {"RMS", "dB", 7},       {"Crest", "dB", 6}};
constexpr std::size_t kNameWidth = 30;

std::string cell(std::optional<double> value, int decimals, bool marked) {
    const std::string text = value ? fmt::format("{:.{}f}", *value, decimals) : "-";
    return marked ? text + "!" : text + " ";
}
std::optional<double> plain(const std::optional<TimedLevel>& timed) {
    return timed ? std::optional<double>(timed->level) : std::nullopt;
}

/// The end of a long name tells more than its beginning.
std::string shortened(const std::string& name) {
    if (name.size() <= kNameWidth) return name;
    std::size_t from = name.size() - (kNameWidth - 2);
    while (from < name.size() && (name[from] & 0xC0) == 0x80) ++from;
    return ".." + name.substr(from);
}

std::string row(const std::string& name, const ProgrammeFigures& figures, const Requirements* requirements) {
    const bool loudnessMissed = requirements && requirements->missesTarget(figures);
    const bool peakMissed = requirements && requirements->missesTruePeak(figures);
    const std::string cells[] = {cell(figures.integrated, 2, loudnessMissed),
                                 cell(figures.range, 1, false),
                                 cell(plain(figures.highestMomentary), 1, false),
                                 cell(plain(figures.highestShortTerm), 1, false),
                                 cell(plain(figures.total.samplePeak), 2, false),
                                 cell(plain(figures.total.truePeak), 2, peakMissed),
                                 cell(figures.total.rms, 1, false),
                                 cell(figures.total.crest, 1, false)};
    std::string line = fmt::format("{:<{}}", shortened(name), kNameWidth);
    for (std::size_t i = 0; i < std::size(kColumns); ++i)
        line += fmt::format("{:>{}}", cells[i], kColumns[i].width);
    return line + "\n";
}

std::string head() {
    std::string names = fmt::format("{:<{}}", "File", kNameWidth);
    std::string units(kNameWidth, ' ');
    for (const Column& column : kColumns) {
        names += fmt::format("{:>{}} ", column.head, column.width - 1);
        units += fmt::format("{:>{}} ", column.unit, column.width - 1);
    }
    return names + "\n" + units + "\n";
}

std::string clock(double seconds) {
    const int minutes = static_cast<int>(seconds / 60.0);
    return fmt::format("{}:{:04.1f}", minutes, seconds - 60.0 * minutes);
}

std::string at(std::string_view name, const std::optional<TimedLevel>& timed, std::string_view unit) {
    if (!timed) return {};
    return fmt::format("  {:<22}{:>8.2f} {:<5} at {}\n", name, timed->level, unit, clock(timed->seconds));
}

/// What a single file has besides: ends of the range, times, channels.
std::string details(const Measurement& measurement) {
    const ProgrammeFigures& figures = measurement.figures;
    std::string text =
        fmt::format("\n  {}, {}, {} Hz, {}\n", measurement.format, channelLayoutName(measurement.layout),
                    measurement.sampleRate, clock(figures.seconds));
    if (figures.range) {
        text += fmt::format("  {:<22}{:>8.2f} to {:.2f} LUFS\n", "Loudness range", *figures.rangeLow,
                            *figures.rangeHigh);
    }
    text += at("Highest momentary", figures.highestMomentary, "LUFS");
    text += at("Highest short-term", figures.highestShortTerm, "LUFS");
    for (std::size_t c = 0; c < figures.channels.size(); ++c) {
        text += at(fmt::format("Channel {} peak", c + 1), figures.channels[c].samplePeak, "dBFS");
        text += at(fmt::format("Channel {} true peak", c + 1), figures.channels[c].truePeak, "dBTP");
    }
    return text;
}

std::string shortcomings(const Measurement& measurement) {
    const ProgrammeFigures& figures = measurement.figures;
    const std::string name = measurement.file.string();
    if (!figures.total.samplePeak) return fmt::format("{}: is silent\n", name);
    if (!figures.highestMomentary && figures.seconds < 0.4)
        return fmt::format("{}: is too short for a loudness, which takes 0.4 s\n", name);
    if (!figures.highestShortTerm && figures.seconds < 3.0)
        return fmt::format("{}: is too short for short-term loudness and range, which take 3 s\n", name);
    if (!figures.integrated) return fmt::format("{}: has no loudness above -70 LUFS\n", name);
    return {};
}

std::string verdicts(const Measurement& measurement, const Requirements& requirements) {
    const ProgrammeFigures& figures = measurement.figures;
    const std::string name = measurement.file.string();
    std::string text;
    if (requirements.missesTarget(figures)) {
        text += figures.integrated
                    ? fmt::format("{}: misses {:.2f} LUFS by {:+.2f} LU\n", name, *requirements.targetLufs,
                                  *figures.integrated - *requirements.targetLufs)
                    : fmt::format("{}: has no loudness to compare\n", name);
    }
    if (requirements.missesTruePeak(figures)) {
        text += fmt::format("{}: exceeds {:.2f} dBTP by {:.2f} dB\n", name, *requirements.maxTruePeakDb,
                            figures.total.truePeak->level - *requirements.maxTruePeakDb);
    }
    return text;
}

}  // namespace

std::string measurementTable(std::span<const Measurement> measurements, const Requirements& requirements) {
    std::string text = head();
    std::string notes;
    Programme together;
    const Measurement* last = nullptr;
    int measured = 0;
    for (const Measurement& measurement : measurements) {
        if (!measurement.error.empty()) {
            text += fmt::format("{:<{}} not measured\n", shortened(measurement.file.string()), kNameWidth);
            continue;
        }
        text += row(measurement.file.string(), measurement.figures, &requirements);
        notes += shortcomings(measurement) + verdicts(measurement, requirements);
        together.merge(measurement.programme);
        last = &measurement;
        ++measured;
    }
    if (measured > 1) text += row(fmt::format("All {} together", measured), together.figures(), nullptr);
    if (measurements.size() == 1 && last) text += details(*last);
    return notes.empty() ? text : text + "\n" + notes;
}

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
