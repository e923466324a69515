#include "host/jack/jack_transport.hpp"

namespace vanta {

HostTransport transportOf(jack_transport_state_t state, const jack_position_t& position) {
    HostTransport transport;
    transport.isRolling = state == JackTransportRolling;
    const bool isKnown = (position.valid & JackPositionBBT) && position.beats_per_minute > 0.0 &&
                         position.beat_type > 0.0f && position.ticks_per_beat > 0.0;
    if (!isKnown) return transport;
    const double beatsPerBar = static_cast<double>(position.beats_per_bar);
    double beats =
        (position.bar - 1) * beatsPerBar + (position.beat - 1) + position.tick / position.ticks_per_beat;
    // Bars and beats may be those of a moment before the cycle.
    if ((position.valid & JackBBTFrameOffset) && position.frame_rate > 0) {
        beats += position.bbt_offset * position.beats_per_minute / 60.0 / position.frame_rate;
    }
    const double quartersPerBeat = 4.0 / static_cast<double>(position.beat_type);
    transport.tempo = position.beats_per_minute * quartersPerBeat;
    transport.beats = beats * quartersPerBeat;
    return transport;
}

}  // namespace vanta
