#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace vanta {

/// Speakers as the bits of a WAV's channel mask (Microsoft, WAVEFORMATEXTENSIBLE). Files name them in the
/// order of the bits.

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
