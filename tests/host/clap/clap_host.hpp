#pragma once

#include <clap/entry.h>
#include <clap/ext/audio-ports.h>
#include <clap/ext/gui.h>
#include <clap/ext/latency.h>
#include <clap/ext/params.h>
#include <clap/ext/state.h>
#include <clap/plugin-factory.h>

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <thread>
#include <vector>

#include "host/clap/clap_extensions.hpp"
#include "tests/host/formats/format_host.hpp"

namespace vanta::test {

/// The built module, loaded as hosts do.
class ClapLibrary {
public:
    ClapLibrary();
    ~ClapLibrary();
    ClapLibrary(const ClapLibrary&) = delete;
    ClapLibrary& operator=(const ClapLibrary&) = delete;

    const clap_plugin_entry_t& entry() const { return *entry_; }
    const clap_plugin_factory_t& factory() const;
    static const char* path();

private:
    void* handle_;
    const clap_plugin_entry_t* entry_;
};

/// Room for any event.
union ClapEvent {
    clap_event_header_t header;
    clap_event_param_value_t value;
    clap_event_param_gesture_t gesture;
    clap_event_midi_t midi;
    clap_event_transport_t transport;
    std::byte bytes[128];
};
ClapEvent valueEvent(std::uint32_t time, clap_id id, double value);
ClapEvent midiEvent(std::uint32_t time, MidiMessage message);

/// Events on their way to the plug-in.
struct ClapInput {
    ClapInput() { events.reserve(256); }
    explicit ClapInput(std::vector<ClapEvent> all) : events(std::move(all)) {}
    clap_input_events_t list();
    std::vector<ClapEvent> events;
};

/// Events from the plug-in. `capacity` is how many it takes.
struct ClapOutput {
    ClapOutput() { events.reserve(1024); }
    clap_output_events_t list();
    std::size_t capacity = 1024;
    std::vector<ClapEvent> events;
};

/// The speakers of a layout in the order of our channels, by CLAP's numbers.
const std::vector<std::uint8_t>& clapSpeakersOf(ChannelLayout layout);

/// A host of one instance that minds every rule on threads and on what may be called when: a plug-in that
/// breaks one fails the test.
class ClapHost final : public FormatHost {
public:
    /// Of the built module, or of another factory that outlives the host.
    ClapHost();
    explicit ClapHost(const clap_plugin_factory_t& factory);
    ~ClapHost() override;

    const clap_plugin_t& plugin() const { return *plugin_; }
    template <typename Table>
    const Table* extension(const char* id) const {
        return static_cast<const Table*>(plugin_->get_extension(plugin_, id));
    }
    const clap_plugin_params_t& params() const { return *extension<clap_plugin_params_t>(CLAP_EXT_PARAMS); }
    /// Calls of the audio thread go through here, on whichever thread.
    void asAudioThread(const std::function<void()>& calls);
    bool activate(double sampleRate, std::uint32_t largestBlock);
    void deactivate();
    void flush(std::vector<ClapEvent> events = {});

    // What the plug-in has asked for and told so far.
    std::atomic<bool> restartRequested{false};
    std::atomic<bool> callbackRequested{false};
    std::atomic<bool> flushRequested{false};
    int rescans = 0;
    int dirtyMarks = 0;
    int latencyChanges = 0;
    int timers = 0;
    std::vector<int> descriptors;
    bool wasClosed = false;
    ClapOutput output;

    const Traits& traits() const override;
    bool open(ChannelLayout layout, double sampleRate, int largestBlock, bool sideChain) override;
    bool reactivate(double sampleRate, int largestBlock) override;
    void setOffline(bool offline) override;
    int parameterCount() const override;
    double value(int index) const override;
    std::string text(int index, double value) const;
    void setValue(int index, double value) override;
    int latency() const override;
    std::vector<std::byte> save(int chunk) override;
    bool restore(std::span<const std::byte> bytes, int chunk) override;
    void idle() override;
    void callBack() override;
    void process(const Block& block) override;
    bool openWindow(unsigned long parent) override;
    void closeWindow() override;
    Size windowSize() const override;
    void resizeWindow(Size size) override;
    void dropWithWindow() override;
    std::vector<Edit> takeEdits() override;

private:
    struct Extensions;
    static ClapHost& of(const clap_host_t* host) { return *static_cast<ClapHost*>(host->host_data); }
    static const void* offer(const clap_host_t* host, const char* id);
    void create(const clap_plugin_factory_t& factory);
    void expectMainThread(const char* call) const;
    void collect(const Block& block);
    void noteEdits(std::size_t first);
    void serveWindow();
    const clap_plugin_gui_t& gui() const { return *extension<clap_plugin_gui_t>(CLAP_EXT_GUI); }

    std::unique_ptr<ClapLibrary> library_;
    clap_host_t host_{};
    const clap_plugin_t* plugin_ = nullptr;
    const std::thread::id mainThread_ = std::this_thread::get_id();
    std::atomic<std::thread::id> audioThread_{};
    bool isActive_ = false;
    double sampleRate_ = 0.0;
    std::uint32_t largestBlock_ = 0;
    bool hasSideChain_ = false;
    std::vector<int> hostChannels_;  ///< of each channel of the layout
    ClapInput input_;
    std::atomic_flag audioRuns_;  ///< a block or a flush, of which there is one at a time
    std::vector<Edit> edits_;
    std::size_t granted_ = 0;  ///< of the sizes that were wanted
};

}  // namespace vanta::test
