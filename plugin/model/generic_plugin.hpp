#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "plugin/channel_layout.hpp"
#include "plugin/generic_plugin_base.hpp"
#include "plugin/metering/level_source_proxies.hpp"
#include "plugin/midi/midi_decoder.hpp"
#include "plugin/model/compare_states.hpp"
#include "plugin/model/model_event_queue.hpp"
#include "plugin/model/plugin_statics.hpp"
#include "plugin/model/preset_state.hpp"
#include "plugin/model/undo_history.hpp"
#include "plugin/presets/parameter_file_list.hpp"

namespace vanta {

struct MidiMessage {
    std::uint8_t status;
    std::uint8_t data1;
    std::uint8_t data2;
};

/// One instance of a plug-in as its user and its host see it: the parameters, the current preset, the undo
/// history, the two compare slots. It processes no sound; an adapter carries values between it and a
/// processor with a parameter table of the same make.
///
/// Parameters are set on any thread but the audio thread. What follows from it for the host happens on the
/// owner thread: at once if that is the calling one, else when the owner next calls `pumpEvents`.
///
/// A subclass builds its parameters, then calls `initialize` in its constructor.
class GenericPlugin : public GenericPluginBase, public MidiMessageReceiver {
public:
    static constexpr int kAllParameters = -1;

    class Adapter;
    class Listener;
    class ListenerCall;

    /// What `Listener::onEvent` tells of, and its value.
    enum Event : int {
        ParameterChanged = -1025,      ///< index or kAllParameters
        PresetChanged = -1026,         ///< name, path or the modified mark; 0
        ControllerMoved = -1027,       ///< number of a MIDI controller
        ExtraStateReplaced = -1028,    ///< 0
        ControllerMapChanged = -1029,  ///< 0
    };

    /// The phases of a user's gesture on a control.
    enum class Gesture { Begin, Change, End };

    explicit GenericPlugin(ChannelLayout layout);
    ~GenericPlugin() override;

    // What a plug-in says of itself.

    virtual bool canResize() const { return sizes().resizable; }
    virtual InterfaceSize limitSize(InterfaceSize wanted) const;
    virtual int category() const { return processingMode == 1 ? 0 : 1; }
    /// False: there is no such curve.
    virtual bool curveData(int kind, std::span<const float> values, std::span<float> out) const;
    virtual std::string defaultPresetName() const;
    virtual std::string presetMagic() const = 0;
    virtual int presetVersion() const { return 1; }
    virtual std::string presetExtension() const { return ".qmp"; }
    /// Of a side panel, along an axis; 0 for none.
    virtual int panelExtent(int /*panel*/, int /*axis*/) const { return 0; }
    /// -1: all presets. Null: there is no such folder.
    virtual PresetFolder* presetFolder(int kind) const { return kind == -1 ? &statics_->presets : nullptr; }
    virtual bool hasPageTable() const { return false; }
    virtual int interfaceWidth() const;
    virtual int interfaceHeight() const;

    // Parameters, and what follows from them.

    void beginChange() override;
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

    /// What the interface likes is kept, but for the first load at construction.
    bool loadPreset(const PresetEntry& entry);
    /// `first` other than kWholeFile changes `count` values of the file in place.
    virtual bool savePreset(const PresetEntry& entry, int first = kWholeFile, int count = 0);
    /// Names the preset as a host restores it; the path follows if there is a preset of that name. `length`
    /// 0 or more: only so many characters are compared with the present name.
    virtual void setPresetName(const std::string& name, int length = -1);
    PresetState& presetState() { return presetState_; }
    /// Marks the preset as modified, and tells so once.
    void markModified();

    // MIDI controller map, shared by all instances.

    virtual bool loadMidiMap();
    virtual void loadDefaultMidiMap();
    virtual bool saveMidiMap();

    // What the interface does.

    /// Safe at any time: on return the old listener is not called any more, but for calls that the calling
    /// thread itself is in; not under a lock that the old one takes. A new listener's thread becomes the
    /// owner.
    void setListener(Listener* newListener);
    Listener* listener() const { return listener_.load(); }
    /// Fills the compare slots the first time, and what the first undo leads back to.
    void interfaceOpened();
    /// A user moves a control: one undo step from its begin to its end, if anything has changed.
    void gesture(int parameterIndex, Gesture phase);
    /// An undo step. With the index of an interface parameter its value is kept for new instances.
    void takeSnapshot(int parameterIndex = -1);
    void restoreState(const State& state);
    /// Changes to the other compare slot and makes that an undo step.
    void toggleCompare();
    UndoHistory& undoHistory() { return undoHistory_; }
    CompareStates& compareStates() { return compareStates_; }
    PluginSettings& settings() { return *settings_; }
    /// MIDI that starts on the model's side.
    void receive(const std::uint8_t message[3]) override;

    // Host side.

    /// Null for none; before any other thread knows the model.
    void setAdapter(Adapter* hostAdapter) { adapter_ = hostAdapter; }
    Adapter* adapter() const { return adapter_; }
    ModelEventQueue& eventQueue() { return *eventQueue_; }
    /// Does what is due. Nothing on any thread but the owner. The result is the number of events.
    int pumpEvents();
    bool onOwnerThread() const { return ownerThread.load() == std::this_thread::get_id(); }
    /// Makes the calling thread the owner unless a listener's thread is. True if it is now.
    bool claim();
    /// Calls the listener, if there is one. Any thread but the audio thread.
    void notifyListener(int code, int value);
    /// Opaque bytes that belong to a state.
    std::vector<std::uint8_t> extraState() const;

