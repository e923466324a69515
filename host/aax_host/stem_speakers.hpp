#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/channel_layout.hpp"
#include "host/aax/standin/aax.hpp"

namespace vanta {

// The stem formats as this host knows them, told by their speakers: what a plug-in makes of them is its own
// affair.

AAX_EStemFormat stemFormatOf(ChannelLayout layout);
std::optional<ChannelLayout> layoutOfStemFormat(AAX_EStemFormat stem);
/// The speakers in the order of the host's channels: "L C R Ls Rs LFE".
std::string stemSpeakers(AAX_EStemFormat stem);
/// The host's channel of each channel of the layout.
std::vector<std::size_t> stemChannels(ChannelLayout layout);

}  // namespace vanta
