#pragma once

#include <clap/plugin.h>

#include <atomic>
#include <optional>
#include <vector>

#include "host/clap/clap_gui.hpp"
#include "host/clap/clap_reports.hpp"
#include "host/common/embedded_view.hpp"
#include "host/common/host_parameters.hpp"
#include "host/common/hosted_plugin.hpp"
#include "host/common/speakers.hpp"

namespace vanta {

/// One instance as CLAP sees it. The extensions of the other files are tables of functions over this.
class ClapPlugin {
public:
    /// Calls nothing of the host yet; `host` and `views` outlive the instance.
    ClapPlugin(const clap_host_t& host, const EmbeddedViewFactory& views);
    ClapPlugin(const ClapPlugin&) = delete;
    ClapPlugin& operator=(const ClapPlugin&) = delete;

    const clap_plugin_t* handle() const { return &handle_; }
    static ClapPlugin* of(const clap_plugin_t* handle);
    /// Everything below but `initialise` needs it.
    bool isInitialised() const { return parts_.has_value(); }

    // Main thread.

    bool initialise();
    bool activate(double sampleRate, std::uint32_t largestBlock);
    void deactivate();
    /// Changes the layout while not active. Closes the window, which shows another layout.
    bool selectLayout(ChannelLayout layout);
    void onMainThread();
    bool setRenderMode(std::int32_t mode);
    std::uint32_t tellLatency();

    // Any thread.

    const void* extension(const char* id) const;
    HostedPlugin& hosted() { return parts_->hosted; }
    const std::vector<HostParameter>& parameters() const { return parts_->parameters; }
    ClapGui& gui() { return parts_->gui; }
    bool isActive() const { return isActive_.load(); }

    // Audio thread.

    VANTA_REALTIME clap_process_status process(const clap_process_t& process);
    /// On the main thread while not active.
    VANTA_REALTIME void flush(const clap_input_events_t* in, const clap_output_events_t* out);
    VANTA_REALTIME void reset();

private:
    /// What needs the host, which may not be called before it says so.
    struct Parts {
        Parts(const clap_host_t& host, const EmbeddedViewFactory& views);
        ClapReports reports;
        HostedPlugin hosted;
        std::vector<HostParameter> parameters;
        ClapGui gui;
        ChannelMap map;
    };

    clap_plugin_t handle_;
    const clap_host_t& host_;
    const EmbeddedViewFactory& views_;
    std::optional<Parts> parts_;
    std::atomic<bool> isActive_{false};
    std::atomic<bool> isOffline_{false};
};

/// Calls `what(plugin)` for a function of an extension. Nothing that is thrown reaches the host: it hears
/// `failed`, as it does when it is too early to ask.
template <typename Result, typename What>
Result answer(const clap_plugin_t* handle, Result failed, What what) noexcept {
    ClapPlugin* plugin = ClapPlugin::of(handle);
    if (!plugin || !plugin->isInitialised()) return failed;
    try {
        return what(*plugin);
    } catch (...) {
        return failed;
    }
}

}  // namespace vanta
