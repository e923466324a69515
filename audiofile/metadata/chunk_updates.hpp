#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "audiofile/chunks/packed_number.hpp"

namespace vanta {

/// Loudness of audio that was written. Nothing where there is no reading.
struct WrittenLoudness {
    std::optional<double> integratedLufs;
    std::optional<double> rangeLu;
    std::optional<double> truePeakDb;  ///< dBTP
    std::optional<double> highestMomentaryLufs;
    std::optional<double> highestShortTermLufs;
};

/// How the audio beside a chunk differs from the one that it stood beside before.
struct AudioChange {
    int fromRate;  ///< Hz
    int toRate;
    WrittenLoudness loudness;
    std::string codingHistory;  ///< what was done, as a line of EBU R98 without its end
    int bits = 0;               ///< word length; 0: none
};

/// A chunk of a WAV, RF64, Wave64 or AIFF, by the four characters of its name, as it is right beside the new
/// audio: loudness and coding history of "bext" (EBU Tech 3285), what "iXML" says of rate and word length,
/// positions in samples of "bext", "cue ", "smpl", "plst", "cart", LIST "adtl" and "MARK" at another rate.
/// All other chunks, and damaged ones, are returned as they are.
std::string updatedChunk(std::string_view name, std::string content, Endian endian,
                         const AudioChange& change);

}  // namespace vanta
