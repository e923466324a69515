#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <sstream>
#include <vector>

#include "host/offline/gain_reduction_meter.hpp"
#include "host/offline/limiter_settings.hpp"
#include "limiter/processor/vanta_processor.hpp"
#include "plugin/metering/level_exchange.hpp"

namespace vanta {

/// A limiter with the buffers around it, fed as a host feeds it: blocks of one size, the side chain after
/// the main channels.
class OfflineHost {
public:
    /// `sampleRate` in Hz. `sideChainChannels` is 0 without a side chain, at most as many as the layout has.
    /// A patch, which outlives the host, takes the place of the style that is set.
    OfflineHost(const LimiterSettings& settings, ChannelLayout layout, float sampleRate, int blockSamples,
                int sideChainChannels, const StylePatch* patch = nullptr);

    int latency() const { return processor_.latency(); }
    int blockSamples() const { return blockLength_; }

    /// Where the next block of input goes, one pointer a channel; likewise of the side chain.
    std::span<float* const> input() { return std::span(pointers_).first(channels_); }
    std::span<float* const> sideChain() { return std::span(pointers_).subspan(channels_); }
    /// Processes the block in place: the result replaces the input.
    void process();
    /// Hands over what a display shows, and has it recorded from now on. Audio that is not read within about
    /// a tenth of a second is lost.
    void readLevels(LevelExchange& levels);

    /// The largest gain reduction of any channel, in dB; the first `latency()` samples, in which the output
    /// is not the file's yet, do not count.
    double largestReductionDb() const;
    /// In dB, over all channels and samples.
    double meanReductionDb() const;
    /// Share of the time in which a channel is turned down noticeably, on average of all channels, 0 to 1.
    double reducedShare() const;
    /// No more than `count` samples of output count.
    void endReductionAfter(std::int64_t count);

private:
    VantaProcessor processor_;
    std::vector<std::unique_ptr<GainReductionMeter>> meters_;
    std::size_t channels_;
    int blockLength_;
    std::vector<float> samples_;
    std::vector<float*> pointers_;
    std::stringstream transfer_;  ///< reused, so that it need not grow anew
};

}  // namespace vanta
