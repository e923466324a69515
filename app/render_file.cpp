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
#include "foundation/file_replacement.hpp"
#include "foundation/numbers.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

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
        : settings(limiterSettings), options(renderOptions), input(inputPath) {
        report.input = inputPath;
        report.output = outputPath;
        report.sampleRate = input.info().samplerate;
        checkInput();
        openSideChain();
        checkDestination();
    }

    FileReport run() {
        StreamShape shape = input.shape();
        shape.frames += tailSamples();
        int format = chooseFormat(shape, report.output, options.format);
        const bool mayClip = options.format.subtype != nullptr;
        try {
            renderAs(format, mayClip ? AudioFileWriter::Limit::Clip : AudioFileWriter::Limit::Refuse);
        } catch (const BeyondFullScale&) {
            renderAs(formatBeyondFullScale(format, shape), AudioFileWriter::Limit::Refuse);
        }
        noteSignal();
        return std::move(report);
    }

private:
    void warn(std::string text) { report.warnings.push_back(std::move(text)); }
    std::int64_t tailSamples() const {
        return std::llround(options.tailSeconds * static_cast<double>(report.sampleRate));
    }

    void checkInput() {
        const int rate = report.sampleRate;
        if (rate < kLowestSampleRate || rate > kHighestSampleRate) {
            throw Failure(
                fmt::format("{}: its sample rate of {} Hz is out of range: the limiter runs at 8000 to "
                            "384000 Hz",
                            input.path().string(), rate));
        }
        mapping = mapped(input, options.layout);
    }

    ChannelMapping mapped(AudioFileReader& file, std::optional<ChannelLayout> layout) {
        try {
            const ChannelMapping found =
                mapChannels(file.positions(), file.channelCount(), file.usualOrder(), layout);
            if (found.positionsIgnored) {
                warn(
                    fmt::format("{}: its speaker positions fit no layout: its channels are taken for {}; "
                                "--layout can say otherwise",
                                file.path().string(), channelLayoutName(found.layout)));
            }
            file.setMapping(found);
            return found;
        } catch (const Failure& failure) {
            throw Failure(fmt::format("{}: {}", file.path().string(), failure.what()));
        }
    }

    void openSideChain() {
        if (options.sideChain.empty()) return;
        sideChain.emplace(options.sideChain);
        const SF_INFO& side = sideChain->info();
        const SF_INFO& main = input.info();
        const auto differs = [&](std::string_view what, std::int64_t its, std::int64_t mains) {
            throw Failure(fmt::format("{}: a side chain of {} {} does not go with {}, which has {}",
                                      options.sideChain.string(), its, what, input.path().string(), mains));
        };
        if (side.samplerate != main.samplerate) differs("Hz", side.samplerate, main.samplerate);
        if (side.frames != main.frames) differs("frames", side.frames, main.frames);
        if (side.channels > main.channels) differs("channels", side.channels, main.channels);
        const bool same = side.channels == main.channels;
        mapped(*sideChain, same ? std::optional(mapping.layout) : std::nullopt);
    }

    void checkDestination() const {
        std::vector<fs::path> read = options.alsoRead;
        read.push_back(report.input);
        if (sideChain) read.push_back(options.sideChain);
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

    void renderAs(int format, AudioFileWriter::Limit limit) {
        FileReplacement replacement(report.output);
        AudioFileWriter writer(targetFor(format, replacement.temporary(), limit));
        copyTags(input.handle(), writer.handle());
        input.rewind();
        if (sideChain) sideChain->rewind();

        const std::int64_t total = input.info().frames + tailSamples();
        ProgressBar progress(report.output.filename().string(), total, report.sampleRate, !options.quiet);
        const auto proceed = [&](std::int64_t frames) {
            progress.show(frames);
            return !interruptRequested();
        };
        report.format = format;
        report.result = render({.settings = settings,
                                .input = input,
                                .output = writer,
                                .sideChain = sideChain ? &*sideChain : nullptr,
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
        if (!replacement.commit())
            throw Failure(fmt::format("{}: cannot be put in place", report.output.string()));
        noteWriter(writer);
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
        if (sideChain) note(options.sideChain, report.result.sideChain);
        if (settings.bypass.mapped())
            warn(fmt::format("{}: Bypass is on, nothing was limited", report.output.string()));
    }

    const LimiterSettings& settings;
    const RenderOptions& options;
    FileReport report;
    AudioFileReader input;
    std::optional<AudioFileReader> sideChain;
    ChannelMapping mapping;
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
        roundingText(report, settings), settings.style.text(settings.style.value()), peakText(result.input),
        peakText(result.output), result.largestReductionDb, result.latencySamples,
        1000.0 * result.latencySamples / rate, speedText(length / std::max(result.seconds, 1e-6)));
}

}  // namespace vanta
