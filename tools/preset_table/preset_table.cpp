// Plays the demonstration song through every factory preset and prints the docs page that tells what came
// out.

#include <ebur128.h>
#include <fmt/format.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

#include "host/offline/render.hpp"
#include "limiter/factory/factory_archive.hpp"
#include "limiter/vanta_preset.hpp"
#include "plugin/presets/setup_archive.hpp"
#include "tools/level_table/levels.hpp"
#include "tools/song/song.hpp"

namespace {

using namespace vanta;

constexpr int kSampleRate = 48000;

class SongReader final : public AudioReader {
public:
    explicit SongReader(const song::Song& played) : song(played) {}
    int channelCount() const override { return 2; }
    std::size_t read(std::span<float* const> channels, std::size_t frames) override {
        const std::size_t count = std::min(frames, song.left.size() - position);
        std::copy_n(song.left.begin() + static_cast<std::ptrdiff_t>(position), count, channels[0]);
        std::copy_n(song.right.begin() + static_cast<std::ptrdiff_t>(position), count, channels[1]);
        position += count;
        return count;
    }

private:
    const song::Song& song;
    std::size_t position = 0;
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

/// Integrated loudness of a stereo signal in LUFS.
double loudness(const std::vector<float>& left, const std::vector<float>& right) {
    struct Release {
        void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
    };
    const std::unique_ptr<ebur128_state, Release> state(ebur128_init(2, kSampleRate, EBUR128_MODE_I));
    std::vector<float> frames;
    for (std::size_t i = 0; i < left.size(); ++i) frames.insert(frames.end(), {left[i], right[i]});
    ebur128_add_frames_float(state.get(), frames.data(), left.size());
    double result = 0.0;
    ebur128_loudness_global(state.get(), &result);
    return result;
}

double truePeakDb(const std::vector<float>& left, const std::vector<float>& right) {
    const std::array<std::span<const float>, 2> channels{left, right};
    return measureLevels(channels).truePeakDb;
}

void printRow(const song::Song& song, const ArchivedFile& file) {
    LimiterSettings settings;
    if (!loadPreset(settings, file.bytes, LockOutputRule::Ignore)) {
        throw std::runtime_error(fmt::format("{} can't be loaded", file.path));
    }
    SongReader reader(song);
    MemoryWriter writer;
    RenderJob job{.settings = settings, .input = reader, .output = writer, .proceed = {}};
    job.sampleRate = kSampleRate;
    const RenderResult result = render(job);
    const auto& [left, right] = writer.samples;
    fmt::print("| {} | {} | {:.0f} | {:.1f} | {:.1f} | {:.2f} | {:.1f} | {:.1f} |\n",
               std::filesystem::path(file.path).stem().string(), settings.style.text(settings.style.value()),
               settings.gain.value(), settings.outputLevel.value(), loudness(left, right),
               truePeakDb(left, right), result.largestReductionDb, 1e3 * result.latencySamples / kSampleRate);
}

void printTables() {
    const song::Song song = song::renderSong(song::loadDemoScore(), kSampleRate);
    fmt::print(
        "# Factory presets\n\n"
        "What the demonstration song of `make demo` becomes in each: it has {:.1f} LUFS and {:.2f} dBTP "
        "before, at {} Hz.\nGain and Output Level are the preset's; gain reduction is the largest of any "
        "moment. Made by `preset_table`; edit\n`resources/presets/` and run it again.\n",
        loudness(song.left, song.right), truePeakDb(song.left, song.right), kSampleRate);
    std::string folder = "-";
    for (const ArchivedFile& file : readFolder(factoryArchive(), "FactoryPresets")) {
        const std::string parent = std::filesystem::path(file.path).parent_path().string();
        if (parent != folder) {
            folder = parent;
            fmt::print("\n## {}\n\n",
                       folder.empty() ? "On top" : folder.substr(folder.starts_with('_') ? 1 : 0));
            fmt::print(
                "| Preset | Style | Gain dB | Output dB | Loudness LUFS | True peak dBTP | Reduction dB | "
                "Latency ms |\n| --- | --- | --: | --: | --: | --: | --: | --: |\n");
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
