#pragma once

#include <string_view>
#include <vector>

#include "host/common/speakers.hpp"

namespace vanta {

/// Which port each channel of a layout has. Ports stand in the order of WAVE files: left, right, centre, LFE,
/// what is behind, above.
ChannelMap portOrder(ChannelLayout layout);

/// "L", "R", "LFE": what the names of the ports end in, in their order.
std::vector<std::string_view> portSpeakers(ChannelLayout layout);

}  // namespace vanta
