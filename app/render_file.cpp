#include "app/render_file.hpp"

#include <fmt/format.h>

#include <cmath>

#include "app/audio_file_reader.hpp"
#include "app/audio_file_tags.hpp"
#include "app/audio_file_writer.hpp"
#include "app/failure.hpp"
#include "app/interrupt.hpp"
#include "app/output_path.hpp"
#include "app/progress_bar.hpp"
#include "app/render_source.hpp"
#include "foundation/file_replacement.hpp"
#include "foundation/numbers.hpp"
#include "host/offline/measuring_streams.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

/// Each render comes nearer by what was missing; what still does not hold by then never will.
constexpr int kMostRenders = 10;
constexpr double kLowestOutputLevelDb = -30.0;

/// The word length of the Dithering setting; 0 when off.
int ditherBits(const LimiterSettings& settings) {
    const int index = settings.dithering.currentIndex();
    return index == 0 ? 0 : 14 + 2 * index;
}

/// One file on its way through the limiter.
class FileRender {
public:
    FileRender(const fs::path& inputPath, const fs::path& outputPath, const LimiterSettings& limiterSettings,
               const RenderOptions& renderOptions)
        : options(renderOptions),
          source(inputPath, options.sideChain, options.layout),
          input(source.input()),
          mapping(source.mapping()) {
        limiterSettings.applyTo(settings);
        report.input = inputPath;
        report.output = outputPath;
        report.sampleRate = source.sampleRate();
        report.warnings = source.warnings();
        checkDestination();
    }

    FileReport run() {
        StreamShape shape = input.shape();
        shape.frames += tailSamples();
        int format = chooseFormat(shape, report.output, options.format);
        const bool mayClip = options.format.subtype != nullptr;
        auto limit = mayClip ? AudioFileWriter::Limit::Clip : AudioFileWriter::Limit::Refuse;
        for (bool holds = false; !holds;) {
            try {
                holds = renderAs(format, limit);
            } catch (const BeyondFullScale&) {
                format = formatBeyondFullScale(format, shape);
                limit = AudioFileWriter::Limit::Refuse;
            }
        }
        noteSignal();
        report.gainDb = static_cast<double>(settings.gain.value());
        report.outputLevelDb = static_cast<double>(settings.outputLevel.value());
        report.style = settings.style.text(settings.style.value());
        return std::move(report);
    }

private:
    void warn(std::string text) { report.warnings.push_back(std::move(text)); }
    std::int64_t tailSamples() const {
        return std::llround(options.tailSeconds * static_cast<double>(report.sampleRate));
    }

    void checkDestination() const {
        std::vector<fs::path> read = options.alsoRead;
        read.push_back(report.input);
        if (!options.sideChain.empty()) read.push_back(options.sideChain);
        checkOutput(report.output, read, options.replace);
    }

    /// A format for samples beyond full scale.
    int formatBeyondFullScale(int format, const StreamShape& shape) {
        const auto wide = floatFormat(format, shape);
        if (!wide) {
            throw Failure(
                fmt::format("{}: the result goes beyond full scale, which {} cannot hold: lower "
                            "--output-level, write a type with float samples such as wav, or give "
                            "--subtype to have it clipped",
                            report.output.string(), formatName(format)));
        }
        warn(fmt::format("{}: the result goes beyond full scale and is written as {}", report.output.string(),
                         formatName(*wide)));
        return *wide;
    }

    AudioFileWriter::Target targetFor(int format, const fs::path& file, AudioFileWriter::Limit limit) const {
        const FileType& type = *fileTypeOf(format);
        const bool sameType = fileTypeOf(input.info().format) == &type;
        const auto speakers = sameType ? mapping.speakers : sortSpeakers(mapping.speakers, type.order);
        const bool positioned = mapping.speakers.size() > 2 && (!sameType || !input.positions().empty());
        return {file,
                report.output.string(),
                format,
                report.sampleRate,
                fileOrder(mapping, speakers),
                positioned ? speakers : std::vector<int>(),
                limit};
    }

    /// False if the file went beyond the highest true peak: then nothing was put in place, and the ceiling
    /// is lower now.
    bool renderAs(int format, AudioFileWriter::Limit limit) {
        FileReplacement replacement(report.output);
        AudioFileWriter writer(targetFor(format, replacement.temporary(), limit));
        copyTags(input.handle(), writer.handle());
        source.rewind();
        MeasuringReader before(input, mapping.layout, static_cast<double>(report.sampleRate));
        const bool measureInput = options.measure && !report.before;

        const std::int64_t total = input.info().frames + tailSamples();
        ProgressBar progress(report.output.filename().string(), total, report.sampleRate, !options.quiet);
        const auto proceed = [&](std::int64_t frames) {
            progress.show(frames);
            return !interruptRequested();
        };
        report.format = format;
        ++report.renders;
        report.result = render({.settings = settings,
                                .input = measureInput ? static_cast<AudioReader&>(before) : input,
                                .output = writer,
                                .sideChain = source.sideChain(),
                                .layout = mapping.layout,
                                .sampleRate = static_cast<double>(report.sampleRate),
                                .blockSamples = options.blockSamples,
                                .tailSamples = tailSamples(),
                                .ditherSeed = options.ditherSeed,
                                .proceed = proceed});
        if (!report.result.complete) throw Interrupted();
        if (report.result.output.notFinite > 0) {
            throw Failure(
                fmt::format("{}: the limiter gave {} samples that are no numbers; nothing was written",
                            report.output.string(), report.result.output.notFinite));
        }
        writer.finish();
        if (interruptRequested()) throw Interrupted();
        if (measureInput) noteInput(before.finish());
        if (options.measure) noteOutput(replacement.temporary());
        if (options.maxTruePeakDb && !holdsTruePeak(*options.maxTruePeakDb)) return false;
        if (!replacement.commit())
            throw Failure(fmt::format("{}: cannot be put in place", report.output.string()));
        noteWriter(writer);
        return true;
    }

