#pragma once

#include <array>
#include <atomic>
#include <optional>
#include <string>

#include "host/common/hosted_plugin.hpp"
#include "host/jack/jack_ports.hpp"
#include "host/jack/jack_server.hpp"
#include "host/jack/render_gate.hpp"

namespace vanta {

/// A limiter as a client of a JACK server. The thread that makes it is its main thread: it calls all that is
/// below, and `pump` a hundred times a second.
class JackClient final : private HostCallbacks {
public:
    /// The limiter alone, to be set up before `open`. With `sideChain` there are ports for one; it is in use
    /// while any of them is connected.
    JackClient(ChannelLayout layout, bool sideChain);
    /// Leaves the server, and with that all connections.
    ~JackClient() override;

    HostedPlugin& plugin() { return plugin_; }

    /// Opens and activates the client. Failure if there is no server or it has another rate than we can.
    void open(const JackServer& server);

    // After `open`.

    jack_client_t& jack() const { return *jack_; }
    const JackPorts& ports() const { return *ports_; }
    /// As the server calls it.
    std::string name() const { return jack_get_client_name(jack_.get()); }

    /// Does what waits for the main thread. True if JACK has now been told of another latency, as also comes
    /// with another sample rate. Failure if the server has changed to a rate that we cannot.
    bool pump();
    /// Why the server has gone; nothing while it is there. All but `plugin` and this is over then.
    std::optional<std::string> whyServerHasGone() const;
    /// Cycles that came too late for the sound card, of whatever client, but for freewheeling ones.
    int xruns() const { return xruns_.load(); }
    bool isFreewheeling() const { return isFreewheeling_.load(); }

private:
    void registerCallbacks();
    void followSampleRate();
    VANTA_REALTIME void process(jack_nframes_t frames);
    void serverHasGone(const char* reason);

    // There is nobody to tell of values: JACK knows none.
    void parameterEdited(int, Edit, float) override {}
    void latencyChanged() override { latencyChanged_.store(true); }
    void pumpRequested() override {}  // it pumps all the time

    /// A latency is told when nothing has changed for so long: all notices of a new sample rate have come by
    /// then, and a knob that is turned does not keep the server busy.
    static constexpr int kPumpsUntilTold = 20;
    /// What is announced to the limiter: no server has larger buffers.
    static constexpr int kLargestBuffer = 8192;

    HostedPlugin plugin_;
    const bool hasSideChain_;
    std::optional<JackPorts> ports_;
    RenderGate gate_;
    int pumpsUntilTold_ = 0;

    // Marks that JACK's threads leave for the main thread, or it for them.
    std::atomic<jack_nframes_t> serverRate_{0};
    std::atomic<jack_nframes_t> ourRate_{0};
    std::atomic<bool> connectionsChanged_{true};
    std::atomic<bool> latencyChanged_{false};
    std::atomic<bool> isSideChainInUse_{false};
    std::atomic<bool> isFreewheeling_{false};
    std::atomic<int> xruns_{0};
    std::atomic<bool> serverHasGone_{false};
    std::array<char, 256> whyServerHasGone_{};

    /// Last, so that nothing above is gone while JACK's threads still run.
    JackConnection jack_;
};

}  // namespace vanta
