#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <sstream>
#include <vector>

#include "foundation/binary_data.hpp"
#include "foundation/critical_section.hpp"
#include "host/unified/audio_side_changes.hpp"
#include "plugin/model/generic_plugin.hpp"
#include "plugin/processor/generic_plugin_processor.hpp"

namespace vanta {

/// Joins the model and the processor of one instance, which never see each other, and the host. A class for
/// one kind of host derives from it, reports values and latency, and calls the entry points below.
///
/// How values travel:
/// - a user moves a control: model, host, and by the host's answer the processor;
/// - a host automates: processor and model;
/// - a MIDI controller moves: processor at once, model and host when the owner thread next pumps;
/// - a preset or state is loaded: model and processor at once, host when the owner thread next pumps.
///
/// No road holds a lock while it calls a listener or the host. Where two cross, the processor has the last
/// word: whoever has set two of the three compares them at the end, and where they are apart the processor's
/// value is delivered anew.
class UnifiedPluginAdapter : public GenericPlugin::Adapter, public GenericPluginProcessor::ProcessorAdapter {
public:
    /// Who carries a value that the model reports on to the processor.
    enum class RoundTrip {
        ByHost,  ///< the host gives every reported value back through `hostPositionChanged`
        ByUs,    ///< the host keeps it to itself
    };

    explicit UnifiedPluginAdapter(RoundTrip roundTrip) : roundTrip_(roundTrip) {}
    ~UnifiedPluginAdapter() override;

    /// Builds the pair. Called once, before any other thread knows the adapter.
    void create(ChannelLayout layout);
    GenericPlugin& model() const { return *model_; }
    GenericPluginProcessor& processor() const { return *processor_; }

    // Host threads.

    /// Every change that a host makes or gives back; a position from 0 to 1.
    void hostPositionChanged(int index, double position);
    /// What a control of the host's shows of a change that comes with a block, earlier or later. It may lag
    /// behind: the processor listens to the blocks alone.
    void hostPositionShown(int index, double position);
    /// The same as `hostPositionChanged` for hosts that speak the parameters' own numbers.
    void hostValueChanged(int index, double value);

    /// From here on the host's position of a parameter is its own, also where it is the one that it was told.
    void forgetTold(int index);

    // A session, on any thread of the host but the audio thread.

    /// What the host is to store: see plugin/model/session_state.hpp. Takes in first what the audio side
    /// plays already and the owner thread has not delivered yet.
    std::vector<std::byte> saveState();
    /// Takes over what was stored. The processor plays it from its next block on; a change of the audio side
    /// that still waits is older, and lost. The host hears of the values when the owner thread pumps. False,
    /// and nothing has changed, if the bytes are not a state.
    bool restoreState(std::span<const std::byte> bytes);
    /// To be called before the first block of an offline render, while no block runs, as such a render does
    /// not wait for the owner thread: what the audio side has changed goes to the model, and all that the
    /// model shows to the processor.
    void deliverBeforeRender();

    // Owner thread.

    /// Whether anything waits. Any thread.
    VANTA_REALTIME bool hasWork() const;
    /// Does what waits for this thread. Nothing on any other. The result is the number of things done.
    int pumpEvents();
    /// The same for a thread that serves all instances: it is owner while no interface is open.
    virtual int claimAndPump();

    // For an interface that is not here.

    /// Carries out what it asks of the levels, and writes what the processor has measured since the last
    /// time. One thread at a time, and not the audio thread.
    void exchangeLevels(std::span<const std::uint8_t> commands, BinaryDataWriter& writer);

    // Set-up, while no block runs.

    /// Builds both sides for a sample rate in Hz and blocks of at most `largestBlock` samples, 0 if the host
    /// does not say. Allocates.
    void prepare(float sampleRate, int largestBlock = 0);

    // Audio thread. Neither waits nor allocates.

    /// A change that a host delivers with a block, or its answer to what it was told. The model follows when
    /// the owner thread pumps.
    VANTA_REALTIME void hostValueChangedInBlock(int index, double value);
    /// For sample `offset` of the next block; dropped while Receive Midi is off. False: the queue is full.
    VANTA_REALTIME bool queueMidi(int offset, const MidiMessage& message);

    // For model and processor.

    void midiMapChanged() override;
    void sendMidi(const MidiMessage& message) override;
    void parameterUpdated(int index) override;
    void sendAllParameters(bool reset) override;
    void sendState(std::span<const float> values) override;
    void syncLevels() override;
    VANTA_REALTIME void programChange(int bank, int program) override;
    VANTA_REALTIME void midiLearnHappened(int controller) override;
    VANTA_REALTIME void parameterWasSet(int index) override;

protected:
    /// The model takes in what the audio side plays already, ahead of the owner thread. Any thread of the
    /// host but the audio thread.
    void takeAllThatWaits();
    /// The levels of the processor go to the model, and the interface's wishes the other way. On the thread
    /// of the interface.
    virtual void transferLevels();
    virtual std::unique_ptr<GenericPlugin> createModel(ChannelLayout layout);
    virtual std::unique_ptr<GenericPluginProcessor> createProcessor(ChannelLayout layout);

private:
    bool isParameter(int index) const { return index >= 0 && index < model_->parameterCount(); }
    bool receivesMidi() const;
    void give(int index, float value);
    float giveOwn(int index);
    void takeFromHost(int index, float value, bool modelHasIt);
    float takeFromProcessor(int index);
    void tell(int index, float value);
    bool isApart(const GenericPluginBase& side, int index, double position) const;
    void deliverAgainIfApart(int index, double position);
    int deliverAudioSideChanges();

    const RoundTrip roundTrip_;
    RecursiveCriticalSection lock_;  ///< for all that goes from the model to the processor, not to the host
    std::unique_ptr<GenericPlugin> model_;
    std::unique_ptr<GenericPluginProcessor> processor_;
    std::optional<AudioSideChanges> audioSide_;
    std::stringstream transfer_;  ///< reused, so that it need not grow anew
    std::vector<std::uint8_t> levelCommands_;
};

}  // namespace vanta