    // Levels, on the thread of the interface.

    /// What the proxies ask of the processor's sources; each is told once.
    void takeLevelCommands(std::vector<std::uint8_t>& commands);
    /// Takes over what the processor wrote.
    virtual void readLevelData(BinaryDataReader& reader);
    AudioSourceProxy& audioSource(int index) { return *audioSources[static_cast<std::size_t>(index)]; }
    LevelSourceProxy& levelSource(int index) { return *levelSources[static_cast<std::size_t>(index)]; }
    SpectrumSourceProxy& spectrumSource(int index) {
        return *spectrumSources[static_cast<std::size_t>(index)];
    }
    int levelSourceCount() const { return static_cast<int>(levelSources.size()); }
    /// Source `index` of every channel in one.
    CombinedLevelSource& combinedLevelSource(int index);

    PluginStatics& statics() const { return *statics_; }
    static int instanceCount();

protected:
    /// `interfaceParameters` tell how the user likes the interface, not the sound.
    void initialize(std::vector<AbstractPluginParameter*> interfaceParameters);
    /// For the first instance of the process, under the lock of construction.
    virtual std::unique_ptr<PluginStatics> createStatics();
    virtual InterfaceSizes interfaceSizes() const { return {}; }
    /// Loads a preset file.
    virtual bool loadFile(const std::string& path);
    /// What else follows from a parameter, or from kAllParameters.
    virtual void parameterHook(int /*index*/) {}
    void setLatency(int samples);
    bool isInitialLoad() const { return initialLoad; }
    InterfaceSizes sizes() const { return settings_ ? settings_->sizes() : interfaceSizes(); }

private:
    void joinProcess();
    void leaveProcess();
    void buildSources();
    void loadDefaultPreset();
    void keepInterface(const std::vector<float>& values);
    std::vector<float> interfaceValues() const;
    void storeInterfaceDefault(int parameterIndex);
    void presetReplaced(PresetState::Values values);
    void onControllersChanged(void*);
    void onQueuedEvent(void*);
    void programRequested(int bank, int program);
    /// On the owner thread at once, else by the queue.
    void tellAdapter(ModelEventQueue::Kind kind, int value);
    void perform(int kind, int value);

    Adapter* adapter_ = nullptr;
    std::unique_ptr<ModelEventQueue> eventQueue_;
    CompareStates compareStates_{*this};
    std::optional<ParameterFileList> interfaceList;
    mutable std::mutex extraMutex;
    std::vector<std::uint8_t> extraState_;
    std::atomic<bool> listenerAttaching{false};
    bool initialLoad = false;
    std::atomic<bool> presetLoaded{false};  ///< the next full update asks the processor to reset
    std::atomic<int> latency_{0};
    std::atomic<Listener*> listener_{nullptr};
    std::atomic<int> listenerCalls{0};
    std::optional<ParameterFileList> presetList;
    std::atomic<int> changeBlocks{0};
    std::atomic<bool> changePending{false};
    PresetState presetState_;
    std::vector<std::unique_ptr<AudioSourceProxy>> audioSources;
    std::vector<std::unique_ptr<LevelSourceProxy>> levelSources;
    std::vector<std::unique_ptr<SpectrumSourceProxy>> spectrumSources;
    std::vector<std::unique_ptr<CombinedLevelSource>> combinedSources;
    std::atomic<float> sampleRate_{44100.0f};
    std::unique_ptr<PluginSettings> settings_;
    std::atomic<std::thread::id> ownerThread;
    std::recursive_mutex ownerMutex;  ///< held while events are delivered and while the owner changes
    UndoHistory undoHistory_{*this};
    PluginStatics* statics_ = nullptr;
};

/// What the model calls on the host side, on the owner thread.
class GenericPlugin::Adapter {
public:
    virtual ~Adapter() = default;
    /// The controller map that processors follow is another. On the thread that changed it.
    virtual void midiMapChanged() = 0;
    virtual void reportLatency() = 0;
    virtual void sendMidi(const MidiMessage& message) = 0;
    /// `index` or kAllParameters; with `reset` the values have nothing to do with those before.
    virtual void parameterUpdated(int index, bool reset) = 0;
    virtual void presetNameChanged() {}
    /// Exchanges levels with the processor, on the listener's thread.
    virtual void syncLevels() = 0;
    /// The value goes to the host.
    virtual void reportParameter(int index, float value) = 0;
};

/// An open interface.
class GenericPlugin::Listener {
public:
    virtual ~Listener() = default;
    /// On whatever thread the cause was, never the audio thread; see Event.
    virtual void onEvent(int code, int value) = 0;
    /// The lock of the interface, which is held while the proxies take new levels over.
    virtual void lockInterface() {}
    virtual void unlockInterface() {}
};

/// Counts a call into the listener, which `setListener` waits for. The calls of one thread are chained, so
/// that a listener that goes away within its own call does not wait for itself.
class GenericPlugin::ListenerCall {
public:
    explicit ListenerCall(GenericPlugin& owner);
    ~ListenerCall();
    ListenerCall(const ListenerCall&) = delete;
    ListenerCall& operator=(const ListenerCall&) = delete;

    /// Null if there is none.
    Listener* listener() const { return present; }
    /// How many calls into the model's listener the calling thread is in.
    static int onThisThread(const GenericPlugin& plugin);

private:
    GenericPlugin& model;
    ListenerCall* outer;
    Listener* present;
};

}  // namespace vanta
