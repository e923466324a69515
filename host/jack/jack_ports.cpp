#include "host/jack/jack_ports.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "foundation/failure.hpp"
#include "host/jack/port_names.hpp"

namespace vanta {
namespace {

jack_port_t* registered(jack_client_t& client, const std::string& name, const char* type,
                        JackPortFlags flags) {
    jack_port_t* const port = jack_port_register(&client, name.c_str(), type, flags, 0);
    if (!port)
        throw Failure(fmt::format("the JACK server has no room for port {}: start it with more ports", name));
    return port;
}

JackPorts::Ports audioPorts(jack_client_t& client, std::string_view prefix, ChannelLayout layout,
                            JackPortFlags flags) {
    JackPorts::Ports ports;
    for (const std::string_view speaker : portSpeakers(layout)) {
        const std::string name = fmt::format("{}_{}", prefix, speaker);
        ports.push_back(registered(client, name, JACK_DEFAULT_AUDIO_TYPE, flags));
    }
    return ports;
}

jack_latency_range_t latencyOf(jack_port_t* port, jack_latency_callback_mode_t mode) {
    jack_latency_range_t range{};
    jack_port_get_latency_range(port, mode, &range);
    return range;
}

jack_latency_range_t later(jack_latency_range_t range, int samples) {
    const auto added = static_cast<jack_nframes_t>(samples);
    return {range.min + added, range.max + added};
}

}  // namespace

JackPorts::JackPorts(jack_client_t& client, ChannelLayout layout, bool sideChain)
    : inputs_(audioPorts(client, "in", layout, JackPortIsInput)),
      outputs_(audioPorts(client, "out", layout, JackPortIsOutput)),
      midi_(registered(client, "midi_in", JACK_DEFAULT_MIDI_TYPE, JackPortIsInput)),
      map_(portOrder(layout)) {
    if (sideChain) sideChain_ = audioPorts(client, "side", layout, JackPortIsInput);
}

bool JackPorts::isSideChainConnected() const {
    return std::ranges::any_of(sideChain_, [](jack_port_t* port) { return jack_port_connected(port) > 0; });
}

void JackPorts::tellLatency(jack_latency_callback_mode_t mode, int samples) const {
    jack_latency_range_t all{~jack_nframes_t{0}, 0};
    for (std::size_t i = 0; i < outputs_.size(); ++i) {
        const bool isCapture = mode == JackCaptureLatency;
        jack_latency_range_t range = later(latencyOf(isCapture ? inputs_[i] : outputs_[i], mode), samples);
        jack_port_set_latency_range(isCapture ? outputs_[i] : inputs_[i], mode, &range);
        // A side chain is meant to meet what enters at the same time.
        if (!isCapture && i < sideChain_.size()) jack_port_set_latency_range(sideChain_[i], mode, &range);
        all = {std::min(all.min, range.min), std::max(all.max, range.max)};
    }
    if (mode == JackPlaybackLatency) jack_port_set_latency_range(midi_, mode, &all);
}

HostBlock JackPorts::block(jack_nframes_t frames, bool sideChain) {
    const auto bufferOf = [frames](jack_port_t* port) {
        return static_cast<float*>(jack_port_get_buffer(port, frames));
    };
    const auto count = static_cast<std::size_t>(map_.count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto port = static_cast<std::size_t>(map_.hostChannel[i]);
        inputBuffers_[i] = bufferOf(inputs_[port]);
        outputBuffers_[i] = bufferOf(outputs_[port]);
        if (sideChain) sideChainBuffers_[i] = bufferOf(sideChain_[port]);
    }
    return {.inputs = std::span(inputBuffers_).first(count),
            .sideChain = std::span(sideChainBuffers_).first(sideChain ? count : 0),
            .outputs = std::span(outputBuffers_).first(count),
            .samples = static_cast<int>(frames)};
}

}  // namespace vanta
