#include "measure/measurement.hpp"

#include <fmt/format.h>

#include <array>

#include "audiofile/audio_file_reader.hpp"

namespace vanta {

namespace {

constexpr std::size_t kBlock = 4096;

void run(AudioFileReader& file, ProgrammeMeter& meter, const Progress& progress) {
    const auto width = static_cast<std::size_t>(file.channelCount());
    std::vector<float> samples(width * kBlock);
    std::array<float*, kMaxChannels> channels{};
    for (std::size_t c = 0; c < width; ++c) channels[c] = samples.data() + c * kBlock;
    std::int64_t done = 0;
    for (std::size_t frames = kBlock; frames == kBlock;) {
        frames = file.read(std::span(channels.data(), width), kBlock);
        meter.process(std::span<const float* const>(channels.data(), width), frames);
        done += static_cast<std::int64_t>(frames);
        if (!progress(done)) throw Stopped();
    }
    meter.finish();
}

}  // namespace

Measurement measureFile(const std::filesystem::path& path, std::optional<ChannelLayout> layout,
                        const WorkWatcher& watcher) {
    AudioFileReader file(path);
    Measurement measurement;
    measurement.file = path;
    measurement.format = formatName(file.info().format);
    measurement.sampleRate = file.info().samplerate;
    measurement.layout = file.mapTo(layout, measurement.warnings).layout;

    const auto rate = static_cast<double>(measurement.sampleRate);
    ProgrammeMeter meter(measurement.layout, rate);
    run(file, meter,
        watch(watcher, {fmt::format("measuring {}", path.filename().string()), file.info().frames, rate}));
    measurement.programme = meter.programme();
    measurement.figures = measurement.programme.figures();
    measurement.timeline.assign(meter.timeline().begin(), meter.timeline().end());
    if (measurement.programme.notFinite > 0) {
        measurement.warnings.push_back(
            fmt::format("{}: {} samples are not finite numbers; they count as silence", path.string(),
                        measurement.programme.notFinite));
    }
    return measurement;
}

}  // namespace vanta
