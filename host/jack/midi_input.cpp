#include "host/jack/midi_input.hpp"

#include <jack/midiport.h>

namespace vanta {

MidiInput::MidiInput(void* buffer) : buffer_(buffer), count_(jack_midi_get_event_count(buffer)) {}

bool MidiInput::next(HostEvent& event) {
    while (next_ < count_) {
        jack_midi_event_t message;
        if (jack_midi_event_get(&message, buffer_, next_++) != 0) continue;
        const bool isChannelMessage =
            message.size >= 2 && message.size <= 3 && message.buffer[0] >= 0x80 && message.buffer[0] < 0xF0;
        if (!isChannelMessage) continue;
        const std::uint8_t data2 = message.size == 3 ? message.buffer[2] : std::uint8_t{0};
        event = {.offset = static_cast<int>(message.time),
                 .kind = HostEvent::Kind::Midi,
                 .midi = {message.buffer[0], message.buffer[1], data2}};
        return true;
    }
    return false;
}

}  // namespace vanta
