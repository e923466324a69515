#include "cli/measurement_text.hpp"

#include <fmt/format.h>

#include <optional>

#include "foundation/printable.hpp"

namespace vanta {

namespace {

using Figures = ProgrammeFigures;
using Value = std::optional<double>;

Value plain(const std::optional<TimedLevel>& timed) {
    return timed ? Value(timed->level) : std::nullopt;
}

struct Column {
    const char* head;
    const char* unit;
    int width;
    int decimals;
    Value (*value)(const Figures&);
    bool (Requirements::*misses)(const Figures&) const = nullptr;  ///< what marks the value with a "!"
};
constexpr Column kColumns[] = {
    {"Integr.", "LUFS", 8, 2, [](const Figures& f) { return f.integrated; }, &Requirements::missesTarget},
    {"Range", "LU", 6, 1, [](const Figures& f) { return f.range; }},
    {"Max M", "LUFS", 7, 1, [](const Figures& f) { return plain(f.highestMomentary); }},
    {"Max S", "LUFS", 7, 1, [](const Figures& f) { return plain(f.highestShortTerm); }},
    {"Peak", "dBFS", 8, 2, [](const Figures& f) { return plain(f.total.samplePeak); }},
    {"True pk", "dBTP", 8, 2, [](const Figures& f) { return plain(f.total.truePeak); },
     &Requirements::missesTruePeak},
    {"RMS", "dB", 7, 1, [](const Figures& f) { return f.total.rms; }},
    {"Crest", "dB", 6, 1, [](const Figures& f) { return f.total.crest; }},
};
constexpr std::size_t kNameWidth = 30;

/// Of a long name the end matters more than the beginning.
std::string shortened(const std::string& name) {
    if (name.size() <= kNameWidth) return name;
    std::size_t from = name.size() - (kNameWidth - 2);
    while (from < name.size() && (name[from] & 0xC0) == 0x80) ++from;
    return ".." + name.substr(from);
}

std::string row(const std::string& name, const ProgrammeFigures& figures, const Requirements* requirements) {
    std::string line = fmt::format("{:<{}}", shortened(name), kNameWidth);
    for (const Column& column : kColumns) {
        const Value value = column.value(figures);
        const bool missed = requirements && column.misses && (requirements->*column.misses)(figures);
        const std::string text = value ? fmt::format("{:.{}f}", *value, column.decimals) : "-";
        line += fmt::format("{:>{}}", text + (missed ? "!" : " "), column.width);
    }
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

/// What only a single file has room for: ends of the range, times, channels.
std::string details(const Measurement& measurement) {
    const ProgrammeFigures& figures = measurement.figures;
    std::string text =
        fmt::format("\n  {}, {}, {} Hz, {}\n", measurement.format, channelLayoutName(measurement.layout),
                    measurement.sampleRate, clock(figures.seconds));
    if (figures.range) {
        text += fmt::format("  {:<22}{:>8.2f} to {:.2f} LUFS\n", "Loudness range", *figures.rangeLow,
                            *figures.rangeHigh);
    }
    text += at("Max momentary", figures.highestMomentary, "LUFS");
    text += at("Max short-term", figures.highestShortTerm, "LUFS");
    for (std::size_t c = 0; c < figures.channels.size(); ++c) {
        text += at(fmt::format("Channel {} peak", c + 1), figures.channels[c].samplePeak, "dBFS");
        text += at(fmt::format("Channel {} true peak", c + 1), figures.channels[c].truePeak, "dBTP");
    }
    return text;
}

std::string shortcomings(const Measurement& measurement) {
    const ProgrammeFigures& figures = measurement.figures;
    const std::string name = printable(measurement.file.string());
    if (!figures.total.samplePeak) return fmt::format("{}: silent\n", name);
    if (!figures.highestMomentary && figures.seconds < 0.4)
        return fmt::format("{}: too short to measure loudness, which takes 0.4 s\n", name);
    if (!figures.highestShortTerm && figures.seconds < 3.0)
        return fmt::format("{}: too short to measure short-term loudness and range, which take 3 s\n", name);
    if (!figures.integrated)
        return fmt::format("{}: too quiet to measure loudness, which starts at -70 LUFS\n", name);
    return {};
}

std::string verdicts(const Measurement& measurement, const Requirements& requirements) {
    const ProgrammeFigures& figures = measurement.figures;
    const std::string name = printable(measurement.file.string());
    std::string text;
    if (requirements.missesTarget(figures)) {
        text += figures.integrated
                    ? fmt::format("{}: {:+.2f} LU off the target of {:.2f} LUFS\n", name,
                                  *figures.integrated - *requirements.targetLufs, *requirements.targetLufs)
                    : fmt::format("{}: no loudness to compare with the target of {:.2f} LUFS\n", name,
                                  *requirements.targetLufs);
    }
    if (requirements.missesTruePeak(figures)) {
        text += fmt::format("{}: true peak {:.2f} dB above the limit of {:.2f} dBTP\n", name,
                            figures.total.truePeak->level - *requirements.maxTruePeakDb,
                            *requirements.maxTruePeakDb);
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
            text += fmt::format("{:<{}} not measured\n", shortened(printable(measurement.file.string())),
                                kNameWidth);
            continue;
        }
        text += row(printable(measurement.file.string()), measurement.figures, &requirements);
        notes += shortcomings(measurement) + verdicts(measurement, requirements);
        together.merge(measurement.programme);
        last = &measurement;
        ++measured;
    }
    if (measured > 1)
        text += row(fmt::format("All {} as one programme", measured), together.figures(), nullptr);
    if (measurements.size() == 1 && last) text += details(*last);
    return notes.empty() ? text : text + "\n" + notes;
}

}  // namespace vanta
