#pragma once

#include <jack/jack.h>

#include <span>
#include <string>

namespace vanta {

/// What people call the physical ports of a server.
inline constexpr const char* kPhysicalPorts = "system";

// On the main thread, while the client is active. People name a port ("ardour:out_1"), a client for all its
// ports of the right kind, or kPhysicalPorts; commas may part several. Names meet our ports in order; what is
// left over on either side stays as it is. Failure for a name that means nothing, with what there is.

void connectPorts(jack_client_t& client, std::span<jack_port_t* const> ours,
                  std::span<const std::string> named);
/// Each name may have ports for both sides, or for one of them: a sound card need not have inputs.
void connectBothWays(jack_client_t& client, std::span<jack_port_t* const> inputs,
                     std::span<jack_port_t* const> outputs, std::span<const std::string> named);

}  // namespace vanta
