#pragma once

#include <lv2/state/state.h>

#include "host/common/hosted_plugin.hpp"
#include "host/lv2/lv2_port_values.hpp"
#include "host/lv2/lv2_uris.hpp"

namespace vanta {

// A state is two properties: the bytes that an instance has in every format, and what its ports said. The
// second tells a port that a host has moved meanwhile from one that the instance had left behind.

/// Beside any other thread.
LV2_State_Status saveLv2State(HostedPlugin& plugin, const Lv2PortValues& ports, const Lv2Uris& uris,
                              LV2_State_Store_Function store, LV2_State_Handle handle);

/// What is not a state changes nothing. No state at all: every port counts.
LV2_State_Status restoreLv2State(HostedPlugin& plugin, Lv2PortValues& ports, const Lv2Uris& uris,
                                 LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle);

}  // namespace vanta
