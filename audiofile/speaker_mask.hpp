#pragma once

#include <sndfile.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace vanta {

/// Speakers as the bits of a WAV's channel mask (Microsoft, WAVEFORMATEXTENSIBLE). Files name them in the
/// order of the bits.

/// In libsndfile's numbers.
inline constexpr std::array<int, 18> kSpeakerOfMaskBit{
    SF_CHANNEL_MAP_LEFT,
    SF_CHANNEL_MAP_RIGHT,
    SF_CHANNEL_MAP_CENTER,
    SF_CHANNEL_MAP_LFE,
    SF_CHANNEL_MAP_REAR_LEFT,
    SF_CHANNEL_MAP_REAR_RIGHT,
    SF_CHANNEL_MAP_FRONT_LEFT_OF_CENTER,
    SF_CHANNEL_MAP_FRONT_RIGHT_OF_CENTER,
    SF_CHANNEL_MAP_REAR_CENTER,
    SF_CHANNEL_MAP_SIDE_LEFT,
    SF_CHANNEL_MAP_SIDE_RIGHT,
    SF_CHANNEL_MAP_TOP_CENTER,
    SF_CHANNEL_MAP_TOP_FRONT_LEFT,
    SF_CHANNEL_MAP_TOP_FRONT_CENTER,
    SF_CHANNEL_MAP_TOP_FRONT_RIGHT,
    SF_CHANNEL_MAP_TOP_REAR_LEFT,
    SF_CHANNEL_MAP_TOP_REAR_CENTER,
    SF_CHANNEL_MAP_TOP_REAR_RIGHT,
};

/// Nothing if a speaker, in libsndfile's numbers, has no bit, or they stand in another order.
std::optional<std::uint32_t> maskOf(std::span<const int> speakers);
/// In libsndfile's numbers.
std::vector<int> speakersOf(std::uint32_t mask);

/// The mask that a file states: an extensible WAV, RF64 or Wave64 in its format, AIFF and CAF as a channel
/// bitmap, FLAC in the tag that its own encoder writes for speakers other than the usual ones. Nothing if it
/// states none.
std::optional<std::uint32_t> statedMask(const std::filesystem::path& file);

/// Makes a finished file state a mask, in the same places. False if it has none. Failure, without a name in
/// front, if the disk refuses.
bool stateMask(const std::filesystem::path& file, std::uint32_t mask);

}  // namespace vanta
