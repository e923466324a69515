#include "host/offline/render.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <stdexcept>

#include "dsp/dither_seed.hpp"
#include "host/offline/offline_host.hpp"

namespace vanta {

namespace {

void check(const RenderJob& job) {
    if (!(job.sampleRate >= kLowestSampleRate && job.sampleRate <= kHighestSampleRate)) {
        throw std::invalid_argument("the sample rate is out of range");
    }
    if (job.blockSamples < 1 || job.blockSamples > kLargestBlock) {
        throw std::invalid_argument("the block size is out of range");
    }
    const int channels = channelCount(job.layout);
    if (job.input.channelCount() != channels)
        throw std::invalid_argument("the layout does not fit the input");
    if (job.sideChain && job.sideChain->channelCount() > channels) {
        throw std::invalid_argument("the side chain has more channels than the input");
    }
}

void note(std::span<const float* const> channels, std::size_t frames, StreamLevels& levels) {
    for (const float* channel : channels) {
        for (std::size_t i = 0; i < frames; ++i) {
            const float magnitude = std::abs(channel[i]);
            if (std::isfinite(magnitude)) {
                levels.peak = std::max(levels.peak, magnitude);
            } else {
                ++levels.notFinite;
            }
        }
    }
}

/// One run through a limiter, block by block.
class Render {
public:
    explicit Render(const RenderJob& renderJob)
        : job(renderJob),
          host(job.settings, job.layout, static_cast<float>(job.sampleRate), job.blockSamples,
               job.sideChain ? job.sideChain->channelCount() : 0),
          toDrop(host.latency()) {
        result.latencySamples = host.latency();
    }

    RenderResult run() {
        while (!finished()) {
            fill(job.input, host.input(), result.input, true);
            if (job.sideChain) fill(*job.sideChain, host.sideChain(), result.sideChain, false);
            host.process();
            drain();
            if (job.proceed && !job.proceed(result.outputFrames)) return result;
        }
        result.largestReductionDb = host.largestReductionDb();
        result.meanReductionDb = host.meanReductionDb();
        result.reducedShare = host.reducedShare();
        result.complete = true;
        return result;
    }

private:
    bool finished() const { return inputEnded && result.outputFrames == outputLength(); }
    std::int64_t outputLength() const { return result.inputFrames + job.tailSamples; }

    void fill(AudioReader& reader, std::span<float* const> channels, StreamLevels& levels, bool isInput) {
        const auto wanted = static_cast<std::size_t>(job.blockSamples);
        const std::size_t frames = isInput && inputEnded ? 0 : reader.read(channels, wanted);
        note({channels.data(), channels.size()}, frames, levels);
        for (float* channel : channels) std::fill(channel + frames, channel + wanted, 0.0f);
        if (!isInput) return;
        result.inputFrames += static_cast<std::int64_t>(frames);
        inputEnded = frames < wanted;
        if (inputEnded) host.endReductionAfter(outputLength());
    }

    /// Hands on what of the block belongs to the output.
    void drain() {
        const auto dropped = std::min<std::int64_t>(toDrop, job.blockSamples);
        toDrop -= dropped;
        std::int64_t frames = job.blockSamples - dropped;
        if (inputEnded) frames = std::min(frames, outputLength() - result.outputFrames);
        if (frames <= 0) return;

        std::array<const float*, kMaxChannels> from{};
        const auto channels = host.input();
        for (std::size_t i = 0; i < channels.size(); ++i) from[i] = channels[i] + dropped;
        const std::span<const float* const> block(from.data(), channels.size());
        note(block, static_cast<std::size_t>(frames), result.output);
        job.output.write(block, static_cast<std::size_t>(frames));
        result.outputFrames += frames;
    }

    const RenderJob& job;
    OfflineHost host;
    std::int64_t toDrop;
    bool inputEnded = false;
    RenderResult result;
};

}  // namespace

RenderResult render(const RenderJob& job) {
    check(job);
    const auto start = std::chrono::steady_clock::now();
    setDitherSeed(job.ditherSeed);
    RenderResult result = Render(job).run();
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return result;
}

}  // namespace vanta
