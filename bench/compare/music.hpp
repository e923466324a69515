#pragma once

#include <string>
#include <vector>

#include "foundation/channel_layout.hpp"

namespace vanta::bench {

/// What the limiters play, round and round, at 44.1 kHz.
struct Music {
    static constexpr double kRate = 44100.0;

    std::string name;
    std::vector<std::vector<float>> channels;

    int frames() const { return static_cast<int>(channels.front().size()); }
    /// Without what goes beyond whole rounds of so many frames, so that each pass plays the same passages.
    Music cut(int roundFrames) const;
    Music scaled(float gain) const;
};

/// The demonstration song from its rise into its chorus, which a limiter at work has something to do with.
Music song(double seconds, ChannelLayout layout = kStereoLayout);
/// Bursts of pink noise four times a second, which keep every part of a limiter busy.
Music bursts(double seconds, ChannelLayout layout = kStereoLayout);

}  // namespace vanta::bench
