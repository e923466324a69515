#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace vanta {

/// Index into the table of channel layouts. Processors keep their channels in the table's order: the left and
/// right of each pair, then centres, then LFE.
using ChannelLayout = int;

inline constexpr int kChannelLayoutCount = 15;
inline constexpr int kMaxChannels = 10;

inline constexpr ChannelLayout kMonoLayout = 0;
inline constexpr ChannelLayout kStereoLayout = 1;

/// Parts of a channel type word.
inline constexpr int kAngleMask = 0xFF;  ///< degrees off centre
inline constexpr int kUnpairedChannel = 0x100;
inline constexpr int kLeftChannel = 0x200;
inline constexpr int kRightChannel = 0x400;
inline constexpr int kCenterChannel = 0x800;
inline constexpr int kLfeChannel = 0x1000;
inline constexpr int kHeightChannel = 0x2000;  ///< a height or wide pair

/// The layout itself. Throws std::invalid_argument if it is not in the table, as everything below does.
ChannelLayout checkedLayout(ChannelLayout layout);

/// The channel type words of a layout, one per channel.
std::span<const int> channelTypes(ChannelLayout layout);
inline int channelCount(ChannelLayout layout) {
    return static_cast<int>(channelTypes(layout).size());
}
/// The name that users know the layout by: "5.1", "7.1.2".
std::string_view channelLayoutName(ChannelLayout layout);
/// The layout of that name, without regard to case, blanks and hyphens.
std::optional<ChannelLayout> findLayout(std::string_view name);

/// The unpaired channels that stereo linking treats as centres and as LFE; they come last.
int linkedCenterCount(ChannelLayout layout);
int linkedLfeCount(ChannelLayout layout);

}  // namespace vanta
