#include "bench/compare/music.hpp"

#include <algorithm>
#include <stdexcept>

#include "tests/support/signals.hpp"
#include "tools/song/song.hpp"

namespace vanta::bench {

namespace {

constexpr double kSongBegin = 7.0;  // seconds
/// From one pair of loudspeakers to the next, so that no two channels are the same.
constexpr std::size_t kPairDelay = 997;

std::size_t framesOf(double seconds) {
    return static_cast<std::size_t>(seconds * Music::kRate);
}

/// Rendered once, for as long as any caller needs so far.
const song::Song& renderedSong(double seconds) {
    static song::Song rendered;
    if (static_cast<double>(rendered.left.size()) < seconds * Music::kRate) {
        rendered = song::renderSong(song::loadDemoScore(), Music::kRate, seconds);
    }
    return rendered;
}

}  // namespace

Music Music::cut(int roundFrames) const {
    const int whole = frames() / roundFrames * roundFrames;
    if (whole == 0) throw std::invalid_argument("the music is shorter than a round");
    Music shorter = *this;
    for (auto& channel : shorter.channels) channel.resize(static_cast<std::size_t>(whole));
    return shorter;
}

Music Music::scaled(float gain) const {
    Music result = *this;
    for (auto& channel : result.channels) {
        for (float& sample : channel) sample *= gain;
    }
    return result;
}

Music song(double seconds, ChannelLayout layout) {
    constexpr double kWholeSong = 22.0;
    if (seconds > kWholeSong - kSongBegin - 1.0) throw std::invalid_argument("the song is not that long");
    const song::Song& rendered = renderedSong(kWholeSong);
    Music music{"song", {}};
    for (int c = 0; c < channelCount(layout); ++c) {
        const auto& side = c % 2 == 0 ? rendered.left : rendered.right;
        const auto begin =
            side.begin() +
            static_cast<std::ptrdiff_t>(framesOf(kSongBegin) + static_cast<std::size_t>(c / 2) * kPairDelay);
        music.channels.emplace_back(begin, begin + static_cast<std::ptrdiff_t>(framesOf(seconds)));
    }
    return music;
}

Music bursts(double seconds, ChannelLayout layout) {
    constexpr std::size_t kPeriod = 11025;
    Music music{"bursts", {}};
    for (int c = 0; c < channelCount(layout); ++c) {
        music.channels.push_back(test::pinkNoise(1000u + static_cast<unsigned>(c), framesOf(seconds), 0.25));
        for (std::size_t i = 0; i < music.channels.back().size(); ++i) {
            const float left = 1.0f - static_cast<float>(i % kPeriod) / static_cast<float>(kPeriod);
            music.channels.back()[i] *= 0.2f + 0.8f * left * left;
        }
    }
    return music;
}

}  // namespace vanta::bench
