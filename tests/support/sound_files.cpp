#include "tests/support/sound_files.hpp"

#include <sndfile.h>

#include <memory>
#include <stdexcept>

namespace vanta::test {

namespace fs = std::filesystem;

namespace {

using File = std::unique_ptr<SNDFILE, int (*)(SNDFILE*)>;

File openFile(const fs::path& path, int mode, SF_INFO& info) {
    File file(sf_open(path.c_str(), mode, &info), sf_close);
    if (!file) throw std::runtime_error(path.string() + ": " + sf_strerror(nullptr));
    return file;
}

}  // namespace

void writeSound(const fs::path& path, const Channels& channels, int format, int sampleRate,
                std::span<const int> speakers) {
    SF_INFO info{};
    info.format = format;
    info.samplerate = sampleRate;
    info.channels = static_cast<int>(channels.size());
    const File file = openFile(path, SFM_WRITE, info);
    if (!speakers.empty()) {
        std::vector<int> map(speakers.begin(), speakers.end());
        if (sf_command(file.get(), SFC_SET_CHANNEL_MAP_INFO, map.data(),
                       static_cast<int>(map.size() * sizeof(int))) != SF_TRUE) {
            throw std::runtime_error(path.string() + " takes no channel map");
        }
    }
    std::vector<float> interleaved;
    const std::size_t frames = channels.empty() ? 0 : channels[0].size();
    for (std::size_t i = 0; i < frames; ++i) {
        for (const Signal& channel : channels) interleaved.push_back(channel[i]);
    }
    const auto count = static_cast<sf_count_t>(frames);
    if (sf_writef_float(file.get(), interleaved.data(), count) != count) {
        throw std::runtime_error(path.string() + ": " + sf_strerror(file.get()));
    }
}

Sound readSound(const fs::path& path) {
    SF_INFO info{};
    const File file = openFile(path, SFM_READ, info);
    const auto width = static_cast<std::size_t>(info.channels);
    std::vector<float> interleaved(static_cast<std::size_t>(info.frames) * width);
    if (sf_readf_float(file.get(), interleaved.data(), info.frames) != info.frames) {
        throw std::runtime_error(path.string() + " ends early");
    }
    Sound sound{Channels(width), info.format, info.samplerate, std::vector<int>(width)};
    for (std::size_t i = 0; i < interleaved.size(); ++i) sound.channels[i % width].push_back(interleaved[i]);
    const auto bytes = static_cast<int>(width * sizeof(int));
    if (sf_command(file.get(), SFC_GET_CHANNEL_MAP_INFO, sound.speakers.data(), bytes) != SF_TRUE) {
        sound.speakers.clear();
    }
    return sound;
}

std::vector<int> readIntegers(const fs::path& path) {
    SF_INFO info{};
    const File file = openFile(path, SFM_READ, info);
    std::vector<int> samples(static_cast<std::size_t>(info.frames * info.channels));
    if (sf_readf_int(file.get(), samples.data(), info.frames) != info.frames) {
        throw std::runtime_error(path.string() + " ends early");
    }
    return samples;
}

}  // namespace vanta::test
