#include "tools/song/song.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "foundation/numbers.hpp"
#include "tools/song/instrument.hpp"
#include "tools/song/rate_converter.hpp"
#include "tools/song/sound.hpp"
#include "tools/song/space.hpp"

namespace vanta::song {
namespace {

constexpr double kRoomSeconds = 2.1;
constexpr double kNoSendDb = -60;
constexpr double kEndFadeSeconds = 0.4;
constexpr double kLowCutHz = 18;

/// The mixing desk: strips add to the main bus and to the room's send.
struct Desk {
    explicit Desk(std::size_t frames) : main(frames), send(frames) {}

    void add(const InstrumentSpec& spec, const Stereo& track);

    Stereo main, send;
};

void Desk::add(const InstrumentSpec& spec, const Stereo& track) {
    const double level = gainFromDb(spec.levelDb);
    const double space = spec.spaceDb > kNoSendDb ? gainFromDb(spec.spaceDb) : 0;
    // Equal power, 0 dB in the middle.
    const double leftGain = level * std::sqrt(1 - spec.pan);
    const double rightGain = level * std::sqrt(1 + spec.pan);
    Filter leftCut(spec.lowCutHz, 0.7), rightCut(spec.lowCutHz, 0.7);
    for (std::size_t i = 0; i < track.frames(); ++i) {
        const double mid = 0.5 * (track.left[i] + track.right[i]);
        const double side = 0.5 * spec.width * (track.left[i] - track.right[i]);
        const double left = leftGain * leftCut.next(mid + side).high;
        const double right = rightGain * rightCut.next(mid - side).high;
        main.left[i] += left;
        main.right[i] += right;
        send.left[i] += space * left;
        send.right[i] += space * right;
    }
}

Stereo perform(const Score& score, std::size_t frames) {
    Desk desk(frames);
    for (std::size_t i = 0; i < score.instruments.size(); ++i) {
        // Each instrument has random numbers of its own, so that a new one changes no other.
        const auto instrument = makeInstrument(score.instruments[i], Random(score.seed + i).bits());
        Stereo track(frames);
        for (const Line& line : score.lines)
            if (line.instrument == i) instrument->play(line, track);
        desk.add(score.instruments[i], track);
    }
    const Stereo room = reverberate(desk.send, kRoomSeconds);
    for (std::size_t i = 0; i < frames; ++i) {
        desk.main.left[i] += room.left[i];
        desk.main.right[i] += room.right[i];
    }
    return std::move(desk.main);
}

/// Low cut, level, and an end that reaches silence.
void finish(std::vector<double>& channel, double gain) {
    Filter lowCut(kLowCutHz, 0.7);
    for (std::size_t i = 0; i < channel.size(); ++i) {
        const double left = static_cast<double>(channel.size() - i) / kStudioRate;
        channel[i] = gain * lowCut.next(channel[i]).high * fadeIn(left, kEndFadeSeconds);
    }
}

}  // namespace

Song renderSong(const Score& score, double sampleRate, double seconds) {
    if (!(sampleRate >= 8000 && sampleRate <= 384000))
        throw std::invalid_argument(
            fmt::format("the sample rate cannot be {} Hz: use 8000 to 384000", sampleRate));
    if (!(seconds > 0)) throw std::invalid_argument("the length cannot be 0 seconds or less");

    const double length = std::min(seconds, score.lengthSeconds());
    Stereo mix = perform(score, frameAt(length));
    Song song;
    song.sampleRate = sampleRate;
    const int frames = samplesInSeconds(length, sampleRate);
    const RateConverter converter(kStudioRate, sampleRate);
    for (auto [from, to] : {std::pair(&mix.left, &song.left), std::pair(&mix.right, &song.right)}) {
        finish(*from, gainFromDb(score.masterDb));
        *to = converter.convert(*from, static_cast<std::size_t>(frames));
    }
    const auto frame = [&](double at) {
        return static_cast<std::size_t>(std::min(samplesInSeconds(at, sampleRate), frames));
    };
    for (const Section& section : score.sections)
        if (section.startSeconds < length)
            song.sections.push_back({section.name, frame(section.startSeconds), frame(section.endSeconds)});
    return song;
}

Score loadDemoScore() {
    return loadScore(VANTA_DEMO_SCORE);
}

}  // namespace vanta::song
