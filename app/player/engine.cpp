#include "app/player/engine.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "foundation/failure.hpp"
#include "host/jack/midi_input.hpp"
#include "host/jack/port_names.hpp"

namespace vanta {

Engine::Engine(AudioFileReader& reader, ChannelLayout layout, std::string clientName)
    : clientName_(std::move(clientName)),
      sampleRate_(static_cast<double>(reader.info().samplerate)),
      player_(reader),
      plugin_(*this, layout),
      buffers_(static_cast<std::size_t>(player_.channelCount()), std::vector<float>(kLargestBlock)) {
    plugin_.activate(sampleRate_, kLargestBlock);
}

Engine::~Engine() {
    // A connection that the server has ended is not ours to close: JACK's library would ask the server.
    if (serverHasGone_.load()) static_cast<void>(jack_.release());
    jack_.reset();
    quit_.store(true);
    if (clock_.joinable()) clock_.join();
}

std::string Engine::start(bool useJack) {
    if (useJack && startJack()) return fmt::format("JACK, as {}", jack_get_client_name(jack_.get()));
    startClock();
    return "nobody, at the pace of a clock";
}

void Engine::startClock() {
    clock_ = std::thread([this] { runClock(); });
}

void Engine::keepPlaying() {
    if (!serverHasGone_.exchange(false)) return;
    static_cast<void>(jack_.release());
    startClock();
}

bool Engine::startJack() {
    try {
        jack_ = openJack({.clientName = clientName_});
    } catch (const Failure&) {
        return false;
    }
    if (jack_get_sample_rate(jack_.get()) != static_cast<jack_nframes_t>(sampleRate_)) {
        jack_.reset();
        return false;
    }
    for (const std::string_view speaker : portSpeakers(plugin_.layout()))
        ports_.push_back(jack_port_register(jack_.get(), fmt::format("out_{}", speaker).c_str(),
                                            JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput | JackPortIsTerminal,
                                            0));
    // Controllers can be learned while the file plays.
    midi_ = jack_port_register(jack_.get(), "midi_in", JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
    jack_set_process_callback(
        jack_.get(),
        [](jack_nframes_t frames, void* engine) {
            Engine& self = *static_cast<Engine*>(engine);
            std::array<float*, kMaxChannels> outputs{};
            for (std::size_t i = 0; i < self.ports_.size(); ++i)
                outputs[i] = static_cast<float*>(jack_port_get_buffer(self.ports_[i], frames));
            MidiInput midi(jack_port_get_buffer(self.midi_, frames));
            self.play({outputs.data(), self.ports_.size()}, static_cast<int>(frames), midi);
            return 0;
        },
        this);
    jack_on_shutdown(
        jack_.get(), [](void* engine) { static_cast<Engine*>(engine)->serverHasGone_.store(true); }, this);
    if (!midi_ || std::ranges::count(ports_, nullptr) > 0 || jack_activate(jack_.get()) != 0) {
        jack_.reset();
        return false;
    }
    const char** const speakers =
        jack_get_ports(jack_.get(), nullptr, JACK_DEFAULT_AUDIO_TYPE, JackPortIsPhysical | JackPortIsInput);
    for (std::size_t i = 0; speakers && i < ports_.size() && speakers[i]; ++i)
        jack_connect(jack_.get(), jack_port_name(ports_[i]), speakers[i]);
    jack_free(speakers);
    return true;
}

/// Keeps to the time of the start, so that late wake-ups do not add up.
void Engine::runClock() {
    using Clock = std::chrono::steady_clock;
    std::array<float*, kMaxChannels> outputs{};
    for (std::size_t i = 0; i < buffers_.size(); ++i) outputs[i] = buffers_[i].data();
    const auto start = Clock::now();
    std::int64_t played = 0;
    while (!quit_.load()) {
        // Silence need not be woken up for as often.
        const int block = paused_.load() ? kPausedBlock : kBlock;
        NoHostEvents events;
        play({outputs.data(), buffers_.size()}, block, events);
        played += block;
        std::this_thread::sleep_until(
            start + std::chrono::duration_cast<Clock::duration>(
                        std::chrono::duration<double>(static_cast<double>(played) / sampleRate_)));
    }
}

void Engine::play(std::span<float* const> outputs, int samples, HostEventSource& events) {
    if (paused_.load()) {
        for (float* output : outputs) std::fill_n(output, samples, 0.0f);
    } else {
        player_.play(outputs, samples);
    }
    std::array<const float*, kMaxChannels> inputs{};
    std::ranges::copy(outputs, inputs.begin());
    plugin_.process(
        {.inputs = {inputs.data(), outputs.size()}, .sideChain = {}, .outputs = outputs, .samples = samples},
        events);
}

}  // namespace vanta
