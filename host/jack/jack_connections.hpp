#pragma once

#include <jack/jack.h>

#include <span>
#include <string>

namespace vanta {

/// What people call the physical ports of a server.
inline constexpr const char* kPhysicalPorts = "system";

/// Connects ports of ours, in their order, with what `named` says in its order: a port ("ardour:out_1"), a
/// client for all its ports of the right kind, or kPhysicalPorts; commas may part several. What is left over
/// on either side stays as it is. Failure if there is no such port, with what there is. Active clients only;
/// the main thread.
void connectPorts(jack_client_t& client, std::span<jack_port_t* const> ours,
                  std::span<const std::string> named);

}  // namespace vanta
