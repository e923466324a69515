#pragma once

#include <array>

#include "plugin/processor/dry_path.hpp"
#include "plugin/processor/generic_plugin_processor.hpp"
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
    /// Samples until a fade begins or ends, or 0: no sub-block runs across that point.
    int samplesToSeam() const;
    /// Makes room for dry signals of up to `largestLatency` samples. Set-up; allocates.
    void prepare(int largestLatency);
    /// Ends a fade at the next block and forgets the dry signal. Between blocks; allocates nothing.
    void reset();

    /// A null input counts as silence.
    VANTA_REALTIME void process(const float* const* inputs, float* const* outputs, int channelCount,
                                int offset, int samples);

private:
    bool hasInput() const { return processor_.processingMode == 1; }
    int samplesToFill() const;
    bool isWet() const;
    void fadeTo(float dry);
    void beginFade();
    void readDry(int channel, float* out, int samples);

    GenericPluginProcessor& processor_;
    wave::FloatParameter dryMix_;  ///< 0: all processed, 1: all dry
    DryPath dry_;
    bool bypassed_ = false;
    bool fadeInPending_ = false;
    bool resetPending_ = false;
    bool rested_ = false;
    std::array<const float*, kMaxChannels> wetPointers_{};
};

}  // namespace vanta
