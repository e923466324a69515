#include "mastering/file_render.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>

#include "audiofile/audio_file_reader.hpp"
#include "audiofile/audio_file_writer.hpp"
#include "audiofile/metadata/metadata_transfer.hpp"
#include "audiofile/speaker_mask.hpp"
#include "foundation/failure.hpp"
#include "foundation/numbers.hpp"
#include "foundation/output_check.hpp"

namespace vanta {

namespace {

namespace fs = std::filesystem;

/// Where the channels of the layout go in a file, and which speakers it is to name.
struct FilePlace {
    std::vector<int> fileChannel;
    std::vector<int> speakers;  ///< empty: none
    std::optional<std::uint32_t> mask;
};

bool isWaveFamily(int format) {
    const int type = format & SF_FORMAT_TYPEMASK;
    return type == SF_FORMAT_WAV || type == SF_FORMAT_WAVEX || type == SF_FORMAT_RF64 ||
           type == SF_FORMAT_W64;
}

FilePlace placeOf(const RenderSource& source, const MasteringJob& job, int format) {
    const FileType& type = *fileTypeOf(format);
    const ChannelMapping& mapping = source.mapping();
    const bool sameType = fileTypeOf(source.input().info().format) == &type;
    const auto speakers = sameType ? mapping.speakers : sortSpeakers(mapping.speakers, type.order);
    const bool positioned = mapping.speakers.size() > 2 && (!sameType || !source.input().positions().empty());
    FilePlace place{fileOrder(mapping, speakers), positioned ? speakers : std::vector<int>(), {}};
    // A mask may say less or other things than there are layouts; where the speakers stay, so does the mask.
    const bool staysWave = isWaveFamily(source.input().info().format) && isWaveFamily(format);
    if (staysWave && speakers == mapping.speakers && !(job.options.layout && mapping.positionsIgnored))
        place.mask = statedMask(source.input().path());
    return place;
}

WrittenLoudness loudnessOf(const std::optional<Measurement>& measurement) {
    if (!measurement) return {};
    const ProgrammeFigures& figures = measurement->figures;
    const auto level = [](const std::optional<TimedLevel>& timed) {
        return timed ? std::optional(timed->level) : std::nullopt;
    };
    return {figures.integrated, figures.range, level(figures.total.truePeak), level(figures.highestMomentary),
            level(figures.highestShortTerm)};
}

/// The line that a render adds to a broadcast file's coding history (EBU R98).
std::string codingHistoryOf(const RenderedFile& file, int channels) {
    const FileSubtype& subtype = *fileSubtypeOf(file.format);
    const std::string mode = channels == 1   ? "mono"
                             : channels == 2 ? "stereo"
                                             : fmt::format("{}ch", channels);
    const auto& style = file.settings->style;
    return fmt::format("A=PCM,F={},W={},M={},T=Vanta 2; {}; Gain {:.2f} dB; Output Level {:.2f} dB",
                       file.sampleRate, subtype.bits, mode, style.text(style.value()),
                       file.settings->gain.value(), file.settings->outputLevel.value());
}

}  // namespace

std::optional<PlaybackLevel> playbackLevel(const ProgrammeFigures& figures) {
    if (!figures.integrated) return std::nullopt;
    const auto& peak = figures.total.truePeak;
    return PlaybackLevel{*figures.integrated, peak ? gainFromDb(peak->level) : 0.0};
}

FileRender::FileRender(const Route& route, const MasteringJob& job)
    : job_(job),
      source_(route.input, job_.options.sideChain, job_.options.layout),
      shape_(source_.input().shape()) {
    file_.route = route;
    file_.settings = std::make_unique<LimiterSettings>();
    job_.settings.applyTo(*file_.settings);
    checkDestination();
    chooseOutput();
    source_.rest();
}

void FileRender::chooseOutput() {
    const FormatWish& wish = job_.options.format;
    shape_.sampleRate = wish.sampleRate.value_or(source_.sampleRate());
    format_ = chooseFormat(shape_, file_.route.output, wish);
    const int asked = shape_.sampleRate;
    shape_.sampleRate = chooseSampleRate(format_, asked);
    if (shape_.sampleRate != asked) {
        source_.note(fmt::format("{}: converted to {} Hz: {} cannot have {} Hz", name(), shape_.sampleRate,
                                 formatName(format_), asked));
    }
    source_.convertTo(shape_.sampleRate);
    file_.sampleRate = shape_.sampleRate;
    shape_.frames = source_.frames() + tailSamples();
    try {
        checkEncoding({0, shape_.sampleRate, shape_.channels, format_, 0, 0}, wish.encoding);
    } catch (const Failure& failure) {
        throw Failure(fmt::format("{}: {}", name(), failure.what()));
    }
}

std::int64_t FileRender::tailSamples() const {
    return std::llround(job_.options.tailSeconds * static_cast<double>(file_.sampleRate));
}

int FileRender::ditherBits() const {
    return VantaParameters::ditherBits(file_.settings->dithering.currentIndex());
}

Work FileRender::work(int pass) const {
    const std::string output = file_.route.output.filename().string();
    return {
        pass == 1 ? fmt::format("rendering {}", output) : fmt::format("rendering {}, pass {}", output, pass),
        shape_.frames, static_cast<double>(file_.sampleRate)};
}

void FileRender::checkDestination() const {
    std::vector<fs::path> read = job_.options.alsoRead;
    read.push_back(file_.route.input);
    if (!job_.options.sideChain.empty()) read.push_back(job_.options.sideChain);
    std::error_code error;
    const fs::path folder = file_.route.output.parent_path();
    if (job_.options.makeFolders && !folder.empty()) {
        if (!fs::exists(folder, error)) return;
        if (!fs::is_directory(folder, error))
            throw Failure(fmt::format("{}: is not a folder: use another", folder.string()));
    }
    checkOutput(file_.route.output, read, job_.options.replace);
}

void FileRender::makeFolder() const {
    const fs::path folder = file_.route.output.parent_path();
    if (!job_.options.makeFolders || folder.empty()) return;
    std::error_code error;
    fs::create_directories(folder, error);
    if (!fs::is_directory(folder, error))
        throw Failure(fmt::format("{}: cannot be made a folder: use another", folder.string()));
}

void FileRender::setDrive(double db) {
    file_.inputTrimDb = std::min(db, 0.0);
    file_.settings->gain.setValue(static_cast<float>(std::max(db, 0.0)), 0);
}

void FileRender::measureInput() {
    if (file_.before) return;
    file_.before = measureFile(file_.route.input, source_.mapping().layout, job_.options.watcher);
}

void FileRender::render() {
    // What is said of a render goes with it.
    file_.warnings = source_.warnings();
    ++file_.renders;
    const bool mayClip = job_.options.format.subtype != nullptr;
    try {
        renderAs(format_, mayClip);
    } catch (const BeyondFullScale&) {
        renderAs(formatBeyondFullScale(format_), false);
    }
    noteSignal();
    if (needsFigures()) measureOutput();
}

bool FileRender::needsFigures() const {
    return job_.measures() || (job_.options.keepsMetadata && statesLoudness(file_.route.input));
}

/// A shorter word makes rounding errors that follow the music; dither turns them into noise.
void FileRender::chooseDither() {
    auto& dithering = file_.settings->dithering;
    dithering.setValue(job_.settings.dithering.value(), 0);
    const FileSubtype& subtype = *fileSubtypeOf(file_.format);
    const bool isShort = subtype.kind == FileSubtype::Integer && subtype.bits == 16;
    file_.ditherAdded = job_.options.dither && isShort && ditherBits() == 0 &&
                        isReduced(source_.input().info().format, file_.format);
    if (file_.ditherAdded) dithering.setMapped(VantaParameters::Dithering::Bits16);
}

void FileRender::commit(const std::optional<PlaybackLevel>& album) {
    transferMetadata(album);
    if (!replacement_->commit())
        throw Failure(fmt::format("{}: cannot be replaced: check that its folder is writable", name()));
    file_.seconds = std::chrono::duration<double>(Clock::now() - start_).count();
}

void FileRender::transferMetadata(const std::optional<PlaybackLevel>& album) {
    const int from = source_.input().info().format;
    MetadataTransfer transfer{
        .from = file_.route.input,
        .to = replacement_->temporary(),
        .fromFormat = from,
        .toFormat = file_.format,
        .change = {source_.sampleRate(), file_.sampleRate, loudnessOf(file_.after),
                   codingHistoryOf(file_, shape_.channels), fileSubtypeOf(file_.format)->bits},
        .strip = !job_.options.keepsMetadata};
    if (job_.options.replayGain != RenderOptions::ReplayGain::None) {
        const auto track = playbackLevel(file_.after->figures);
        if (track) transfer.gain = ReplayGain{*track, album};
        if (!track) warn(fmt::format("{}: too short or too quiet to measure: no ReplayGain", name()));
    }
    try {
        const auto lost = vanta::transferMetadata(transfer);
        if (!lost.empty())
            warn(fmt::format("{}: left out of {}, which has no place for it: {}", file_.route.input.string(),
                             file_.route.output.filename().string(), fmt::join(lost, ", ")));
    } catch (const Failure& failure) {
        throw Failure(fmt::format("{}: cannot be written: {}", name(), failure.what()));
    }
    // What was done to the file since it was written must not have harmed its audio.
    const AudioFileReader whole(replacement_->temporary());
    if (whole.info().frames != shape_.frames)
        throw Failure(fmt::format("{}: cannot be written: part of it did not reach the disk", name()));
}

/// A format for samples beyond full scale.
int FileRender::formatBeyondFullScale(int format) {
    const auto wide = floatFormat(format, shape_, file_.route.output);
    if (!wide) {
        throw Failure(
            fmt::format("{}: exceeds full scale, which {} cannot hold: "
                        "lower Output Level, use wav, or name a subtype to clip",
                        name(), formatName(format)));
    }
    warn(fmt::format("{}: the result exceeds full scale and is written as {}", name(), formatName(*wide)));
    return *wide;
}

void FileRender::renderAs(int format, bool mayClip) {
    file_.format = format;
    chooseDither();
    replacement_.reset();
    makeFolder();
    replacement_ = std::make_unique<FileReplacement>(file_.route.output);
    const auto limit = mayClip ? AudioFileWriter::Limit::Clip : AudioFileWriter::Limit::Refuse;
    const auto place = placeOf(source_, job_, format);
    AudioFileWriter writer({replacement_->temporary(), name(), format, file_.sampleRate, place.fileChannel,
                            place.speakers, limit, job_.options.format.encoding, place.mask});
    source_.rewind();
    const Progress progress = watch(job_.options.watcher, work(file_.renders));
    file_.result = runLimiter(writer, progress);
    source_.rest();
    if (!file_.result.complete) throw Stopped();
    if (file_.result.output.notFinite > 0) {
        throw Failure(
            fmt::format("{}: the limiter produced {} samples that are not numbers; nothing was written",
                        name(), file_.result.output.notFinite));
    }
    writer.finish();
    // Some encoders take their time to close a file.
    if (!progress(shape_.frames)) throw Stopped();
    noteWriter(writer);
}

RenderResult FileRender::runLimiter(AudioFileWriter& writer, const Progress& progress) {
    const RenderJob job{.settings = *file_.settings,
                        .input = source_.audio(),
                        .output = writer,
                        .patch = job_.options.patch ? &*job_.options.patch : nullptr,
                        .sideChain = source_.sideChain(),
                        .layout = source_.mapping().layout,
                        .sampleRate = static_cast<double>(file_.sampleRate),
                        .blockSamples = job_.options.blockSamples,
                        .inputTrimDb = file_.inputTrimDb,
                        .tailSamples = tailSamples(),
                        .ditherSeed = job_.options.ditherSeed,
                        .progress = progress};
    return job_.options.renderer ? job_.options.renderer(job) : vanta::render(job);
}

// What the file holds counts, not what was sent there: it went through dither, rounding and maybe a codec.
void FileRender::measureOutput() {
    const fs::path& output = file_.route.output;
    const auto watcher = [&](Work measuring) {
        measuring.title = fmt::format("measuring {}", output.filename().string());
        return watch(job_.options.watcher, measuring);
    };
    file_.after = measureFile(replacement_->temporary(), source_.mapping().layout, watcher);
    file_.after->file = output;
}

void FileRender::noteWriter(const AudioFileWriter& writer) {
    if (writer.clipped() > 0)
        warn(fmt::format("{}: {} samples beyond full scale were clipped", name(), writer.clipped()));
    if (!writer.positionsDeclared())
        warn(fmt::format("{}: {} has no place for which channel is which speaker; they keep their order",
                         name(), formatName(file_.format)));
    const FileSubtype& subtype = *fileSubtypeOf(file_.format);
    const int bits = ditherBits();
    if (bits == 0 || subtype.kind == FileSubtype::Float) return;
    if (subtype.kind != FileSubtype::Integer) {
        warn(fmt::format("{}: {} does not preserve the dither to {} bits", name(), subtype.name, bits));
    } else if (subtype.bits < bits) {
        warn(fmt::format(
            "{}: dithered to {} bits, then rounded to the {} bits of {}: dither to {} bits or fewer", name(),
            bits, subtype.bits, subtype.name, subtype.bits));
    }
}

void FileRender::noteSignal() {
    const auto note = [&](const fs::path& path, const StreamLevels& levels) {
        if (levels.notFinite == 0) return;
        warn(fmt::format("{}: {} samples are not finite numbers; they count as silence", path.string(),
                         levels.notFinite));
    };
    file_.result.input.notFinite += source_.notFinite();
    note(file_.route.input, file_.result.input);
    if (source_.sideChain()) note(job_.options.sideChain, file_.result.sideChain);
    if (file_.settings->bypass.mapped()) warn(fmt::format("{}: Bypass is on; nothing was limited", name()));
}

}  // namespace vanta
