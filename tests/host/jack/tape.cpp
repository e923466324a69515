#include "tests/host/jack/tape.hpp"

#include <jack/midiport.h>

#include <algorithm>
#include <stdexcept>

#include "tests/host/jack/child_process.hpp"

namespace vanta::test {
namespace {

void require(bool isSo, const char* what) {
    if (!isSo) throw std::runtime_error(what);
}

}  // namespace

Tape::Tape(const std::vector<std::string>& playTo, const std::string& midiTo,
           const std::vector<std::string>& recordFrom)
    : player_(openJack({.clientName = "player"})), recorder_(openJack({.clientName = "recorder"})) {
    const auto port = [](jack_client_t* client, const std::string& name, const char* type,
                         JackPortFlags flags) {
        return jack_port_register(client, name.c_str(), type, flags, 0);
    };
    for (const std::string& name : playTo)
        out_.push_back(port(player_.get(), "to " + name, JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput));
    for (const std::string& name : recordFrom)
        in_.push_back(port(recorder_.get(), "from " + name, JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput));
    midiOut_ = port(player_.get(), "midi", JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput);
    jack_set_process_callback(
        player_.get(),
        [](jack_nframes_t frames, void* tape) { return static_cast<Tape*>(tape)->play(frames), 0; }, this);
    jack_set_process_callback(
        recorder_.get(),
        [](jack_nframes_t frames, void* tape) { return static_cast<Tape*>(tape)->record(frames), 0; }, this);
    require(jack_activate(player_.get()) == 0 && jack_activate(recorder_.get()) == 0,
            "clients are not activated");
    for (std::size_t i = 0; i < out_.size(); ++i)
        require(jack_connect(player_.get(), jack_port_name(out_[i]), playTo[i].c_str()) == 0,
                playTo[i].c_str());
    for (std::size_t i = 0; i < in_.size(); ++i)
        require(jack_connect(recorder_.get(), recordFrom[i].c_str(), jack_port_name(in_[i])) == 0,
                recordFrom[i].c_str());
    require(jack_connect(player_.get(), jack_port_name(midiOut_), midiTo.c_str()) == 0, midiTo.c_str());
}

std::vector<Signal> Tape::run(std::vector<Signal> signals, std::vector<Midi> midi,
                              const std::function<void()>& idle) {
    recorded_.assign(in_.size(), Signal(signals.front().size()));
    played_ = std::move(signals);
    midi_ = std::move(midi);
    require(jack_set_freewheel(player_.get(), 1) == 0, "the server does not freewheel");
    mayPlay_.store(true);
    const bool isDone = within(std::chrono::seconds(60), [&] { return idle(), isDone_.load(); });
    jack_set_freewheel(player_.get(), 0);
    require(isDone, "the server does not get through");
    return recorded_;
}

void Tape::play(jack_nframes_t frames) {
    void* const events = jack_port_get_buffer(midiOut_, frames);
    jack_midi_clear_buffer(events);
    if (mayPlay_.load()) plays_.store(true);
    const std::size_t length = plays_.load() ? played_.front().size() - playedCount_ : 0;
    const std::size_t count = std::min<std::size_t>(length, frames);
    for (std::size_t i = 0; i < out_.size(); ++i) {
        auto* const buffer = static_cast<float*>(jack_port_get_buffer(out_[i], frames));
        std::fill_n(buffer, frames, 0.0f);
        if (count > 0)
            std::copy_n(played_[i].begin() + static_cast<std::ptrdiff_t>(playedCount_), count, buffer);
    }
    for (const Midi& event : midi_) {
        if (event.sample < playedCount_ || event.sample >= playedCount_ + count) continue;
        const jack_midi_data_t bytes[] = {event.message.status, event.message.data1, event.message.data2};
        jack_midi_event_write(events, static_cast<jack_nframes_t>(event.sample - playedCount_), bytes, 3);
    }
    playedCount_ += count;
}

void Tape::record(jack_nframes_t frames) {
    // The player has had its turn in this cycle.
    if (!plays_.load() || isDone_.load()) return;
    const std::size_t count = std::min<std::size_t>(recorded_.front().size() - recordedCount_, frames);
    for (std::size_t i = 0; i < in_.size(); ++i) {
        const auto* const buffer = static_cast<const float*>(jack_port_get_buffer(in_[i], frames));
        std::copy_n(buffer, count, recorded_[i].begin() + static_cast<std::ptrdiff_t>(recordedCount_));
    }
    recordedCount_ += count;
    if (recordedCount_ == recorded_.front().size()) isDone_.store(true);
}

}  // namespace vanta::test
