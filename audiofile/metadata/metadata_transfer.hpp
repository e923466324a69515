#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "audiofile/metadata/chunk_updates.hpp"
#include "audiofile/metadata/replay_gain.hpp"

namespace vanta {

/// A finished file, and the one whose audio it was made from.
struct MetadataTransfer {
    std::filesystem::path from;
    std::filesystem::path to;
    int fromFormat;  ///< libsndfile's
    int toFormat;
    AudioChange change;
    bool strip = false;                             ///< take nothing over
    std::optional<ReplayGain> gain = std::nullopt;  ///< to be written, also where nothing is taken over
};

/// Takes over what a file says of itself besides the audio: tags, pictures, chunks that are not audio. What
/// speaks of the old audio is brought up to date or left out. The result names what the new file has no place
/// for: "bext", "2 pictures". Failure, without a name in front, if the disk refuses; the new file is then
/// damaged.
std::vector<std::string> transferMetadata(const MetadataTransfer& transfer);

/// Whether a file has data that state its loudness, so that the new one's will be asked for.
bool statesLoudness(const std::filesystem::path& file);

}  // namespace vanta
