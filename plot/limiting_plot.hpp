#pragma once

#include <cstdint>
#include <filesystem>
#include <limits>

#include "foundation/audio_stream.hpp"
#include "foundation/channel_layout.hpp"
#include "foundation/progress.hpp"
#include "host/offline/limiter_settings.hpp"

namespace vanta {

/// A stream to be limited, and how that is to look. Display Mode and the scales are among the settings.
struct LimitingPlot {
    const LimiterSettings& settings;
    AudioReader& input;
    AudioReader* sideChain = nullptr;  ///< at the input's rate; silence follows where it ends early
    ChannelLayout layout = kStereoLayout;
    double sampleRate = 44100.0;  ///< Hz, kLowestSampleRate to kHighestSampleRate
    /// Of the input: there the display is seen.
    std::int64_t endSamples = std::numeric_limits<std::int64_t>::max();
    float width = 1330.0f;  ///< logical units
    float height = 798.0f;
    float scale = 1.0f;  ///< pixels of a logical unit: 1, 1.5 or 2
    Progress progress;   ///< told the frames read so far; may be empty
};

/// Writes the display as it looks at the end of the stream, as a PNG of 8 bits. Stopped, and nothing is
/// written, if the progress says so. std::runtime_error if the file cannot be written, std::invalid_argument
/// for a size or scale out of range.
void writeLimitingPlot(const std::filesystem::path& file, const LimitingPlot& plot);

}  // namespace vanta
