#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "foundation/channel_layout.hpp"
#include "foundation/lock_free_fifo.hpp"
#include "foundation/realtime.hpp"
#include "plugin/base/generic_plugin_base.hpp"
#include "plugin/midi/midi_controlled.hpp"
#include "plugin/midi/midi_decoder.hpp"
#include "plugin/parameters/indexed_plugin_parameter.hpp"
#include "plugin/processor/parameter_queue.hpp"
#include "wave/environment.hpp"
#include "wave/level_source.hpp"

namespace vanta {

class BinaryDataWriter;

/// The plug-in independent audio processor. It cuts host blocks at MIDI events and at 256 samples, applies
/// queued parameter changes at those seams, pulls its channels and mixes the dry signal in while bypassed.
///
/// A subclass declares its source counts and parameters, calls `initialize`, then builds one Channel per
/// channel of the layout and wires its `output`; it keeps `latency` up to date.
///
/// `prepare` may allocate; `processBlock` and `reset` do not, and neither does the frame when the latency
/// changes, bypassed or not. A subclass that gives effect to a parameter by building something anew allocates
/// where that change is taken up: in either of the two.
class GenericPluginProcessor : public GenericPluginBase, public MidiControlled {
public:
    static constexpr int kMaxSubBlock = 256;
    static constexpr int kMaxIdleSamples = 12'288'000;

    /// What the processor calls on the host side, also from the audio thread.
    class ProcessorAdapter {
    public:
        virtual ~ProcessorAdapter() = default;
        virtual void programChange(int bank, int program) = 0;
        virtual void midiLearnHappened(int controller) = 0;
        virtual void parameterWasSet(int index) = 0;
    };
    class Channel;
    class BypassProcessor;

    explicit GenericPluginProcessor(ChannelLayout layout);
    ~GenericPluginProcessor() override;

    // Audio thread.

    /// One host block. `inputs` holds the main channels in layout order, then the side chain if it is
    /// delivered. `outputs` may be the same buffers. A sample that is not finite counts as 0.
    VANTA_REALTIME void processBlock(const float* const* inputs, int inputCount, float* const* outputs,
                                     int channelCount, int samples);
    /// Before `processBlock`: tempo in beats per minute, position in beats.
    VANTA_REALTIME void updateTransport(float tempo, float hostPosition);
    VANTA_REALTIME void setBypassed(bool request, int source);
    VANTA_REALTIME void controllerChanged(int number, float value) override;
    VANTA_REALTIME void programChanged(int bank, int program) override;
    /// Samples that sound on after the input has ended; -1 means without limit.
    virtual int tailLength() const { return -1; }
    /// Clears all that is remembered of the signal and takes up pending changes. Between blocks.
    virtual void reset();

    // Any thread. Nothing of it waits or allocates.

    void beginChange() override { parameterQueue_.beginBlock(); }
    void endChange() override { parameterQueue_.endBlock(); }
    void parameterChanged(int index, float value, int flags) override;
    /// The stream jumps: ramps end at their next read.
    void requestDiscontinuity();
    /// A MIDI message for sample `offset` of the next block. False when the queue is full.
    bool queueMidi(int offset, std::uint8_t status, std::uint8_t data1, std::uint8_t data2);
    void setControllerTarget(int number, int target) override;
    /// Samples of delay between input and output, as told to the host.
    int latency() const { return latency_.load(std::memory_order_relaxed); }

    // The reader's thread, one for the life of the processor.

    /// Level readings and recorded audio for an interface, which counts as present for the next second.
    void writeVisualData(BinaryDataWriter& writer);
    /// What the interface asked of its proxies, one byte per level source.
    void applyLevelCommands(std::span<const std::uint8_t> commands);
    std::span<wave::LevelSource* const> levels() const { return levelSources; }

    // Set-up, while no block runs.

    /// Builds for a sample rate in Hz, and resets everything, unless it is the present one. `largestBlock` is
    /// the most samples that a host's block will have, 0 if the host does not say. Allocates.
    void prepare(float sampleRate, int largestBlock = 0);
    /// Hz. Any thread.
    float sampleRate() const { return sampleRate_.load(std::memory_order_relaxed); }
    void setAdapter(ProcessorAdapter* hostAdapter) { adapter = hostAdapter; }
    /// Whether the host delivers a side chain after the main inputs.
    void setSideChainInUse(bool inUse) { sideChainInUse = inUse; }

