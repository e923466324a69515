#pragma once

#include <lv2/core/lv2.h>

#include <atomic>
#include <memory>
#include <optional>
#include <vector>

#include "host/common/host_parameters.hpp"
#include "host/common/hosted_plugin.hpp"
#include "host/common/pending_edits.hpp"
#include "host/lv2/lv2_layouts.hpp"
#include "host/lv2/lv2_plugin_link.hpp"
#include "host/lv2/lv2_port_values.hpp"

namespace vanta {

/// What the audio side and the interfaces of an instance have in common. Whichever lives longest keeps it, as
/// hosts remove plug-ins whose interface is still open.
class Lv2Instance final : private HostCallbacks {
public:
    /// `takesRequests`: the host moves ports when it is asked to.
    Lv2Instance(const Lv2Layout& layout, bool takesRequests);

    HostedPlugin& plugin() { return plugin_; }
    const HostedPlugin& plugin() const { return plugin_; }
    const std::vector<HostParameter>& parameters() const { return parameters_; }
    Lv2PortValues& values() { return values_; }
    Lv2PluginLink& link() { return link_; }
    /// From here on a thread of ours pumps.
    void start() { plugin_.pumpByThread(); }
    /// A state is restored: what waits for the host is out of date.
    void forgetEdits();

    /// The host has removed the plug-in.
    void end() { isOver_.store(true); }
    bool isOver() const { return isOver_.load(); }

    // Audio thread.

    /// Calls `ask(index, own)` for each port that the host is to move.
    template <typename Ask>
    VANTA_REALTIME void takeRequests(Ask ask);
    /// Whether the session has changed since the last call.
    VANTA_REALTIME bool takeStateChange() { return stateChanged_.exchange(false); }

    // An interface in the same process, on its thread.

    /// While there is any, the host hears of edits through it, and not in a block.
    void attach() { interfaces_.fetch_add(1); }
    void detach();
    PendingEdits& interfaceEdits() { return interfaceEdits_; }

private:
    std::vector<Lv2Control> makeControls() const;

    void parameterEdited(int index, Edit edit, float value) override;
    void stateChanged() override { stateChanged_.store(true); }
    void latencyChanged() override {}
    void pumpRequested() override {}
    void controllerMoved(int number) override { link_.controllerMoved(number); }
    void pumpedByThread() override;

    // What the thread that pumps touches, which ends with the plug-in.
    std::optional<PendingEdits> requests_;  ///< on their way to a host that takes requests
    PendingEdits interfaceEdits_;
    std::atomic<int> interfaces_{0};
    std::atomic<bool> stateChanged_{false};
    std::atomic<bool> isOver_{false};
    Lv2PluginLink link_;
    HostedPlugin plugin_;
    const std::vector<HostParameter> parameters_;
    Lv2PortValues values_;
};

/// The instances of this process, by the handles that hosts have for them.
class Lv2Instances {
public:
    static void add(LV2_Handle handle, const std::shared_ptr<Lv2Instance>& instance);
    static void remove(LV2_Handle handle);
    /// Null for a handle that is none of ours, or not of this copy of the module.
    static std::shared_ptr<Lv2Instance> find(LV2_Handle handle);
};

template <typename Ask>
void Lv2Instance::takeRequests(Ask ask) {
    if (!requests_) return;
    requests_->take([&](int index, Edit edit, float value) {
        if (edit == Edit::Value) ask(index, value);
        return true;
    });
}

}  // namespace vanta
