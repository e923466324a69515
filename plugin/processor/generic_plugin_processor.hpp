#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "foundation/lock_free_fifo.hpp"
#include "foundation/realtime.hpp"
#include "plugin/channel_layout.hpp"
#include "plugin/generic_plugin_base.hpp"
#include "plugin/midi/midi_decoder.hpp"
#include "plugin/parameters/indexed_plugin_parameter.hpp"
#include "wave/level_source.hpp"
#include "wave/producer.hpp"

namespace vanta {

class BinaryDataWriter;

/// The plug-in independent audio processor. It cuts host blocks at MIDI events and at 256 samples, applies
/// queued parameter changes at those seams, pulls its channels and mixes the dry signal in while bypassed.
///
/// A subclass declares its source counts and parameters, calls `initialize`, then builds one Channel per
/// channel of the layout and wires its `output`; it keeps `latency` up to date.
class GenericPluginProcessor : public GenericPluginBase {
public:
    static constexpr int kMaxSubBlock = 256;
    static constexpr int kMaxIdleSamples = 12'288'000;
    static constexpr int kControllerCount = 128;
    static constexpr int kNoTarget = -1;
    static constexpr int kExtraTargetBase = 0x100000;

    /// What the processor calls on the host side. The last two may come from the audio thread.
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

    /// One host block. `inputs` holds the main channels in layout order, behind them the side chain if it is
    /// delivered. `outputs` may be the same buffers. A sample that is not finite counts as 0.
    VANTA_REALTIME void processBlock(const float* const* inputs, int inputCount, float* const* outputs,
                                     int channelCount, int samples);
    /// Before `processBlock`: tempo in beats per minute, position in beats.
    VANTA_REALTIME void updateTransport(float tempo, float hostPosition);
    VANTA_REALTIME void setBypassed(bool request, int source);
    VANTA_REALTIME void controllerChanged(int number, float value);
    VANTA_REALTIME void programChanged(int bank, int program);
    /// Samples that sound on after the input has ended; -1 means without limit.
    virtual int tailLength() const { return -1; }
    /// Clears all that is remembered of the signal. Between blocks; allocates if the latency has changed.
    virtual void reset();

    // Any thread.

    void beginChange() override;
    void endChange() override;
    void parameterChanged(int index, float value, int flags) override;
    /// The stream jumps: ramps end at their next read.
    void requestDiscontinuity();
    /// A MIDI message for sample `offset` of the next block. False when the queue is full.
    bool queueMidi(int offset, std::uint8_t status, std::uint8_t data1, std::uint8_t data2);
    /// What controller `number` moves: a parameter, kExtraTargetBase plus an extra target, or kNoTarget.
    void setControllerTarget(int number, int target);
    /// Samples of delay between input and output, as told to the host.
    int latency() const { return latency_.load(std::memory_order_relaxed); }

    // The reader's thread, one for the life of the processor.

    /// Level readings and recorded audio for an interface, which counts as present for the next second.
    void writeVisualData(BinaryDataWriter& writer);
    /// What the interface asked of its proxies, one byte per level source.
    void applyLevelCommands(std::span<const std::uint8_t> commands);
    std::span<LevelSource* const> levels() const { return levelSources; }

    // Set-up, while no block runs.

    /// Hz. Resets everything that depends on it.
    void setSampleRate(float rate);
    float sampleRate() const;
    void setAdapter(ProcessorAdapter* hostAdapter) { adapter = hostAdapter; }
    /// Whether the host delivers a side chain behind the main inputs.
    void setSideChainInUse(bool inUse) { sideChainInUse = inUse; }

    wave::Environment& environment() const { return *environment_; }
    std::span<Channel* const> channels() const { return channels_; }
    double beatPosition() const { return beatPosition_; }

protected:
    /// Called when the subclass's own members exist: builds the environment and what stands on it.
    void initialize();
    /// First instance in the process, under the lock of shared data.
    virtual void initShared() {}
    virtual std::unique_ptr<AbstractMusicEventReceiver> createEventReceiver();
    virtual void setInputBuffers(const float* const* inputs, int inputCount, int samples);
    virtual void fetchOutputs(const float** wet, int channelCount, int samples);
    virtual void transportChanged(float /*tempo*/, double /*beatPosition*/) {}
    /// On the thread that sets the parameter, before the change is queued. -1 stands for all.
    virtual void parameterAboutToChange(int /*index*/) {}
    /// On the audio thread, after the parameter has driven its cells.
    virtual void parameterApplied(int index);
    /// Takes note of how much is queued; what comes later waits for the next drain.
    virtual void notePendingChanges();
    /// Gives effect to what was noted. Only called by `applyPending`.
    virtual void applyPendingParameters();
    virtual void sampleRateChanged();

