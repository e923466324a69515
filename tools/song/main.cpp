#include <fmt/format.h>
#include <sndfile.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <span>

#include "tools/song/song.hpp"
#include "tools/song/upmix.hpp"

namespace {

using namespace vanta::song;

struct Request {
    std::string score, out;
    int rate = 48000;
    double seconds = 1e9;
    std::string layout = "stereo";
};

/// A 24-bit WAV that appears under its name only when it is whole, so that an interrupted run leaves
/// nothing that a later one would take for the song.
class WavFile {
public:
    WavFile(const std::filesystem::path& target, int rate, int channels)
        : path_(target), partial_(fmt::format("{}.{}.part", target.string(), getpid())) {
        // The renaming would put a file in the place of a device or a folder.
        if (std::filesystem::exists(path_) && !std::filesystem::is_regular_file(path_))
            throw std::runtime_error(fmt::format("{}: is not a regular file", path_.string()));
        SF_INFO info{};
        info.samplerate = rate;
        info.channels = channels;
        info.format = SF_FORMAT_PCM_24 | (channels > 2 ? SF_FORMAT_WAVEX : SF_FORMAT_WAV);
        file_.reset(sf_open(partial_.c_str(), SFM_WRITE, &info));
        if (!file_) throw std::runtime_error(fmt::format("{}: {}", path_.string(), sf_strerror(nullptr)));
        sf_command(file_.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
        if (channels == 6) {
            std::array<int, 6> map{SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT,     SF_CHANNEL_MAP_CENTER,
                                   SF_CHANNEL_MAP_LFE,  SF_CHANNEL_MAP_REAR_LEFT, SF_CHANNEL_MAP_REAR_RIGHT};
            sf_command(file_.get(), SFC_SET_CHANNEL_MAP_INFO, map.data(), sizeof map);
        }
    }
    ~WavFile() {
        file_.reset();
        std::error_code ignored;
        std::filesystem::remove(partial_, ignored);
    }

    void write(std::span<const std::vector<float>* const> channels) {
        const std::size_t frames = channels[0]->size();
        std::vector<float> interleaved;
        interleaved.reserve(frames * channels.size());
        for (std::size_t i = 0; i < frames; ++i)
            for (const auto* channel : channels) interleaved.push_back((*channel)[i]);
        const auto count = static_cast<sf_count_t>(frames);
        if (sf_writef_float(file_.get(), interleaved.data(), count) != count ||
            sf_close(file_.release()) != 0)
            throw std::runtime_error(fmt::format("{}: cannot be written", path_.string()));
        std::filesystem::rename(partial_, path_);
    }

private:
    struct Close {
        void operator()(SNDFILE* handle) const { sf_close(handle); }
    };

    std::filesystem::path path_, partial_;
    std::unique_ptr<SNDFILE, Close> file_;
};

void render(const Request& request) {
    const Score score = loadScore(request.score);
    const Song song = renderSong(score, request.rate, request.seconds);
    const bool surround = request.layout == "5.1";
    Surround upmix;
    std::vector<const std::vector<float>*> channels{&song.left, &song.right};
    if (surround) {
        upmix = upmixTo51(song);
        channels.clear();
        for (const auto& channel : upmix) channels.push_back(&channel);
    }
    WavFile file(request.out, request.rate, static_cast<int>(channels.size()));
    file.write(channels);
    fmt::print("{}: \"{}\", {:.1f} s, {} at {:.0f} Hz\n", request.out, score.title,
               static_cast<double>(song.left.size()) / song.sampleRate, request.layout, song.sampleRate);
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Plays a score into a 24-bit WAV file."};
    Request request;
    app.add_option("score", request.score, "the score to play")->required()->check(CLI::ExistingFile);
    app.add_option("out", request.out, "the WAV file to write")->required();
    app.add_option("--rate", request.rate, "sample rate, Hz (default 48000)")
        ->check(CLI::Range(8000, 384000));
    app.add_option("--seconds", request.seconds, "render at most this much");
    app.add_option("--layout", request.layout, "channels (default stereo)")
        ->check(CLI::IsMember({"stereo", "5.1"}));
    CLI11_PARSE(app, argc, argv);
    try {
        render(request);
    } catch (const std::exception& error) {
        fmt::print(stderr, "render_song: {}\n", error.what());
        return 1;
    }
    return 0;
}
