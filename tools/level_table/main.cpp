#include <ebur128.h>
#include <fmt/format.h>
#include <sndfile.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/level_table/levels.hpp"

namespace {

struct Audio {
    int sampleRate = 0;
    std::size_t channels = 0;
    std::vector<float> interleaved;
};

struct Row {
    std::string name;
    vanta::Levels levels;
    std::optional<double> loudness;  ///< LUFS
};

Audio readAudio(const std::string& path) {
    SF_INFO info{};
    const std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file(sf_open(path.c_str(), SFM_READ, &info), sf_close);
    if (!file) throw std::runtime_error(fmt::format("{}: {}", path, sf_strerror(nullptr)));
    Audio audio{info.samplerate, static_cast<std::size_t>(info.channels), {}};
    audio.interleaved.resize(static_cast<std::size_t>(info.frames) * audio.channels);
    if (sf_readf_float(file.get(), audio.interleaved.data(), info.frames) != info.frames)
        throw std::runtime_error(fmt::format("{}: ends before its {} frames", path, info.frames));
    return audio;
}

/// Integrated loudness (EBU R 128); nothing if all of it lies below the gate.
std::optional<double> loudness(const Audio& audio) {
    const auto close = [](ebur128_state* state) { ebur128_destroy(&state); };
    const std::unique_ptr<ebur128_state, decltype(close)> meter(
        ebur128_init(static_cast<unsigned>(audio.channels), static_cast<unsigned long>(audio.sampleRate),
                     EBUR128_MODE_I),
        close);
    double result = 0;
    if (!meter ||
        ebur128_add_frames_float(meter.get(), audio.interleaved.data(),
                                 audio.interleaved.size() / audio.channels) != EBUR128_SUCCESS ||
        ebur128_loudness_global(meter.get(), &result) != EBUR128_SUCCESS || !std::isfinite(result))
        return std::nullopt;
    return result;
}

Row measure(const std::string& path) {
    const Audio audio = readAudio(path);
    const std::size_t frames = audio.interleaved.size() / audio.channels;
    std::vector<std::vector<float>> channels(audio.channels, std::vector<float>(frames));
    for (std::size_t i = 0; i < audio.interleaved.size(); ++i)
        channels[i % audio.channels][i / audio.channels] = audio.interleaved[i];
    const std::vector<std::span<const float>> views(channels.begin(), channels.end());
    return {std::filesystem::path(path).filename().string(), vanta::measureLevels(views), loudness(audio)};
}

void print(const std::vector<Row>& rows) {
    std::size_t width = 4;
    for (const auto& row : rows) width = std::max(width, row.name.size());
    fmt::print("{:<{}}  {:>11}  {:>11}  {:>9}  {:>8}  {:>10}\n", "file", width, "sample peak", "true peak",
               "RMS", "crest", "loudness");
    for (const auto& [name, levels, lufs] : rows)
        fmt::print("{:<{}}  {:>6.2f} dBFS  {:>6.2f} dBTP  {:>6.1f} dB  {:>5.1f} dB  {:>10}\n", name, width,
                   levels.samplePeakDb, levels.truePeakDb, levels.rmsDb, levels.crestDb(),
                   lufs ? fmt::format("{:.1f} LUFS", *lufs) : "-");
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Prints the levels of audio files, one a row."};
    std::vector<std::string> files;
    app.add_option("files", files, "audio files to measure")->required()->check(CLI::ExistingFile);
    CLI11_PARSE(app, argc, argv);
    try {
        std::vector<Row> rows;
        for (const auto& file : files) rows.push_back(measure(file));
        print(rows);
    } catch (const std::exception& error) {
        fmt::print(stderr, "level_table: {}\n", error.what());
        return 1;
    }
    return 0;
}
