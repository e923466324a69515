#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/common/host_block.hpp"
#include "host/common/host_callbacks.hpp"
#include "host/unified/event_pump.hpp"
#include "host/unified/unified_plugin_adapter.hpp"

namespace vanta {

class ModelViewer;

/// Where an instance that processes no audio itself has its levels from.
class LevelFeed {
public:
    virtual ~LevelFeed() = default;
    /// Hands new readings to the model and takes what it asks for. On the thread of the interface, under its
    /// lock.
    virtual void exchange(LevelExchange& levels) = 0;
};

/// One instance of the limiter, as all plug-in formats see it: buses, events, values, states and latency
/// without the words of any format.
///
/// The host's main thread is the one that makes it, sets it up and pumps.
class HostedPlugin {
public:
    /// Of `activate`, in Hz.
    static constexpr double kLowestRate = 8000.0;
    static constexpr double kHighestRate = 768000.0;

    HostedPlugin(HostCallbacks& host, ChannelLayout layout);
    ~HostedPlugin();
    HostedPlugin(const HostedPlugin&) = delete;
    HostedPlugin& operator=(const HostedPlugin&) = delete;

    GenericPlugin& model() const;
    GenericPluginProcessor& processor() const;
    ChannelLayout layout() const { return model().channelLayout; }
    int channelCount() const { return vanta::channelCount(layout()); }

    // Set-up, on the main thread while no block runs.

    /// Rebuilds the instance for another layout; values, preset and compare slots stay. Viewers change over.
    void setLayout(ChannelLayout layout);
    /// Makes ready for a sample rate and for blocks of at most `largestBlock` samples, 0 if the host does not
    /// say. Longer ones are taken all the same. The audio side starts with what the model shows, so that an
    /// offline render needs nobody to pump. False for a rate that is not supported.
    bool activate(double sampleRate, int largestBlock);

    // For an interface, on the main thread.

    void addViewer(ModelViewer& viewer) { viewers_.push_back(&viewer); }
    void removeViewer(const ModelViewer& viewer) { std::erase(viewers_, &viewer); }
    /// A user takes hold of a parameter's control, and lets go. Values travel by the model meanwhile.
    void beginGesture(int index) { tellGesture(index, HostCallbacks::Edit::Begin); }
    void endGesture(int index) { tellGesture(index, HostCallbacks::Edit::End); }

    // The main thread, or any other if the host has no such thing.

    /// Does what waits for the main thread: carries what the audio side has changed to model and host.
    void pump();
    /// A thread of our own pumps from here on, for hosts that never call on a main thread. Callbacks then
    /// come from that thread.
    void pumpByThread();

    // Any thread of the host but the audio thread.

    /// Samples that the output is late, as it holds when audio next runs.
    int latency() const { return model().latency(); }
    double sampleRate() const { return static_cast<double>(model().sampleRate()); }
    void hostPositionChanged(int index, double position);
    /// What a control of the host's shows of a change that comes with a block, and only there takes effect.
    void hostPositionShown(int index, double position);
    void hostValueChanged(int index, double value);
    /// The same where the host never gives back what it was told: it counts in any case.
    void hostValueStands(int index, double value);
    std::vector<std::byte> saveState();
    /// False, and nothing has changed, if the bytes are not a state.
    bool restoreState(std::span<const std::byte> bytes);
    /// The same, but leaves all values as they are.
    bool restoreSurroundings(std::span<const std::byte> bytes);
    /// For an interface that is not here: see UnifiedPluginAdapter.
    void exchangeLevels(std::span<const std::uint8_t> commands, BinaryDataWriter& writer);
    /// The model shows these levels and not those of the processor. While no interface is open.
    void setLevelFeed(LevelFeed& feed);
    /// What the model shows, from 0 to 1.
    double position(int index) const;
    /// What a value reads as, with its unit.
    std::string text(int index, double value) const;
    /// The own number of a text; nothing if it is not understood.
    std::optional<double> parse(int index, const std::string& text) const;

    // Audio thread.

    /// Applies each event at its sample.
    VANTA_REALTIME void process(const HostBlock& block, HostEventSource& events);
    /// Takes events without a block, also while no audio runs.
    VANTA_REALTIME void flush(HostEventSource& events);
    /// Forgets the signal. Between blocks.
    VANTA_REALTIME void reset();

private:
    class Instance;

    void build(ChannelLayout layout);
    void rebuild(ChannelLayout layout);
    void tellGesture(int index, HostCallbacks::Edit edit);
    void tellViewers(void (ModelViewer::*what)());
    void requestPump();
    void take(const HostEvent& event, int position);
    void point(const HostBlock& block, int begin);
    void run(const HostBlock& block, int begin, int end);

    /// Where channels that the host does not want are written to.
    static constexpr int kScratchSamples = 1024;

    HostCallbacks& host_;
    std::vector<ModelViewer*> viewers_;
    std::unique_ptr<Instance> instance_;
    std::optional<EventPump::Registration> thread_;
    std::atomic<bool> pumpedByThread_{false};
    std::atomic<bool> pumpRequested_{false};

    // Of the block that runs.
    std::array<const float*, 2 * kMaxChannels> inputs_{};
    std::array<float*, kMaxChannels> outputs_{};
    int inputCount_ = 0;
    bool usesScratch_ = false;
    HostTransport transport_{};
    int transportBegin_ = 0;  ///< the sample that it stands for
    std::vector<float> scratch_;
};

}  // namespace vanta
