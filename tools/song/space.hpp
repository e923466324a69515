#pragma once

#include "tools/song/sound.hpp"

namespace vanta::song {

/// The room around the instruments: the reverberation of `send`, wet only, at kStudioRate. Eight delay
/// lines feed each other through a lossless matrix (Jot and Chaigne 1991) behind short diffusers; highs
/// die first. Falls by 60 dB in `decaySeconds`.
Stereo reverberate(const Stereo& send, double decaySeconds);

}  // namespace vanta::song
