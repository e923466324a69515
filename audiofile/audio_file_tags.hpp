#pragma once

#include <sndfile.h>

namespace vanta {

/// Carries over what a file says of itself besides the audio, as far as the new file's type can hold it:
/// title, artist and the like, broadcast extension with its time reference, cue points. Before the first
/// sample is written. Loudness figures of the old file are dropped, as they are not true of the new one.
void copyTags(SNDFILE* from, SNDFILE* to);

}  // namespace vanta
