#pragma once

#include <optional>
#include <span>

#include "foundation/channel_layout.hpp"
#include "host/aax/standin/aax.hpp"

namespace vanta {

/// How the host knows a layout.
AAX_EStemFormat stemOf(ChannelLayout layout);
std::optional<ChannelLayout> layoutOfStem(AAX_EStemFormat stem);
/// Stands for the layout in identifiers.
char stemCharacter(ChannelLayout layout);
/// The host's channel of each channel of the layout.
std::span<const int> hostChannelsOf(ChannelLayout layout);

}  // namespace vanta
