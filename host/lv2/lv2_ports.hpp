#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "foundation/channel_layout.hpp"
#include "host/common/host_parameters.hpp"

namespace vanta {

/// What a port is for.
enum class Lv2PortKind {
    Parameter,
    Latency,       ///< control output, samples
    FreeWheeling,  ///< control input: faster or slower than real time
    Events,        ///< atom input: MIDI and the transport
    Notify,        ///< atom output: the state has changed
    Input,
    SideChain,  ///< may be left unconnected
    Output,
};

struct Lv2Port {
    Lv2PortKind kind;
    std::size_t item;  ///< the index of the parameter, or the channel's place in the layout
    std::string symbol;
    std::string name;
    std::string designation;  ///< a URI, or empty
};

/// The ports of a plug-in in the order of their indexes: a parameter's port has the parameter's index. What
/// hosts read of them and what the plug-in does with them both come from here.
std::vector<Lv2Port> lv2Ports(ChannelLayout layout, const std::vector<HostParameter>& parameters);

}  // namespace vanta
