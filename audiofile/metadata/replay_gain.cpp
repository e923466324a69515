#include "audiofile/metadata/replay_gain.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace vanta {

namespace {

constexpr double kReplayGainLufs = -18.0;
constexpr double kOpusLufs = -23.0;

template <typename Add>
TagLib::PropertyMap fieldsOf(const ReplayGain& gain, const Add& add) {
    TagLib::PropertyMap fields;
    add(fields, "TRACK", gain.track);
    if (gain.album) add(fields, "ALBUM", *gain.album);
    return fields;
}

}  // namespace

TagLib::PropertyMap replayGainFields(const ReplayGain& gain) {
    return fieldsOf(gain, [](TagLib::PropertyMap& fields, const char* of, const PlaybackLevel& level) {
        fields.insert(fmt::format("REPLAYGAIN_{}_GAIN", of),
                      TagLib::String(fmt::format("{:.2f} dB", kReplayGainLufs - level.lufs)));
        fields.insert(fmt::format("REPLAYGAIN_{}_PEAK", of),
                      TagLib::String(fmt::format("{:.6f}", level.truePeak)));
    });
}

TagLib::PropertyMap opusGainFields(const ReplayGain& gain) {
    return fieldsOf(gain, [](TagLib::PropertyMap& fields, const char* of, const PlaybackLevel& level) {
        const double steps = std::clamp(256.0 * (kOpusLufs - level.lufs), -32768.0, 32767.0);
        fields.insert(fmt::format("R128_{}_GAIN", of), TagLib::String(fmt::format("{}", std::lround(steps))));
    });
}

}  // namespace vanta
