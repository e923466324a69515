#pragma once

namespace vanta::bench {

/// What a run plays and how often.
struct Options {
    double seconds = 4.0;       ///< of music in a pass
    int passes = 5;             ///< over the same music
    int blockFrames = 256;      ///< what the host asks for at a time
    int roundFrames = 4096;     ///< of a contender before the next has its turn
    double gainDb = 6.0;        ///< into every limiter
    double shareSeconds = 2.0;  ///< of processor time for the shares of one style

    int blocksInRound() const { return roundFrames / blockFrames; }
    /// With the block that is not timed.
    int framesOfRound() const { return (blocksInRound() + 1) * blockFrames; }
};

}  // namespace vanta::bench
