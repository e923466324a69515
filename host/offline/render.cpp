#include "host/offline/render.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <memory>
#include <mutex>
#include <stdexcept>

#include "dsp/dither/dither_seed.hpp"
#include "foundation/numbers.hpp"
#include "host/offline/offline_host.hpp"
#include "kernel/mix.hpp"

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

/// One run through a limiter, block by block.
class Render {
public:
    explicit Render(const RenderJob& job)
        : job_(job),
          host_(job_.settings, job_.layout, static_cast<float>(job_.sampleRate), job_.blockSamples,
                job_.sideChain ? job_.sideChain->channelCount() : 0, job_.patch),
          toDrop_(host_.latency()) {
        result_.latencySamples = host_.latency();
    }

    RenderResult run() {
        while (!finished()) {
            fill(job_.input, host_.input(), result_.input, true);
            if (job_.sideChain) fill(*job_.sideChain, host_.sideChain(), result_.sideChain, false);
            host_.process();
            drain();
            if (job_.progress && !job_.progress(result_.outputFrames)) return result_;
        }
        result_.largestReductionDb = host_.largestReductionDb();
        result_.meanReductionDb = host_.meanReductionDb();
        result_.reducedShare = host_.reducedShare();
        result_.complete = true;
        return result_;
    }

private:
    bool finished() const { return inputEnded_ && result_.outputFrames == outputLength(); }
    std::int64_t outputLength() const { return result_.inputFrames + job_.tailSamples; }

    void fill(AudioReader& reader, std::span<float* const> channels, StreamLevels& levels, bool isInput) {
        const auto wanted = static_cast<std::size_t>(job_.blockSamples);
        const std::size_t frames = isInput && inputEnded_ ? 0 : reader.read(channels, wanted);
        noteLevels({channels.data(), channels.size()}, frames, levels);
        for (float* channel : channels) std::fill(channel + frames, channel + wanted, 0.0f);
        if (!isInput) return;
        if (job_.inputTrimDb != 0.0) trim(channels, frames);
        result_.inputFrames += static_cast<std::int64_t>(frames);
        inputEnded_ = frames < wanted;
        if (inputEnded_) host_.endReductionAfter(outputLength());
    }

    void trim(std::span<float* const> channels, std::size_t frames) const {
        const auto gain = static_cast<float>(gainFromDb(job_.inputTrimDb));
        for (float* channel : channels) kernel::scale(channel, gain, channel, frames);
    }

    /// Hands on what of the block belongs to the output.
    void drain() {
        const auto dropped = std::min<std::int64_t>(toDrop_, job_.blockSamples);
        toDrop_ -= dropped;
        std::int64_t frames = job_.blockSamples - dropped;
        if (inputEnded_) frames = std::min(frames, outputLength() - result_.outputFrames);
        if (frames <= 0) return;

        std::array<const float*, kMaxChannels> from{};
        const auto channels = host_.input();
        for (std::size_t i = 0; i < channels.size(); ++i) from[i] = channels[i] + dropped;
        const std::span<const float* const> block(from.data(), channels.size());
        noteLevels(block, static_cast<std::size_t>(frames), result_.output);
        job_.output.write(block, static_cast<std::size_t>(frames));
        result_.outputFrames += frames;
    }

    const RenderJob& job_;
    OfflineHost host_;
    std::int64_t toDrop_;
    bool inputEnded_ = false;
    RenderResult result_;
};

/// All renders of the process share the sequence of dither seeds, so one after the other takes its own.
std::unique_ptr<Render> begin(const RenderJob& job) {
    static std::mutex seeding;
    const std::scoped_lock lock(seeding);
    setDitherSeed(job.ditherSeed);
    return std::make_unique<Render>(job);
}

}  // namespace

void noteLevels(std::span<const float* const> channels, std::size_t frames, StreamLevels& levels) {
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

RenderResult render(const RenderJob& job) {
    check(job);
    const auto start = std::chrono::steady_clock::now();
    const auto running = begin(job);
    RenderResult result = running->run();
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return result;
}

}  // namespace vanta
