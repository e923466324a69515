#pragma once

#include <clap/events.h>
#include <clap/ext/latency.h>
#include <clap/ext/params.h>
#include <clap/ext/state.h>
#include <clap/host.h>

#include <atomic>
#include <vector>

#include "host/common/host_callbacks.hpp"
#include "host/common/pending_edits.hpp"

namespace vanta {

class HostedPlugin;

/// What an instance tells a CLAP host. Reports come on any thread; CLAP wants edits with a block or a flush,
/// and all else on the main thread, so they wait here.
class ClapReports final : public HostCallbacks {
public:
    ClapReports(const clap_host_t& host, int parameterCount);

    // Main thread.

    /// Hands over what waits for this thread.
    void deliver(const HostedPlugin& plugin, bool isActive);
    /// The host reads the latency.
    int tellLatency(const HostedPlugin& plugin);
    /// Audio is about to run. The last time at which the host may be told of another latency.
    void activated(const HostedPlugin& plugin);

    // The thread of the block.

    /// Hands over edits. What the host does not take waits on.
    VANTA_REALTIME void writeEdits(const clap_output_events_t* out);

    // HostCallbacks

    void parameterEdited(int index, Edit edit, float value) override;
    void endEdits() override { raise(kValues); }
    void stateRestored() override;
    void stateChanged() override { raise(kState); }
    void latencyChanged() override { raise(kLatency); }
    void pumpRequested() override;

private:
    enum Due : unsigned { kValues = 1, kEdits = 2, kState = 4, kLatency = 8 };
    static constexpr int kUnknownLatency = -1;

    void raise(Due due);
    void reportLatency(const HostedPlugin& plugin);
    bool push(const clap_output_events_t& out, int index, Edit edit, float value);

    const clap_host_t& host_;
    const clap_host_params_t* params_;
    const clap_host_state_t* state_;
    const clap_host_latency_t* latency_;
    std::atomic<unsigned> due_{0};
    PendingEdits edits_;
    std::vector<bool> held_;               ///< whether the host is within a gesture; the thread of the block
    int hostLatency_ = kUnknownLatency;    ///< as it was told, or read
    int activeLatency_ = kUnknownLatency;  ///< when audio began to run
};

}  // namespace vanta
