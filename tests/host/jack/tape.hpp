#pragma once

#include <jack/jack.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "host/jack/jack_server.hpp"
#include "plugin/midi/midi_message.hpp"
#include "tests/support/signals.hpp"

namespace vanta::test {

/// Plays to ports of another client, and records what others put out in the same cycles. Two clients, as one
/// would stand in a loop with what it plays to, where a server delays by a buffer.
class Tape {
public:
    struct Midi {
        std::size_t sample;
        MidiMessage message;
    };

    Tape(const std::vector<std::string>& playTo, const std::string& midiTo,
         const std::vector<std::string>& recordFrom);

    /// Plays a signal to each port while the server freewheels, and returns what comes out meanwhile, from
    /// the first sample played. `idle` is called while it waits. std::runtime_error if the server takes too
    /// long.
    std::vector<Signal> run(std::vector<Signal> signals, std::vector<Midi> midi,
                            const std::function<void()>& idle);

    jack_client_t& jack() { return *recorder_; }

private:
    void play(jack_nframes_t frames);
    void record(jack_nframes_t frames);

    std::vector<jack_port_t*> out_;
    jack_port_t* midiOut_ = nullptr;
    std::vector<jack_port_t*> in_;

    std::vector<Signal> played_;
    std::vector<Midi> midi_;
    std::vector<Signal> recorded_;
    std::size_t playedCount_ = 0;
    std::size_t recordedCount_ = 0;
    std::atomic<bool> mayPlay_{false};
    std::atomic<bool> plays_{false};
    std::atomic<bool> isDone_{false};

    JackConnection player_;
    JackConnection recorder_;
};

}  // namespace vanta::test
