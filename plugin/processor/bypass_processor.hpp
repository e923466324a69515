#pragma once

#include <array>
#include <memory>
#include <vector>

#include "plugin/processor/generic_plugin_processor.hpp"
#include "wave/delay.hpp"
#include "wave/float_parameter.hpp"

namespace vanta {

/// Runs the graph for one sub-block and crossfades between the processed signal and the input, which it
/// delays by the latency. While the output is wholly dry the graph rests.
class GenericPluginProcessor::BypassProcessor {
public:
    explicit BypassProcessor(GenericPluginProcessor& owner);

    /// Engaging fades to dry over 50 ms. Leaving a graph that has rested waits for it to fill with signal,
    /// `latency` samples; leaving within the fade reverses from where it stands.
    VANTA_REALTIME void setBypassed(bool state);
    bool bypassed() const { return bypassed_; }
    /// Whether the graph has missed signal since the bypass was engaged.
    bool hasRested() const { return rested_; }
    /// Samples until the fade back in begins, or 0: no sub-block runs across that point.
    int samplesToSeam() const { return fadeInPending_ && holdSamples_ > 0 ? holdSamples_ : 0; }
    /// Makes room for dry signals of up to `largestLatency` samples. Set-up; allocates.
    void prepare(int largestLatency);
    /// Ends a fade at the next block and empties the dry delays. Between blocks; allocates nothing.
    void reset();

    /// A null input counts as silence.
    VANTA_REALTIME void process(const float* const* inputs, float* const* outputs, int channelCount,
                                int offset, int samples);

private:
    VANTA_REALTIME void followLatency();
    bool hasDryDelay() const { return dryLatency_ > 0 && !dryDelays_.empty(); }
    void fadeTo(float dry);
    void beginFade();
    void writeDry(const float* const* inputs, int channelCount, int offset, int samples);
    void readDry(const float* input, int channel, float* out, int samples);

    GenericPluginProcessor& processor_;
    wave::FloatParameter dryMix_;                          ///< 0: all processed, 1: all dry
    std::vector<std::unique_ptr<wave::Delay>> dryDelays_;  ///< one a channel; none without audio input
    int dryLatency_ = 0;                                   ///< the latency that they are set to
    int holdSamples_ = 0;
    bool bypassed_ = false;
    bool fadeInPending_ = false;
    bool resetPending_ = false;
    bool rested_ = false;
    std::array<const float*, kMaxChannels> wetPointers_{};
    wave::BasicBlock<float> scratch_;
};

}  // namespace vanta
