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
#include "foundation/numbers.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

/// The word length of the Dithering setting; 0 when off.
int ditherBits(const LimiterSettings& settings) {
    const int index = settings.dithering.currentIndex();
    return index == 0 ? 0 : 14 + 2 * index;
}

/// Where the channels of the layout go in a file, and which speakers it is to name.
struct FilePlace {
    std::vector<int> fileChannel;
    std::vector<int> speakers;  ///< empty: none
};

FilePlace placeOf(const RenderSource& source, int format) {
    const FileType& type = *fileTypeOf(format);
    const ChannelMapping& mapping = source.mapping();
    const bool sameType = fileTypeOf(source.input().info().format) == &type;
    const auto speakers = sameType ? mapping.speakers : sortSpeakers(mapping.speakers, type.order);
    const bool positioned = mapping.speakers.size() > 2 && (!sameType || !source.input().positions().empty());
    return {fileOrder(mapping, speakers), positioned ? speakers : std::vector<int>()};
}

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

FileRender::FileRender(const fs::path& inputPath, const fs::path& outputPath,
                       const LimiterSettings& limiterSettings, const RenderOptions& renderOptions)
    : options(renderOptions),
      source(inputPath, options.sideChain, options.layout),
      shape(source.input().shape()) {
    limiterSettings.applyTo(settings);
    report_.input = inputPath;
    report_.output = outputPath;
    report_.sampleRate = source.sampleRate();
    report_.style = settings.style.text(settings.style.value());
    shape.frames += tailSamples();
    checkDestination();
}

FileRender::~FileRender() = default;

std::int64_t FileRender::tailSamples() const {
    return std::llround(options.tailSeconds * static_cast<double>(report_.sampleRate));
}

void FileRender::checkDestination() const {
    std::vector<fs::path> read = options.alsoRead;
    read.push_back(report_.input);
    if (!options.sideChain.empty()) read.push_back(options.sideChain);
    checkOutput(report_.output, read, options.replace);
}

void FileRender::measureInput() {
    if (report_.before) return;
    report_.before = measureFile(report_.input, source.mapping().layout, !options.quiet);
}

void FileRender::render(double gainDb, double outputLevelDb) {
    settings.gain.setValue(static_cast<float>(gainDb), 0);
    settings.outputLevel.setValue(static_cast<float>(outputLevelDb), 0);
    report_.gainDb = static_cast<double>(settings.gain.value());
    report_.outputLevelDb = static_cast<double>(settings.outputLevel.value());
    // What is said of a render goes with it.
    report_.warnings = source.warnings();
    ++report_.renders;
    const int format = chooseFormat(shape, report_.output, options.format);
    const bool mayClip = options.format.subtype != nullptr;
    try {
        renderAs(format, mayClip);
    } catch (const BeyondFullScale&) {
        renderAs(formatBeyondFullScale(format), false);
    }
    noteSignal();
    // What the file holds counts, not what was sent there: it went through dither and rounding.
    if (!options.measure) return;
    report_.after = measureFile(replacement->temporary(), source.mapping().layout, false);
    report_.after->file = report_.output;
}

void FileRender::commit() {
    if (!replacement->commit())
        throw Failure(fmt::format("{}: cannot be put in place", report_.output.string()));
}

/// A format for samples beyond full scale.
int FileRender::formatBeyondFullScale(int format) {
    const auto wide = floatFormat(format, shape);
    if (!wide) {
        throw Failure(
            fmt::format("{}: the result goes beyond full scale, which {} cannot hold: lower "
                        "--output-level, write a type with float samples such as wav, or give "
                        "--subtype to have it clipped",
                        report_.output.string(), formatName(format)));
    }
    warn(fmt::format("{}: the result goes beyond full scale and is written as {}", report_.output.string(),
                     formatName(*wide)));
    return *wide;
}

void FileRender::renderAs(int format, bool mayClip) {
    report_.format = format;
    replacement.reset();
    replacement = std::make_unique<FileReplacement>(report_.output);
    const auto limit = mayClip ? AudioFileWriter::Limit::Clip : AudioFileWriter::Limit::Refuse;
    const auto place = placeOf(source, format);
    AudioFileWriter writer({replacement->temporary(), report_.output.string(), format, report_.sampleRate,
                            place.fileChannel, place.speakers, limit});
    copyTags(source.input().handle(), writer.handle());
    source.rewind();
    report_.result = runLimiter(writer);
    if (!report_.result.complete) throw Interrupted();
    if (report_.result.output.notFinite > 0) {
        throw Failure(fmt::format("{}: the limiter gave {} samples that are no numbers; nothing was written",
                                  report_.output.string(), report_.result.output.notFinite));
    }
    writer.finish();
    if (interruptRequested()) throw Interrupted();
    noteWriter(writer);
}

RenderResult FileRender::runLimiter(AudioFileWriter& writer) {
    const std::string name = report_.output.filename().string();
    ProgressBar progress(report_.renders > 1 ? fmt::format("{}, render {}", name, report_.renders) : name,
                         shape.frames, report_.sampleRate, !options.quiet);
    const auto proceed = [&](std::int64_t frames) {
        progress.show(frames);
        return !interruptRequested();
    };
    return vanta::render({.settings = settings,
                          .input = source.input(),
                          .output = writer,
                          .sideChain = source.sideChain(),
                          .layout = source.mapping().layout,
                          .sampleRate = static_cast<double>(report_.sampleRate),
                          .blockSamples = options.blockSamples,
                          .tailSamples = tailSamples(),
                          .ditherSeed = options.ditherSeed,
                          .proceed = proceed});
}

void FileRender::noteWriter(const AudioFileWriter& writer) {
    const std::string name = report_.output.string();
    if (writer.clipped() > 0) {
        warn(fmt::format("{}: {} samples beyond full scale were clipped", name, writer.clipped()));
    }
    const FileSubtype& subtype = *fileSubtypeOf(report_.format);
    const int bits = ditherBits(settings);
    if (bits == 0 || subtype.kind == FileSubtype::Float) return;
    if (subtype.kind != FileSubtype::Integer) {
        warn(fmt::format("{}: {} does not keep the {} bits of the dither", name, subtype.name, bits));
    } else if (subtype.bits < bits) {
        warn(fmt::format("{}: {} has fewer bits than the {} of the dither: the result was rounded once more",
                         name, subtype.name, bits));
    }
}

void FileRender::noteSignal() {
    const auto note = [&](const fs::path& path, const StreamLevels& levels) {
        if (levels.notFinite == 0) return;
        warn(fmt::format("{}: {} samples are not finite numbers and count as silence", path.string(),
                         levels.notFinite));
    };
    note(report_.input, report_.result.input);
    if (source.sideChain()) note(options.sideChain, report_.result.sideChain);
    if (settings.bypass.mapped())
        warn(fmt::format("{}: Bypass is on, nothing was limited", report_.output.string()));
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
