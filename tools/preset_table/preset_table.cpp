// Plays the demonstration song through every factory preset and prints the page of docs that shows what came
// out.

#include <fmt/format.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "host/offline/render.hpp"
#include "limiter/factory/factory_archive.hpp"
#include "limiter/model/vanta_preset.hpp"
#include "measure/programme_meter.hpp"
#include "plugin/presets/setup_archive.hpp"
#include "tools/song/song.hpp"

namespace {

using namespace vanta;

constexpr int kSampleRate = 48000;

constexpr std::string_view kHeading = R"(# Factory presets

What each makes of the song of `make demo`, which has {:.1f} LUFS and {:.2f} dBTP before, at {} Hz. Gain and Output
Level are those of the preset; reduction is the largest gain reduction at any moment. `make preset-table` writes this
page: edit `resources/presets/` and run it again.
)";

constexpr std::string_view kTableHead =
    R"(| Preset | Style | Gain dB | Output dB | Loudness LUFS | True peak dBTP | Reduction dB | Latency ms |
| --- | --- | --: | --: | --: | --: | --: | --: |
)";

class SongReader final : public AudioReader {
public:
    explicit SongReader(const song::Song& played) : song_(played) {}
    int channelCount() const override { return 2; }
    std::size_t read(std::span<float* const> channels, std::size_t frames) override {
        const std::size_t count = std::min(frames, song_.left.size() - position_);
        std::copy_n(song_.left.begin() + static_cast<std::ptrdiff_t>(position_), count, channels[0]);
        std::copy_n(song_.right.begin() + static_cast<std::ptrdiff_t>(position_), count, channels[1]);
        position_ += count;
        return count;
    }

private:
    const song::Song& song_;
    std::size_t position_ = 0;
};

class MemoryWriter final : public AudioWriter {
public:
    void write(std::span<const float* const> channels, std::size_t frames) override {
        for (std::size_t c = 0; c < samples.size(); ++c) {
            samples[c].insert(samples[c].end(), channels[c], channels[c] + frames);
        }
    }
    std::array<std::vector<float>, 2> samples;
};

struct Measured {
    double loudness;    ///< LUFS
    double truePeakDb;  ///< dBTP
};

/// What `vanta measure` says of a stereo signal.
Measured measured(const std::vector<float>& left, const std::vector<float>& right) {
    ProgrammeMeter meter(kStereoLayout, kSampleRate);
    const std::array<const float*, 2> channels{left.data(), right.data()};
    meter.process(channels, left.size());
    meter.finish();
    const ProgrammeFigures figures = meter.programme().figures();
    return {figures.integrated.value(), figures.total.truePeak.value().level};
}

void printRow(const song::Song& song, const ArchivedFile& file) {
    LimiterSettings settings;
    if (!loadPreset(settings, file.bytes, LockOutputRule::Ignore)) {
        throw std::runtime_error(fmt::format("{}: cannot be loaded as a preset", file.path));
    }
    SongReader reader(song);
    MemoryWriter writer;
    RenderJob job{.settings = settings, .input = reader, .output = writer, .progress = {}};
    job.sampleRate = kSampleRate;
    const RenderResult result = render(job);
    const Measured levels = measured(writer.samples[0], writer.samples[1]);
    fmt::print("| {} | {} | {:.0f} | {:.1f} | {:.1f} | {:.2f} | {:.1f} | {:.1f} |\n",
               std::filesystem::path(file.path).stem().string(), settings.style.text(settings.style.value()),
               settings.gain.value(), settings.outputLevel.value(), levels.loudness, levels.truePeakDb,
               result.largestReductionDb, 1e3 * result.latencySamples / kSampleRate);
}

void printTables() {
    const song::Song song = song::renderSong(song::loadDemoScore(), kSampleRate);
    const Measured before = measured(song.left, song.right);
    fmt::print(kHeading, before.loudness, before.truePeakDb, kSampleRate);
    std::string folder = "-";
    for (const ArchivedFile& file : readFolder(factoryArchive(), "FactoryPresets")) {
        const std::string parent = std::filesystem::path(file.path).parent_path().string();
        if (parent != folder) {
            folder = parent;
            fmt::print("\n## {}\n\n",
                       folder.empty() ? "On top" : folder.substr(folder.starts_with('_') ? 1 : 0));
            fmt::print(kTableHead);
        }
        printRow(song, file);
    }
}

}  // namespace

int main() {
    try {
        printTables();
    } catch (const std::exception& error) {
        fmt::print(stderr, "{}\n", error.what());
        return 1;
    }
    return std::fflush(stdout) == 0 ? 0 : 1;
}
