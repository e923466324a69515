#pragma once

#include <taglib/tpropertymap.h>

#include <optional>

namespace vanta {

/// Loudness and true peak of a file, or of an album.
struct PlaybackLevel {
    double lufs;
    double truePeak = 0.0;  ///< as a factor of full scale
};

/// Which gains a file is to tell to players.
struct ReplayGain {
    PlaybackLevel track;
    std::optional<PlaybackLevel> album;
};

/// As ReplayGain 2.0 has it: to -18 LUFS, with peaks.
TagLib::PropertyMap replayGainFields(const ReplayGain& gain);
/// As Opus has it (RFC 7845, section 5.2.1): to -23 LUFS, in steps of 1/256 dB, without peaks.
TagLib::PropertyMap opusGainFields(const ReplayGain& gain);

}  // namespace vanta
