#pragma once

#include <sndfile.h>

#include <optional>

namespace vanta {

/// How well or how small a codec is to work, in its own terms; its default where nothing is said.
struct Encoding {
    /// FLAC: compression level, 0 to 8, 5 by default. Vorbis: 0 to 10, the best, 4 by default. MP3: variable
    /// bit rate from 0, the best and the default, to 9.
    std::optional<double> quality;
    /// In kbit/s. MP3: constant, one of those that its standard has for the rate. Opus: on average, 6 to 256
    /// a channel.
    std::optional<double> bitrateKbps;
};

/// Failure, without a name in front, if the format has no such choice or the value is out of range.
void checkEncoding(const SF_INFO& info, const Encoding& encoding);
/// Sets an encoder up, before the first sample.
void applyEncoding(SNDFILE* file, const SF_INFO& info, const Encoding& encoding);

}  // namespace vanta
