#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "foundation/channel_layout.hpp"

namespace vanta {

/// Where a channel is heard. Formats have names and numbers of their own for these.
enum class Speaker {
    Mono,
    Left,
    Right,
    LeftOfCenter,
    RightOfCenter,
    Center,
    Lfe,
    SideLeft,  ///< at 90 degrees
    SideRight,
    SurroundLeft,  ///< at 110 degrees, where there is one pair behind the front
    SurroundRight,
    RearLeft,  ///< at 135 degrees
    RearRight,
    RearCenter,
    TopLeft,
    TopRight,
};

/// The speakers of a layout, in the order of its channels.
std::span<const Speaker> speakersOf(ChannelLayout layout);

/// Which of the host's channels each channel of a layout is.
struct ChannelMap {
    std::array<int, kMaxChannels> hostChannel{};
    int count = 0;
};

/// The map for a host that keeps its channels in rising order of a number that each speaker has.
ChannelMap mapByNumber(ChannelLayout layout, int (*numberOf)(Speaker));

/// The layout whose speakers, as bits `1 << numberOf(speaker)`, make up a mask.
std::uint64_t speakerMask(ChannelLayout layout, int (*numberOf)(Speaker));
std::optional<ChannelLayout> layoutOfMask(std::uint64_t mask, int (*numberOf)(Speaker));

}  // namespace vanta
