#pragma once

#include <cstdint>
#include <span>

#include "foundation/audio_stream.hpp"
#include "foundation/channel_layout.hpp"
#include "foundation/progress.hpp"
#include "host/offline/limiter_settings.hpp"
#include "limiter/styles/style_patch.hpp"

namespace vanta {

inline constexpr int kLargestBlock = 8192;
inline constexpr int kUsualBlock = 512;

/// One stream to be limited, and how.
struct RenderJob {
    const LimiterSettings& settings;
    AudioReader& input;
    AudioWriter& output;
    const StylePatch* patch = nullptr;  ///< in place of the style that is set
    AudioReader* sideChain = nullptr;   ///< at the input's rate; silence follows where it ends early
    ChannelLayout layout = kStereoLayout;
    double sampleRate = 44100.0;  ///< Hz, kLowestSampleRate to kHighestSampleRate
    int blockSamples = kUsualBlock;
    double inputTrimDb = 0.0;      ///< in front of the limiter; the side chain keeps its level
    std::int64_t tailSamples = 0;  ///< of output after the end of the input
    std::uint32_t ditherSeed = 1;  ///< equal seeds give equal files
    Progress progress;             ///< told the frames written so far, once a block; may be empty
};

/// What the samples of a stream were like.
struct StreamLevels {
    float peak = 0.0f;           ///< largest magnitude of a sample, as a factor of full scale
    std::int64_t notFinite = 0;  ///< samples that are not numbers; they count as 0
};

/// Adds samples to what is known of a stream.
void noteLevels(std::span<const float* const> channels, std::size_t frames, StreamLevels& levels);

struct RenderResult {
    std::int64_t inputFrames = 0;
    std::int64_t outputFrames = 0;
    int latencySamples = 0;  ///< of the limiter; the output is aligned with the input
    StreamLevels input;
    StreamLevels sideChain;
    StreamLevels output;
    double largestReductionDb = 0.0;  ///< 0 or more
    double meanReductionDb = 0.0;     ///< over the whole output and all channels
    double reducedShare = 0.0;        ///< of the time in which it is above 0.1 dB, 0 to 1
    double seconds = 0.0;             ///< that the render took, reading and writing included
    bool complete = false;            ///< not stopped
};

/// Limits `job.input` into `job.output`: the delay of the limiter is taken up in front and run out at the
/// end, so that the result is as long as the input plus the tail, and aligned with it to the sample. Settings
/// apply from the first sample on. std::invalid_argument for a rate, a block or a side chain out of range.
RenderResult render(const RenderJob& job);

}  // namespace vanta
