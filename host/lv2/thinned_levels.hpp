#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace vanta {

// What a processor measures (GenericPluginProcessor::writeVisualData) on its way to an interface elsewhere.
// The recorded audio is far too much for the road, and all that a display makes of it are extremes over
// columns and all channels: the least and the greatest of kThinned samples stand for these. Readings travel
// as they are.
//
// A record begins, for each audio source, with its frames and their samples (4-byte integers), then the
// extremes: least and greatest in turns, of one frame after the other. Then what the processor has written.

inline constexpr int kThinned = 32;

/// Nothing if the record does not hold so many audio sources.
std::optional<std::vector<std::byte>> thinLevels(std::span<const std::byte> record, int audioSources);
/// A record as a processor writes it, with one channel of audio that has the same extremes. Nothing if it is
/// not a thinned record.
std::optional<std::vector<std::byte>> thickenLevels(std::span<const std::byte> thinned, int audioSources);

}  // namespace vanta
