#include "audiofile/audio_file_tags.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace vanta {

namespace {

void copyTexts(SNDFILE* from, SNDFILE* to) {
    for (int kind = SF_STR_FIRST; kind <= SF_STR_LAST; ++kind) {
        if (const char* text = sf_get_string(from, kind)) sf_set_string(to, kind, text);
    }
}

void copyBroadcastExtension(SNDFILE* from, SNDFILE* to) {
    // libsndfile refuses coding histories of 16 KiB and more.
    SF_BROADCAST_INFO_VAR(16000) info;
    std::memset(&info, 0, sizeof info);
    if (sf_command(from, SFC_GET_BROADCAST_INFO, &info, sizeof info) != SF_TRUE) return;
    // "Not measured" in EBU Tech 3285 version 2.
    constexpr std::int16_t kUnset = 0x7FFF;
    for (std::int16_t* figure : {&info.loudness_value, &info.loudness_range, &info.max_true_peak_level,
                                 &info.max_momentary_loudness, &info.max_shortterm_loudness}) {
        *figure = kUnset;
    }
    sf_command(to, SFC_SET_BROADCAST_INFO, &info, sizeof info);
}

void copyCues(SNDFILE* from, SNDFILE* to) {
    std::uint32_t count = 0;
    if (sf_command(from, SFC_GET_CUE_COUNT, &count, sizeof count) != SF_TRUE || count == 0) return;
    // The public structure is sized for 100 cues; a file may hold more.
    std::vector<SF_CUE_POINT> storage(count + 1);
    const std::size_t bytes = offsetof(SF_CUES, cue_points) + count * sizeof(SF_CUE_POINT);
    auto* const cues = reinterpret_cast<SF_CUES*>(storage.data());
    if (sf_command(from, SFC_GET_CUE, cues, static_cast<int>(bytes)) == SF_TRUE) {
        sf_command(to, SFC_SET_CUE, cues, static_cast<int>(bytes));
    }
}

}  // namespace

void copyTags(SNDFILE* from, SNDFILE* to) {
    copyTexts(from, to);
    copyBroadcastExtension(from, to);
    copyCues(from, to);
}

}  // namespace vanta