    wave::Environment& environment() const { return *environment_; }
    std::span<Channel* const> channels() const { return channels_; }
    double beatPosition() const { return beatPosition_; }

protected:
    /// Called when the subclass's own members exist: builds the environment and what depends on it.
    void initialize();
    /// First instance in the process, under the lock of shared data.
    virtual void initShared() {}
    virtual std::unique_ptr<AbstractMusicEventReceiver> createEventReceiver();
    /// The longest that `latency` may ever be at a sample rate in Hz: what room is made for. Arithmetic
    /// alone, as `initialize` asks for it.
    virtual int largestLatency(float sampleRate) const = 0;
    virtual void setInputBuffers(const float* const* inputs, int inputCount, int samples);
    virtual void fetchOutputs(const float** wet, int channelCount, int samples);
    virtual void transportChanged(float /*tempo*/, double /*beatPosition*/) {}
    /// On the thread that sets the parameter, before the change is queued. An index or kAllParameters.
    virtual void parameterAboutToChange(int /*index*/) {}
    /// On the audio thread, after the parameter has driven its cells.
    virtual void parameterApplied(int index);
    /// Gives effect to what was queued. Only called by `applyPending`.
    virtual void applyPendingParameters();
    virtual void sampleRateChanged();
    /// Set-up: the host has said how many samples its blocks will have at most.
    virtual void largestBlockAnnounced(int /*samples*/) {}

    /// Gives effect to every parameter, changed or not. Set-up.
    void applyAllParameters();
    /// Drains the queues unless a block of changes is open.
    void applyPending();
    /// The value that is in effect. The parameter's own may run ahead of it at any moment: what the audio
    /// thread derives from several parameters must come from these, or its parts do not match. Audio
    /// thread.
    float appliedValue(const AbstractPluginParameter& parameter) const {
        return appliedValues_[static_cast<std::size_t>(parameter.index())];
    }
    template <typename T>
    T applied(const IndexedPluginParameter<T>& parameter) const {
        return parameter.engineValue(appliedValue(parameter));
    }
    void setLatency(int samples) { latency_.store(samples, std::memory_order_relaxed); }

    ProcessorAdapter* adapter = nullptr;
    bool sideChainInUse = false;
    // What an interface reads, in the order of the visual data; not owned.
    std::vector<wave::AudioSource*> audioSources;
    std::vector<wave::LevelSource*> levelSources;
    std::vector<wave::SpectrumSource*> spectrumSources;

private:
    void onSampleRateChanged(void*);
    void processUntil(const float* const* inputs, float* const* outputs, int channelCount, int& position,
                      int end);
    bool drainMidi(const float* const* inputs, float* const* outputs, int channelCount, int samples);
    void countIdle(int samples);
    void decode(LockFreeFifo::Item event);
    void queueStanding(int index, float value);
    void applyParameter(int index, float value);

    bool isCounted_ = false;  ///< among the instances of the process
    std::array<bool, 2> bypassRequests_{};
    std::vector<Channel*> channels_;
    std::array<std::atomic<int>, kControllerCount> controllerTargets_;
    std::unique_ptr<wave::Environment> environment_;
    std::atomic<float> sampleRate_{0.0f};  ///< of the environment, for other threads
    float lastHostPosition_ = 0.0f;
    int learnedController_ = -1;
    int hostBlockSamples_ = 0;
    std::atomic<int> latency_{0};
    std::unique_ptr<AbstractMusicEventReceiver> eventReceiver_;
    std::unique_ptr<MidiDecoder> midiDecoder_;
    std::unique_ptr<BypassProcessor> bypassProcessor_;
    int midiMode_ = 0;
    LockFreeFifo midiQueue_;
    ParameterQueue parameterQueue_;
    std::vector<float> appliedValues_;  ///< what the audio thread has given effect to
    std::atomic<int> idleSamples_{kMaxIdleSamples};
    double beatPosition_ = 0.0;
};

}  // namespace vanta
