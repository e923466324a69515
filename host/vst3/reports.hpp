#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include <travesty/audio_processor.h>
#include <travesty/edit_controller.h>

#include "host/common/host_callbacks.hpp"
#include "host/common/pending_edits.hpp"
#include "host/vst3/host_interface.hpp"

namespace vanta::vst3 {

class ParameterList;

/// Tells the host's component handler what an instance has to say, in turns of our own: never within a call
/// of the host's, which may hold locks that the handler takes. The handler wants the main thread. What comes
/// up outside a turn there waits for the next one, and values also for the next block, which can carry them.
/// Where no run loop gives us the main thread, restarts are asked for on a thread of our own.
class Reports final : public HostCallbacks {
public:
    // Main thread.

    /// Before anything is told.
    void setParameters(const ParameterList& parameters);
    /// Null takes it away.
    void setHandler(v3_component_handler** handler);
    void claimMainThread() { mainThread_.store(std::this_thread::get_id()); }
    bool isMainThread() const { return mainThread_.load() == std::this_thread::get_id(); }
    /// The host reads latency as it activates an instance, and only hears of changes while it is active.
    void setActive(bool active);
    /// The latency is what it was, whatever it has been meanwhile.
    void latencyHolds() { restartFlags_.fetch_and(~V3_RESTART_LATENCY_CHANGED); }
    /// The values that wait are older than a state that the host has restored.
    void forgetEdits() { pending_->forgetValues(); }
    /// The host should read all values anew.
    void valuesReplaced() { restartFlags_.fetch_or(V3_RESTART_PARAM_VALUES_CHANGED); }
    /// Whether another preset may be current since the last call.
    bool takePresetChange() { return presetChanged_.exchange(false); }

    // Main thread, in a turn that the host's run loop gives us.

    /// Holds the turn for a scope.
    class Turn {
    public:
        explicit Turn(Reports& reports) : reports_(reports) {
            reports_.turn_.store(std::this_thread::get_id());
        }
        ~Turn() { reports_.turn_.store({}); }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

    private:
        Reports& reports_;
    };
    /// All that waits. The host may call back, and even activate the instance anew, before this returns.
    void tell();

    // In a turn, or on a thread of our own.

    /// All but edits.
    void tellRestarts();

    // Audio thread.

    /// Hands values over that no main thread has told yet.
    VANTA_REALTIME void tellWithBlock(v3_param_changes** changes);

    // For the instance.

    void parameterEdited(int index, Edit edit, float value) override;
    void beginEdits() override;
    void endEdits() override;
    void stateRestored() override;
    void stateChanged() override;
    void latencyChanged() override;
    void pumpedByThread() override { onPumped(); }
    void pumpRequested() override {}

    std::function<void()> onPumped = [] {};

private:
    bool canTell() const { return handler_ && turn_.load() == std::this_thread::get_id(); }
    void edit(int index, Edit edit, double position);
    double positionOf(int index, float value) const;

    const ParameterList* parameters_ = nullptr;
    HostInterface<v3_component_handler> handler_;
    HostInterface<v3_component_handler2> handler2_;
    std::mutex handlerMutex_;  ///< for replacing them; not held while they are called
    std::atomic<std::thread::id> mainThread_{std::this_thread::get_id()};
    std::atomic<std::thread::id> turn_{};
    std::vector<bool> held_;  ///< parameters that a user moves
    std::optional<PendingEdits> pending_;
    std::atomic<bool> active_{false};
    std::atomic<int> restartFlags_{0};
    std::atomic<bool> dirty_{false};
    std::atomic<bool> presetChanged_{false};
};

}  // namespace vanta::vst3
