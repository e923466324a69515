#include "host/jack/jack_client.hpp"

#include <fmt/format.h>
#include <jack/jack.h>

#include <algorithm>

#include "foundation/failure.hpp"
#include "host/jack/jack_transport.hpp"
#include "host/jack/midi_input.hpp"

namespace vanta {
namespace {

JackClient& self(void* client) {
    return *static_cast<JackClient*>(client);
}

}  // namespace

JackClient::JackClient(ChannelLayout layout, bool sideChain)
    : plugin_(*this, layout), hasSideChain_(sideChain) {}

JackClient::~JackClient() {
    // A connection that the server has ended is not ours to close: JACK's library would ask the server.
    if (serverHasGone_.load()) static_cast<void>(jack_.release());
}

void JackClient::open(const JackServer& server) {
    jack_ = openJack(server);
    serverRate_.store(jack_get_sample_rate(jack_.get()));
    followSampleRate();
    ports_.emplace(*jack_, plugin_.layout(), hasSideChain_);
    registerCallbacks();
    if (jack_activate(jack_.get()) != 0) throw Failure("the JACK server does not let the client run");
    // It asks for latency by itself when a client begins.
    latencyChanged_.store(false);
}

void JackClient::registerCallbacks() {
    jack_client_t* const jack = jack_.get();
    jack_set_process_callback(
        jack,
        [](jack_nframes_t frames, void* client) {
            try {
                self(client).process(frames);
                return 0;
            } catch (...) {
                return 1;  // no memory for another oversampling: the server lets the client go, and says so
            }
        },
        this);
    jack_set_sample_rate_callback(
        jack, [](jack_nframes_t rate, void* client) { return self(client).serverRate_.store(rate), 0; },
        this);
    // Blocks may have any size, but the neighbours' latency changes with it, and JACK does not ask by itself.
    jack_set_buffer_size_callback(
        jack, [](jack_nframes_t, void* client) { return self(client).latencyChanged(), 0; }, this);
    jack_set_latency_callback(
        jack,
        [](jack_latency_callback_mode_t mode, void* client) {
            self(client).ports_->answerLatency(mode, self(client).plugin_.latency());
        },
        this);
    jack_set_port_connect_callback(
        jack,
        [](jack_port_id_t, jack_port_id_t, int, void* client) {
            self(client).connectionsChanged_.store(true);
        },
        this);
    jack_set_freewheel_callback(
        jack, [](int starts, void* client) { self(client).isFreewheeling_.store(starts != 0); }, this);
    jack_set_xrun_callback(
        jack,
        [](void* client) {
            if (!self(client).isFreewheeling()) self(client).xruns_.fetch_add(1);
            return 0;
        },
        this);
    // PipeWire's JACK calls the plain one alone in some versions, and JACK the other if it has both.
    jack_on_shutdown(
        jack, [](void* client) { self(client).serverHasGone("it closed the connection"); }, this);
    jack_on_info_shutdown(
        jack, [](jack_status_t, const char* reason, void* client) { self(client).serverHasGone(reason); },
        this);
}

// The main thread

bool JackClient::pump() {
    if (serverHasGone_.load()) return false;
    followSampleRate();
    plugin_.pump();
    // JACK takes a lock for this, so the audio thread cannot ask.
    if (connectionsChanged_.exchange(false)) isSideChainInUse_.store(ports_->isSideChainConnected());
    if (latencyChanged_.exchange(false)) pumpsUntilTold_ = kPumpsUntilTold;
    if (pumpsUntilTold_ == 0 || --pumpsUntilTold_ > 0) return false;
    ports_->tellLatency(plugin_.latency());
    jack_recompute_total_latencies(jack_.get());
    return true;
}

void JackClient::followSampleRate() {
    const jack_nframes_t rate = serverRate_.load();
    if (rate == ourRate_.load()) return;
    gate_.close();
    const bool isSupported = plugin_.activate(rate, kLargestBuffer);
    gate_.open();
    if (!isSupported)
        throw Failure(fmt::format("the JACK server runs at {} Hz: use {} to {} Hz", rate,
                                  HostedPlugin::kLowestRate, HostedPlugin::kHighestRate));
    ourRate_.store(rate);
    latencyChanged_.store(true);
}

std::optional<std::string> JackClient::whyServerHasGone() const {
    if (!serverHasGone_.load()) return {};
    return std::string(whyServerHasGone_.data());
}

// JACK's threads

void JackClient::serverHasGone(const char* reason) {
    // Like a signal handler: nothing but memory of our own.
    if (reason)
        std::copy_n(reason, std::min(std::string_view(reason).size(), whyServerHasGone_.size() - 1),
                    whyServerHasGone_.begin());
    serverHasGone_.store(true);
}

void JackClient::process(jack_nframes_t frames) {
    const RealtimeScope realtime;
    HostBlock block = ports_->block(frames, isSideChainInUse_.load());
    MidiInput midi(jack_port_get_buffer(ports_->midi(), frames));
    jack_position_t position;
    block.transport = transportOf(jack_transport_query(jack_.get(), &position), position);
    if (serverRate_.load() == ourRate_.load() && gate_.enter()) {
        plugin_.process(block, midi);
        gate_.leave();
    } else {
        for (float* const output : block.outputs) std::fill_n(output, block.samples, 0.0f);
    }
}

}  // namespace vanta