    /// Gives effect to every parameter, changed or not. Set-up.
    void applyAllParameters();
    /// Drains the queues unless a block of changes is open.
    void applyPending();
    /// The value that is in effect. The parameter's own may be ahead of it, and at any moment so: what the
    /// audio thread derives from several parameters must come from these, or its parts do not fit. Audio
    /// thread.
    float appliedValue(const AbstractPluginParameter& parameter) const {
        return appliedValues[static_cast<std::size_t>(parameter.index())];
    }
    template <typename T>
    T applied(const IndexedPluginParameter<T>& parameter) const {
        return parameter.engineValue(appliedValue(parameter));
    }
    void setLatency(int samples) { latency_.store(samples, std::memory_order_relaxed); }

    ProcessorAdapter* adapter = nullptr;
    bool sideChainInUse = false;
    // What an interface reads, in the order of the visual data; not owned.
    std::vector<AudioSource*> audioSources;
    std::vector<LevelSource*> levelSources;
    std::vector<SpectrumSource*> spectrumSources;

private:
    void onSampleRateChanged(void*) { sampleRateChanged(); }
    void processUntil(const float* const* inputs, float* const* outputs, int channelCount, int& position,
                      int end);
    bool drainMidi(const float* const* inputs, float* const* outputs, int channelCount, int samples);
    void countIdle(int samples);
    void decode(LockFreeFifo::Item event);
    void applyParameter(int index, float value);

    std::array<bool, 2> bypassRequests{};
    std::vector<Channel*> channels_;
    std::array<std::atomic<int>, kControllerCount> controllerTargets;
    std::unique_ptr<wave::Environment> environment_;
    float lastHostPosition = 0.0f;
    int learnedController = -1;
    int hostBlockSamples = 0;
    std::atomic<int> latency_{0};
    std::unique_ptr<AbstractMusicEventReceiver> eventReceiver;
    std::unique_ptr<MidiDecoder> midiDecoder;
    std::unique_ptr<BypassProcessor> bypassProcessor;
    int midiMode = 0;
    LockFreeFifo midiQueue;
    LockFreeFifo parameterQueue;
    std::uint32_t pendingParameters = 0;
    std::atomic<int> parameterHold{0};
    std::atomic<std::uint32_t> changeEpoch{0};  ///< counts opened blocks of changes
    std::atomic<bool> reapplyAll{false};        ///< a change found the queue full
    std::vector<float> appliedValues;           ///< what the audio thread has given effect to
    std::atomic<int> idleSamples{kMaxIdleSamples};
    double beatPosition_ = 0.0;
};

/// One channel: its inputs, and the end of the graph that the subclass builds on them.
class GenericPluginProcessor::Channel {
public:
    /// Appends itself to the processor's channels.
    explicit Channel(GenericPluginProcessor& owner);
    virtual ~Channel() = default;
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    VANTA_REALTIME virtual void parameterApplied(int /*index*/) {}
    virtual void sampleRateChanged() {}

    int index() const { return index_; }
    int typeWord() const { return typeWord_; }
    wave::Input& mainInput() { return mainInput_; }
    /// The delivered side chain, or where there is none the main signal.
    wave::Input& sideInput() { return sideInput_; }
    /// The delivered side chain, or silence.
    wave::Producer& connectedSideChain() { return connectedSideChain_; }

    wave::Producer* output = nullptr;

protected:
    GenericPluginProcessor& processor;

private:
    class ConnectedSideChainInput final : public wave::Input {
    public:
        ConnectedSideChainInput(wave::Environment& owner, const GenericPluginProcessor& frame)
            : Input(owner), processor(frame) {}

    protected:
        void produce(wave::BasicBlock<float>* block, int samples, int flags) override;

    private:
        const GenericPluginProcessor& processor;
    };

    friend class GenericPluginProcessor;
    int index_;
    int typeWord_;
    wave::Input mainInput_;
    wave::Input sideInput_;
    ConnectedSideChainInput connectedSideChain_;
};

}  // namespace vanta
