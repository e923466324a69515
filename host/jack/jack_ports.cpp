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
    forgetWhatWasTold();
    if (sideChain) sideChain_ = audioPorts(client, "side", layout, JackPortIsInput);
}

bool JackPorts::isSideChainConnected() const {
    return std::ranges::any_of(sideChain_, [](jack_port_t* port) { return jack_port_connected(port) > 0; });
}

void JackPorts::answerLatency(jack_latency_callback_mode_t mode, int samples) {
    jack_latency_range_t all{~jack_nframes_t{0}, 0};
    for (std::size_t i = 0; i < outputs_.size(); ++i) {
        const bool isCapture = mode == JackCaptureLatency;
        const jack_latency_range_t range =
            later(latencyOf(isCapture ? inputs_[i] : outputs_[i], mode), samples);
        if (isCapture) {
            tell(outputs_[i], mode, range, toldOutputs_[i]);
        } else {
            tell(inputs_[i], mode, range, toldInputs_[i]);
            // A side chain is meant to meet what enters at the same time.
            if (i < sideChain_.size()) tell(sideChain_[i], mode, range, toldSideChain_[i]);
        }
        all = {std::min(all.min, range.min), std::max(all.max, range.max)};
    }
    if (mode == JackPlaybackLatency) tell(midi_, mode, all, toldMidi_);
}

void JackPorts::tellLatency(int samples) {
    forgetWhatWasTold();
    for (const auto mode : {JackCaptureLatency, JackPlaybackLatency}) answerLatency(mode, samples);
}

void JackPorts::tell(jack_port_t* port, jack_latency_callback_mode_t mode, jack_latency_range_t range,
                     std::atomic<std::uint64_t>& told) {
    const std::uint64_t both = std::uint64_t{range.max} << 32 | range.min;
    if (told.exchange(both) != both) jack_port_set_latency_range(port, mode, &range);
}

void JackPorts::forgetWhatWasTold() {
    constexpr std::uint64_t kNothing = ~std::uint64_t{0};
    for (Told* const group : {&toldInputs_, &toldSideChain_, &toldOutputs_}) {
        for (auto& told : *group) told.store(kNothing);
    }
    toldMidi_.store(kNothing);
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
