#include "cli/render_text.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "foundation/numbers.hpp"
#include "foundation/printable.hpp"
#include "mastering/verification.hpp"

namespace vanta {

namespace {

std::string peakText(const StreamLevels& levels) {
    if (levels.peak <= kSilence) return "-INF dBFS";
    // Adding 0 takes the sign off a rounded zero.
    const double db = std::round(100.0 * dbFromGain(static_cast<double>(levels.peak))) / 100.0 + 0.0;
    return fmt::format("{:.2f} dBFS", db);
}

std::string speedText(double factor) {
    return factor < 9.95 ? fmt::format("{:.1f}x", factor) : fmt::format("{:.0f}x", factor);
}

std::string ditherText(const RenderedFile& file) {
    if (fileSubtypeOf(file.format)->kind != FileSubtype::Integer) return {};
    const int bits = VantaParameters::ditherBits(file.settings->dithering.currentIndex());
    return bits == 0 ? ", no dither" : fmt::format(", dithered to {} bits", bits);
}

std::string summary(const MasteringJob& job, const RenderedFile& file) {
    const RenderResult& result = file.result;
    const double rate = file.sampleRate;
    const double length = static_cast<double>(result.outputFrames) / rate;
    return fmt::format(
        "{} -> {} ({}{}): {}, peak {} in, {} out, "
        "gain reduction up to {:.1f} dB, latency {} samples ({:.1f} ms), {} real time\n",
        printable(file.route.input.string()), printable(file.route.output.string()), formatName(file.format),
        ditherText(file), job.styleName(), peakText(result.input), peakText(result.output),
        result.largestReductionDb, result.latencySamples, 1000.0 * result.latencySamples / rate,
        speedText(length / std::max(file.seconds, 1e-6)));
}

std::string decibels(std::optional<double> value, int decimals) {
    return value ? fmt::format("{:.{}f}", *value, decimals) : "-";
}

std::string figuresLine(std::string_view when, const std::optional<Measurement>& measurement) {
    if (!measurement) return {};
    const ProgrammeFigures& figures = measurement->figures;
    const auto& peak = figures.total.truePeak;
    return fmt::format("  {:<7}{:>7} LUFS, range {:>4} LU, true peak {:>6} dBTP{}\n", when,
                       decibels(figures.integrated, 2), decibels(figures.range, 1),
                       decibels(peak ? std::optional(peak->level) : std::nullopt, 2),
                       figures.integrated ? "" : " (too short or too quiet to measure loudness)");
}

std::string reductionLine(const RenderResult& result) {
    return fmt::format(
        "  gain reduction {:.1f} dB on average, {:.1f} dB at most, above 0.1 dB for {:.0f} % of the time\n",
        result.meanReductionDb, result.largestReductionDb, 100.0 * result.reducedShare);
}

std::string passes(int count) {
    return fmt::format("{} {}", count, count == 1 ? "pass" : "passes");
}

std::string loudnessLine(const MasteringJob& job, const RenderOutcome& outcome) {
    const GoalsReached& reached = outcome.reached;
    const double trimDb = outcome.file.inputTrimDb;
    const std::string how = trimDb < 0.0 ? fmt::format("the input turned down by {:.2f} dB", -trimDb)
                                         : fmt::format("Gain {:.2f} dB", outcome.file.settings->gain.value());
    std::string text = fmt::format("  loudness {:.2f} LUFS reached with {} in {}", *job.goals.loudnessLufs,
                                   how, passes(reached.passes));
    if (job.goals.album)
        text += fmt::format(", {:.2f} LUFS over {}", *reached.lufs,
                            reached.files == 1 ? "1 file" : fmt::format("all {} files", reached.files));
    const float asked = job.settings.gain.value();
    if (job.goals.replacesGain && asked != 0.0f)
        text += fmt::format("; replaces the {:.2f} dB that were set", asked);
    return text + "\n";
}

std::string truePeakLine(const MasteringJob& job, const RenderedFile& file) {
    const double limitDb = *job.goals.maxTruePeakDb;
    const auto margin = marginDb(file, limitDb);
    std::string text = fmt::format("  true peak within {:.2f} dBTP", limitDb);
    text += margin ? fmt::format(" with {:.3f} dB to spare", *margin) : ": silence";
    const float asked = job.settings.outputLevel.value();
    const float used = file.settings->outputLevel.value();
    if (used < asked) text += fmt::format(", Output Level lowered from {:.2f} to {:.3f} dB", asked, used);
    return text + fmt::format(", after {}\n", passes(file.renders));
}

}  // namespace

std::string renderText(const MasteringJob& job, const RenderOutcome& outcome) {
    const RenderedFile& file = outcome.file;
    std::string text =
        summary(job, file) + figuresLine("before", file.before) + figuresLine("after", file.after);
    if (file.after) text += reductionLine(file.result);
    if (file.ditherAdded)
        text += "  dithered, as the input has more than 16 bits; --dither off leaves it out\n";
    if (job.goals.loudnessLufs) text += loudnessLine(job, outcome);
    if (job.goals.maxTruePeakDb) text += truePeakLine(job, file);
    return text;
}

}  // namespace vanta
