#include "app/measurement.hpp"

#include <fmt/format.h>

#include <array>
#include <cmath>

#include "app/audio_file_reader.hpp"
#include "app/failure.hpp"
#include "app/interrupt.hpp"
#include "app/progress_bar.hpp"
#include "host/offline/render.hpp"

namespace vanta {

namespace {

constexpr std::size_t kBlock = 4096;
/// What one prints with two decimals is compared with as many.
constexpr double kHalfDigit = 0.005;

void checkRate(const AudioFileReader& file) {
    const int rate = file.info().samplerate;
    if (rate >= kLowestSampleRate && rate <= kHighestSampleRate) return;
    throw Failure(fmt::format("{}: its sample rate of {} Hz is out of range: 8000 to 384000 Hz are measured",
                              file.path().string(), rate));
}

void run(AudioFileReader& file, ProgrammeMeter& meter, ProgressBar& progress) {
    const auto width = static_cast<std::size_t>(file.channelCount());
    std::vector<float> samples(width * kBlock);
    std::array<float*, kMaxChannels> channels{};
    for (std::size_t c = 0; c < width; ++c) channels[c] = samples.data() + c * kBlock;
    std::int64_t done = 0;
    for (std::size_t frames = kBlock; frames == kBlock;) {
        frames = file.read(std::span(channels.data(), width), kBlock);
        meter.process(std::span<const float* const>(channels.data(), width), frames);
        done += static_cast<std::int64_t>(frames);
        progress.show(done);
        if (interruptRequested()) throw Interrupted();
    }
    meter.finish();
}

}  // namespace

Measurement measureFile(const std::filesystem::path& path, std::optional<ChannelLayout> layout,
                        bool showProgress) {
    AudioFileReader file(path);
    checkRate(file);
    Measurement measurement;
    measurement.file = path;
    measurement.format = formatName(file.info().format);
    measurement.sampleRate = file.info().samplerate;
    measurement.layout = file.mapTo(layout, measurement.warnings).layout;

    ProgrammeMeter meter(measurement.layout, static_cast<double>(measurement.sampleRate));
    ProgressBar progress(path.filename().string(), file.info().frames, measurement.sampleRate, showProgress);
    run(file, meter, progress);
    measurement.programme = meter.programme();
    measurement.figures = measurement.programme.figures();
    measurement.timeline.assign(meter.timeline().begin(), meter.timeline().end());
    if (measurement.programme.notFinite > 0) {
        measurement.warnings.push_back(
            fmt::format("{}: {} samples are not finite numbers and count as silence", path.string(),
                        measurement.programme.notFinite));
    }
    return measurement;
}

bool Requirements::missesTarget(const ProgrammeFigures& figures) const {
    if (!targetLufs) return false;
    return !figures.integrated || std::abs(*figures.integrated - *targetLufs) > toleranceLu + kHalfDigit;
}

bool Requirements::missesTruePeak(const ProgrammeFigures& figures) const {
    if (!maxTruePeakDb || !figures.total.truePeak) return false;
    return figures.total.truePeak->level > *maxTruePeakDb + kHalfDigit;
}

}  // namespace vanta
