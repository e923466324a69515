#pragma once

#include <array>
#include <memory>

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
    bool hasRested() const { return rested; }
    /// Samples until the fade back in begins, or 0: no sub-block runs across that point.
    int samplesToSeam() const { return fadeInPending && holdSamples > 0 ? holdSamples : 0; }
    /// Ends a fade at the next block and empties the dry delays.
    void reset();

    /// A null input counts as silence.
    VANTA_REALTIME void process(const float* const* inputs, float* const* outputs, int channelCount,
                                int offset, int samples);

private:
    void matchLatency();
    void fadeTo(float dry);
    void beginFade();
    void writeDry(const float* const* inputs, int channelCount, int offset, int samples);
    void readDry(const float* input, int channel, float* out, int samples);

    GenericPluginProcessor& processor;
    FloatParameter dryMix;  ///< 0: all processed, 1: all dry
    std::array<std::unique_ptr<wave::Delay>, kMaxChannels> dryDelays;
    int dryDelayLength = 0;
    int holdSamples = 0;
    bool bypassed_ = false;
    bool fadeInPending = false;
    bool resetPending = false;
    bool rested = false;
    std::array<const float*, kMaxChannels> wetPointers{};
    wave::BasicBlock<float> scratch;
};

}  // namespace vanta
