#include "bench/compare/null.hpp"

#include <fmt/format.h>
#include <sndfile.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

#include "bench/compare/music.hpp"

namespace vanta::bench {

namespace {

namespace fs = std::filesystem;

struct CloseFile {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using File = std::unique_ptr<SNDFILE, CloseFile>;

struct Sound {
    int channels = 0;
    std::vector<float> samples;  ///< interleaved
};

Sound read(const fs::path& path) {
    SF_INFO info{};
    const File file(sf_open(path.c_str(), SFM_READ, &info));
    if (!file) throw std::runtime_error(fmt::format("{}: {}", path.string(), sf_strerror(nullptr)));
    Sound sound{info.channels, std::vector<float>(static_cast<std::size_t>(info.frames * info.channels))};
    if (sf_readf_float(file.get(), sound.samples.data(), info.frames) != info.frames) {
        throw std::runtime_error(fmt::format("{}: is cut short", path.string()));
    }
    return sound;
}

struct Difference {
    double peakDb;
    double rmsDb;
};

double decibels(double amplitude) {
    return 20.0 * std::log10(amplitude);
}

Difference difference(const fs::path& a, const fs::path& b) {
    const Sound first = read(a), second = read(b);
    if (first.channels != second.channels || first.samples.size() != second.samples.size()) {
        throw std::runtime_error(fmt::format("{} and {} are not of one length", a.string(), b.string()));
    }
    double peak = 0.0, power = 0.0;
    for (std::size_t i = 0; i < first.samples.size(); ++i) {
        const double each = double{first.samples[i]} - double{second.samples[i]};
        // A sample that is no number is as far off as can be.
        peak = std::isnan(each) ? INFINITY : std::max(peak, std::abs(each));
        power += each * each;
    }
    return {decibels(peak), decibels(std::sqrt(power / static_cast<double>(first.samples.size())))};
}

std::string shown(double db) {
    return std::isinf(db) && db < 0.0 ? "equal" : fmt::format("{:.1f}", db);
}

void write(const fs::path& path, const Music& music) {
    SF_INFO info{};
    info.samplerate = static_cast<int>(Music::kRate);
    info.channels = static_cast<int>(music.channels.size());
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    const File file(sf_open(path.c_str(), SFM_WRITE, &info));
    if (!file) throw std::runtime_error(fmt::format("{}: {}", path.string(), sf_strerror(nullptr)));
    std::vector<float> interleaved;
    for (int i = 0; i < music.frames(); ++i) {
        for (const auto& channel : music.channels)
            interleaved.push_back(channel[static_cast<std::size_t>(i)]);
    }
    if (sf_writef_float(file.get(), interleaved.data(), music.frames()) != music.frames()) {
        throw std::runtime_error(fmt::format("{}: cannot be written", path.string()));
    }
}

/// Every sample moved by one unit in its last place.
Music turned(Music music) {
    for (auto& channel : music.channels) {
        for (float& sample : channel)
            sample = std::bit_cast<float>(std::bit_cast<std::uint32_t>(sample) ^ 1u);
    }
    return music;
}

}  // namespace

bool printDifferences(const fs::path& before, const fs::path& after, const fs::path& rounded) {
    std::vector<fs::path> names;
    for (const auto& entry : fs::directory_iterator(before)) {
        if (entry.path().extension() == ".wav") names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    if (names.empty()) throw std::runtime_error(fmt::format("{}: holds no WAV files", before.string()));
    fmt::print("Old against new, bounds {:.0f} dBFS peak and {:.0f} dB RMS.\n\n", kPeakBoundDb, kRmsBoundDb);
    fmt::print("| render | peak, dBFS | RMS, dB | within |{}\n| --- | --: | --: | --- |{}\n",
               rounded.empty() ? "" : " peak and RMS of the last bit of the input |",
               rounded.empty() ? "" : " --: |");
    bool all = true;
    for (const fs::path& name : names) {
        const Difference found = difference(before / name, after / name);
        const bool within = found.peakDb <= kPeakBoundDb && found.rmsDb <= kRmsBoundDb;
        all &= within;
        fmt::print("| {} | {} | {} | {} |", name.stem().string(), shown(found.peakDb), shown(found.rmsDb),
                   within ? "yes" : "**no**");
        if (!rounded.empty()) {
            const Difference grown = difference(before / name, rounded / name);
            fmt::print(" {}, {} |", shown(grown.peakDb), shown(grown.rmsDb));
        }
        fmt::print("\n");
    }
    return all;
}

void writeMusic(const fs::path& folder, double seconds) {
    fs::create_directories(folder / "plain");
    fs::create_directories(folder / "rounded");
    for (const Music& music : {song(seconds), bursts(seconds)}) {
        write(folder / "plain" / (music.name + ".wav"), music);
        write(folder / "rounded" / (music.name + ".wav"), turned(music));
    }
}

}  // namespace vanta::bench
