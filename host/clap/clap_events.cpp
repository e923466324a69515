#include "host/clap/clap_events.hpp"

#include <clap/fixedpoint.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace vanta {
namespace {

constexpr auto kLastOffset = static_cast<std::uint32_t>(std::numeric_limits<int>::max());

/// Null if the host has cut the event short.
template <typename Event>
const Event* as(const clap_event_header_t& header) {
    // The header is the first member of every event.
    return header.size >= sizeof(Event) ? reinterpret_cast<const Event*>(&header) : nullptr;
}

bool takeValue(const clap_event_header_t& header, HostEvent& event) {
    const auto* value = as<clap_event_param_value_t>(header);
    if (!value || value->param_id > kLastOffset) return false;
    event.kind = HostEvent::Kind::Value;
    event.index = static_cast<int>(value->param_id);
    event.value = value->value;
    return true;
}

bool takeMidi(const clap_event_header_t& header, HostEvent& event) {
    const auto* midi = as<clap_event_midi_t>(header);
    if (!midi || midi->port_index != 0) return false;
    event.kind = HostEvent::Kind::Midi;
    event.midi = {midi->data[0], midi->data[1], midi->data[2]};
    return true;
}

bool takeTransport(const clap_event_header_t& header, HostEvent& event) {
    const auto* transport = as<clap_event_transport_t>(header);
    if (!transport) return false;
    event.kind = HostEvent::Kind::Transport;
    event.transport = transportOf(transport);
    return true;
}

bool take(const clap_event_header_t& header, HostEvent& event) {
    if (header.space_id != CLAP_CORE_EVENT_SPACE_ID) return false;
    switch (header.type) {
        case CLAP_EVENT_PARAM_VALUE:
            return takeValue(header, event);
        case CLAP_EVENT_MIDI:
            return takeMidi(header, event);
        case CLAP_EVENT_TRANSPORT:
            return takeTransport(header, event);
        default:
            return false;
    }
}

}  // namespace

HostTransport transportOf(const clap_event_transport_t* event) {
    HostTransport transport;
    if (!event) return transport;
    if ((event->flags & CLAP_TRANSPORT_HAS_TEMPO) && std::isfinite(event->tempo) && event->tempo > 0.0) {
        transport.tempo = event->tempo;
    }
    if (event->flags & CLAP_TRANSPORT_HAS_BEATS_TIMELINE) {
        transport.beats =
            static_cast<double>(event->song_pos_beats) / static_cast<double>(CLAP_BEATTIME_FACTOR);
    }
    transport.isRolling = (event->flags & CLAP_TRANSPORT_IS_PLAYING) != 0;
    return transport;
}

ClapEvents::ClapEvents(const clap_input_events_t* events) : events_(events) {
    if (events_ && events_->size && events_->get) count_ = events_->size(events_);
}

bool ClapEvents::next(HostEvent& event) {
    while (next_ < count_) {
        const clap_event_header_t* header = events_->get(events_, next_++);
        if (!header || !take(*header, event)) continue;
        event.offset = static_cast<int>(std::min(header->time, kLastOffset));
        return true;
    }
    return false;
}

}  // namespace vanta
