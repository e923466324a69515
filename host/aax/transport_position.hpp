#pragma once

#include "foundation/realtime.hpp"
#include "host/aax/standin/aax.hpp"

namespace vanta {

/// Where a transport stands, or what counts where there is none or it does not answer.
struct TransportPosition {
    double tempo = 120.0;  ///< beats per minute
    double beats = 0.0;    ///< quarters since the start
};

VANTA_REALTIME double tempoOf(const AAX_ITransport* transport);
VANTA_REALTIME TransportPosition positionOf(const AAX_ITransport* transport);

}  // namespace vanta