    void noteInput(const Programme& programme) {
        Measurement& measurement = report.before.emplace();
        measurement.file = report.input;
        measurement.format = formatName(input.info().format);
        measurement.layout = mapping.layout;
        measurement.sampleRate = report.sampleRate;
        measurement.programme = programme;
        measurement.figures = programme.figures();
    }

    /// What the file holds counts, not what was sent there: it went through dither and rounding.
    void noteOutput(const fs::path& file) {
        report.after = measureFile(file, mapping.layout, false);
        report.after->file = report.output;
    }

    bool holdsTruePeak(double limit) {
        const auto& peak = report.after->figures.total.truePeak;
        const double missing = peak ? peak->level - limit : 0.0;
        if (missing <= 0.0) return true;
        const double lower = static_cast<double>(settings.outputLevel.value()) - missing - kTruePeakReserveDb;
        if (report.renders >= kMostRenders || lower < kLowestOutputLevelDb) {
            throw Failure(
                fmt::format("{}: its true peak stays {:.3f} dB above {:.2f} dBTP after {} renders; "
                            "nothing was written",
                            report.output.string(), missing, limit, report.renders));
        }
        settings.outputLevel.setValue(static_cast<float>(lower), 0);
        return false;
    }

    void noteWriter(const AudioFileWriter& writer) {
        const std::string name = report.output.string();
        if (writer.clipped() > 0) {
            warn(fmt::format("{}: {} samples beyond full scale were clipped", name, writer.clipped()));
        }
        const FileSubtype& subtype = *fileSubtypeOf(report.format);
        const int bits = ditherBits(settings);
        if (bits == 0 || subtype.kind == FileSubtype::Float) return;
        if (subtype.kind != FileSubtype::Integer) {
            warn(fmt::format("{}: {} does not keep the {} bits of the dither", name, subtype.name, bits));
        } else if (subtype.bits < bits) {
            warn(fmt::format(
                "{}: {} has fewer bits than the {} of the dither: the result was rounded once more", name,
                subtype.name, bits));
        }
    }

    void noteSignal() {
        const auto note = [&](const fs::path& path, const StreamLevels& levels) {
            if (levels.notFinite == 0) return;
            warn(fmt::format("{}: {} samples are not finite numbers and count as silence", path.string(),
                             levels.notFinite));
        };
        note(report.input, report.result.input);
        if (source.sideChain()) note(options.sideChain, report.result.sideChain);
        if (settings.bypass.mapped())
            warn(fmt::format("{}: Bypass is on, nothing was limited", report.output.string()));
    }

    LimiterSettings settings;
    const RenderOptions& options;
    FileReport report;
    RenderSource source;
    AudioFileReader& input;
    const ChannelMapping& mapping;
};

std::string peakText(const StreamLevels& levels) {
    if (levels.peak <= kSilence) return "-INF dBFS";
    // Adding 0 takes the sign off a rounded zero.
    const double db = std::round(100.0 * dbFromGain(static_cast<double>(levels.peak))) / 100.0 + 0.0;
    return fmt::format("{:.2f} dBFS", db);
}

std::string speedText(double factor) {
    return factor < 9.95 ? fmt::format("{:.1f}x", factor) : fmt::format("{:.0f}x", factor);
}

std::string roundingText(const FileReport& report, const LimiterSettings& settings) {
    const FileSubtype* subtype = fileSubtypeOf(report.format);
    if (subtype->kind != FileSubtype::Integer) return {};
    const int bits = ditherBits(settings);
    return bits == 0 ? " without dither" : fmt::format(" dithered to {} bits", bits);
}

}  // namespace

FileReport renderFile(const fs::path& input, const fs::path& output, const LimiterSettings& settings,
                      const RenderOptions& options) {
    return FileRender(input, output, settings, options).run();
}

std::string summary(const FileReport& report, const LimiterSettings& settings) {
    const RenderResult& result = report.result;
    const double rate = report.sampleRate;
    const double length = static_cast<double>(result.outputFrames) / rate;
    return fmt::format(
        "{} -> {} ({}{}): {}, peak {} in, {} out, largest gain reduction {:.1f} dB, "
        "latency {} samples ({:.1f} ms), {} real time",
        report.input.string(), report.output.string(), formatName(report.format),
        roundingText(report, settings), report.style, peakText(result.input), peakText(result.output),
        result.largestReductionDb, result.latencySamples, 1000.0 * result.latencySamples / rate,
        speedText(length / std::max(result.seconds, 1e-6)));
}

}  // namespace vanta
