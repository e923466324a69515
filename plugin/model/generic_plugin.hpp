#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "foundation/channel_layout.hpp"
#include "plugin/metering/level_exchange.hpp"
#include "plugin/midi/midi_decoder.hpp"
#include "plugin/model/change_blocks.hpp"
#include "plugin/model/compare_states.hpp"
#include "plugin/model/model_event_queue.hpp"
#include "plugin/model/model_owner.hpp"
#include "plugin/model/plugin_adapter.hpp"
#include "plugin/model/plugin_description.hpp"
#include "plugin/model/plugin_presets.hpp"
#include "plugin/model/shared_statics.hpp"
#include "plugin/model/undo_history.hpp"

namespace vanta {

/// One instance of a plug-in as its user and its host see it. It processes no sound: an adapter carries
/// values between it and a processor with a parameter table of the same make.
///
/// Parameters are set on any thread but the audio thread. What follows from that for the host happens on the
/// owner thread: at once if that is the calling one, else when the owner next calls `pumpEvents`.
///
/// A subclass builds its parameters, then calls `initialize` in its constructor.
class GenericPlugin : public PluginDescription,
                      public MidiMessageReceiver,
                      public StateOwner,
                      protected PluginPresets::Client {
public:
    using Adapter = PluginAdapter;
    using Listener = PluginListener;

    /// The phases of a user's gesture on a control.
    enum class Gesture { Begin, Change, End };

    explicit GenericPlugin(ChannelLayout layout);
    ~GenericPlugin() override;

    // The parts of an instance.

    ModelOwner& owner() { return owner_; }
    PresetState& presetState() { return presetState_; }
    UndoHistory& undoHistory() { return undoHistory_; }
    CompareStates& compareStates() { return compareStates_; }
    LevelExchange& levels() { return *levels_; }
    PluginSettings& settings() { return *settings_; }
    PluginStatics& statics() const { return **statics_; }
    static int instanceCount() { return SharedStatics::instanceCount(); }

    // Parameters, and what follows from them.

    void beginChange() override { changeBlocks_.begin(); }
    void endChange() override;
    void parameterChanged(int index, float value, int flags) override;
    std::vector<float> parameterValues() const;
    /// Samples, from the model's own parameters: known before the audio thread has taken them up.
    int latency() const { return latency_.load(); }
    float sampleRate() const { return sampleRate_.load(); }
    /// Hz.
    void setSampleRate(float rate);
    virtual void updateLatency() {}

    // Presets.

    bool loadPreset(const PresetEntry& entry) { return presets_->load(entry); }
    virtual bool savePreset(const PresetEntry& entry, int first = kWholeFile, int count = 0);
    /// Names the preset as a host restores it; the path follows if there is a preset of that name. `length`
    /// 0 or more: only that many characters are compared with the present name.
    virtual void setPresetName(const std::string& name, int length = -1);
    /// -1: all presets. Null: there is no such folder.
    virtual PresetFolder* presetFolder(int kind) const { return kind == -1 ? &statics().presets : nullptr; }

    // States.

    State captureState() const override;
    void restoreState(State state) override;
    /// Opaque bytes that belong to a state.
    std::vector<std::uint8_t> extraState() const;

    // The MIDI controller map, shared by all instances.

    virtual bool loadMidiMap();
    virtual void loadDefaultMidiMap();
    virtual bool saveMidiMap();

    // The interface.

    /// As ModelOwner::setListener. A new listener is shown no audio recorded before it came.
    void setListener(Listener* listener);
    /// Fills the compare slots the first time, and what the first undo leads back to.
    void interfaceOpened();
    /// A user moves a control: one undo step from its begin to its end, if anything has changed.
    void gesture(int parameterIndex, Gesture phase);
    /// An undo step. With the index of an interface parameter its value is kept for new instances.
    void takeSnapshot(int parameterIndex = -1);
    /// Changes to the other compare slot and makes that an undo step.
    void toggleCompare();
    virtual InterfaceSize limitSize(InterfaceSize size) const;
    virtual int interfaceWidth() const { return settings_->interfaceSize().width; }
    virtual int interfaceHeight() const { return settings_->interfaceSize().height; }

    // The host.

    /// Null for none; before any other thread knows the model.
    void setAdapter(Adapter* adapter) { adapter_ = adapter; }
    Adapter* adapter() const { return adapter_; }
    ModelEventQueue& eventQueue() { return *eventQueue_; }
    /// Does what is due. Nothing on any thread but the owner. The result is the number of events.
    int pumpEvents();
    /// MIDI that starts on the model's side.
    void receive(const std::uint8_t message[3]) override;
    /// Takes over the levels that the processor wrote, on the thread of the interface.
    virtual void readLevelData(BinaryDataReader& reader) { levels_->read(reader); }

protected:
    /// `interfaceParameters` are preferences for the interface and do not affect the sound.
    void initialize(std::vector<AbstractPluginParameter*> interfaceParameters);
    /// For the first instance of the process, under the lock of construction.
    virtual std::unique_ptr<PluginStatics> createStatics();
    bool loadFile(const std::string& path) override;
    /// What else follows from a parameter, or from kAllParameters.
    virtual void parameterHook(int /*index*/) {}
    void setLatency(int samples);
    /// The default preset of a new instance is being loaded.
    bool isInitialLoad() const { return presets_->isInitialLoad(); }

private:
    void joinProcess();
    void valuesReplaced() override;
    void presetReplaced(bool hostKnows) override;
    void markModified();
    void onControllersChanged(void*);

    /// Does it on the owner thread: at once or by the queue.
    template <typename Event>
    void tellHost(const Event& event);
    void perform(const LatencyChanged&);
    void perform(const ParameterUpdated& update);
    void perform(const PresetNameChanged&);
    void perform(const ControllerMoved& moved) { owner_.notify(moved); }
    void perform(const ControllerMapChanged& changed) { owner_.notify(changed); }
    void perform(const ProgramRequested& request) { presets_->loadProgram(request.bank, request.program); }

    Adapter* adapter_ = nullptr;
    ModelOwner owner_;
    ChangeBlocks changeBlocks_;
    std::atomic<float> sampleRate_{44100.0f};
    std::atomic<int> latency_{0};
    PresetState presetState_;
    mutable std::mutex extraMutex_;
    std::vector<std::uint8_t> extraState_;
    CompareStates compareStates_{*this};
    UndoHistory undoHistory_{*this, compareStates_};
    std::optional<ModelEventQueue> eventQueue_;
    std::optional<LevelExchange> levels_;
    std::optional<SharedStatics> statics_;
    std::unique_ptr<PluginSettings> settings_;
    std::optional<PluginPresets> presets_;
};

}  // namespace vanta
