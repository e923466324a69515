#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <span>
#include <utility>
#include <vector>

#include "foundation/channel_layout.hpp"
#include "host/unified/unified_plugin_adapter.hpp"

namespace vanta::test {

/// A host in our own process, whole but for a window: it keeps a position from 0 to 1 for each parameter and
/// gives back whatever it is told of; it automates, plays MIDI, stores sessions and renders blocks.
///
/// Its constructing thread is its main thread. Another may be the audio thread.
class InProcessHost {
public:
    /// Samples, as it tells its plug-ins. Longer blocks come as they may from a host that is mistaken.
    static constexpr int kLargestBlock = 8192;

    /// When the host gives a change back.
    enum class Answers {
        AtOnce,  ///< within the call that reports it
        OnIdle,  ///< on the main thread, later
    };

    explicit InProcessHost(ChannelLayout layout = kStereoLayout, float sampleRate = 44100.0f,
                           Answers when = Answers::AtOnce);
    ~InProcessHost();
    InProcessHost(const InProcessHost&) = delete;
    InProcessHost& operator=(const InProcessHost&) = delete;

    // Main thread.

    /// What a main loop does between events of its own.
    void idle();
    /// Automation, a control surface, the host's own list of parameters.
    void setPosition(int index, double position);
    /// A whole state, as a session stores it.
    std::vector<std::byte> saveState();
    bool loadState(std::span<const std::byte> bytes);

    // Any thread.

    /// The host's copy.
    double position(int index) const { return positions_[static_cast<std::size_t>(index)].load(); }
    /// Samples, as the host was told last.
    int latency() const { return latency_.load(); }
    /// How often it was told of a latency or of the name of a preset.
    int latencyReports() const { return latencyReports_.load(); }
    int nameReports() const { return nameReports_.load(); }

    // Audio thread.

    /// For sample `offset` of the next block. False: the queue is full.
    VANTA_REALTIME bool sendMidi(int offset, const MidiMessage& message);
    /// Automation that comes with the block, in the parameter's own numbers.
    VANTA_REALTIME void automate(int index, double value);
    /// One block; `inputs` may hold a side chain after the main channels. May be done in place.
    VANTA_REALTIME void process(std::span<const float* const> inputs, std::span<float* const> outputs,
                                int samples);

    UnifiedPluginAdapter& adapter() { return *adapter_; }
    GenericPlugin& model() { return adapter_->model(); }
    GenericPluginProcessor& processor() { return adapter_->processor(); }

private:
    class Adapter;

    void valueReported(int index, float value);
    void answer(int index, double position);

    const Answers answers_;
    std::vector<std::atomic<double>> positions_;
    std::atomic<int> latency_{0};
    std::atomic<int> latencyReports_{0};
    std::atomic<int> nameReports_{0};
    std::mutex answerMutex_;
    std::vector<std::pair<int, double>> dueAnswers_;
    std::unique_ptr<UnifiedPluginAdapter> adapter_;
};

}  // namespace vanta::test
