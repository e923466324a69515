#pragma once

#include <clap/events.h>

#include <cstdint>

#include "host/common/host_block.hpp"

namespace vanta {

/// Free running if there is none.
VANTA_REALTIME HostTransport transportOf(const clap_event_transport_t* event);

/// The events of a CLAP host that concern us, in its order. What is unknown, too short or not for us is
/// passed over.
class ClapEvents final : public HostEventSource {
public:
    /// Null for none.
    explicit ClapEvents(const clap_input_events_t* events);
    bool next(HostEvent& event) override;

private:
    const clap_input_events_t* events_;
    std::uint32_t count_ = 0;
    std::uint32_t next_ = 0;
};

}  // namespace vanta
