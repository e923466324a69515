#pragma once

#include <string>

#include "host/lv2/lv2_control.hpp"
#include "host/lv2/lv2_layouts.hpp"
#include "host/lv2/lv2_ports.hpp"

namespace vanta {

/// The groups that the audio ports of a plug-in belong to.
struct Lv2PortGroups {
    explicit Lv2PortGroups(const Lv2Layout& layout);
    std::string input, sideChain, output;  ///< URIs
};

/// The group of a parameter's port.
std::string parameterGroupUri(const std::string& group);
std::string parameterGroupSymbol(const std::string& group);

/// A parameter at its port.
struct Lv2ControlDescription {
    Lv2Control control;
    float initial;  ///< at the port of a new instance
};

/// A port as a node of Turtle. `control` is that of a parameter's port, else null.
std::string describePort(std::size_t index, const Lv2Port& port, const Lv2ControlDescription* control,
                         const Lv2PortGroups& groups);

}  // namespace vanta
