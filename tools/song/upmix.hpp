#pragma once

#include <array>
#include <vector>

#include "tools/song/song.hpp"

namespace vanta::song {

/// 5.1 in the order L R C LFE Ls Rs, each as long as the song.
using Surround = std::array<std::vector<float>, 6>;

/// Spreads a stereo song: the centre takes half of what both sides share, the LFE what lies below 120 Hz,
/// the surrounds what the sides do not share, 11 and 13 ms late.
Surround upmixTo51(const Song& song);

}  // namespace vanta::song
