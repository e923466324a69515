#pragma once

#include <jack/types.h>

#include "host/common/host_block.hpp"

namespace vanta {

/// Tempo and position in quarters, where bars and beats are known: JACK counts both in beats, which are
/// `beat_type`-th notes. Without them the transport is that of a host that has none.
VANTA_REALTIME HostTransport transportOf(jack_transport_state_t state, const jack_position_t& position);

}  // namespace vanta
