#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "audiofile/file_format.hpp"
#include "foundation/channel_layout.hpp"

namespace vanta {

/// Which channel of a file is which of a layout.
struct ChannelMapping {
    ChannelLayout layout = kStereoLayout;
    std::vector<int> fileChannel;  ///< of each channel of the layout
    std::vector<int> speakers;     ///< of each channel of the file, in libsndfile's numbers
    /// The file's own positions match no layout. They are kept, unless a layout was asked for, and as many as
    /// can be stand where the layout has them.
    bool positionsIgnored = false;
};

/// The layouts with that many channels: "5.1 or 6.0"; empty if there are none.
std::string layoutNames(int channels);
/// The usual layout of that many channels. Failure if there is none.
ChannelLayout usualLayout(int channels);

/// The speakers of a layout as files that name none order them, in libsndfile's numbers.
std::vector<int> standardSpeakers(ChannelLayout layout, SpeakerOrder order);
/// Whether these are the speakers that a file which names none has.
bool isUsualOrder(std::span<const int> speakers, SpeakerOrder order);
/// The same speakers in the order of another kind of file.
std::vector<int> sortSpeakers(std::vector<int> speakers, SpeakerOrder order);

/// Finds the layout of a file's channels by `positions`, its speakers in libsndfile's numbers, or without
/// these by the order of its type. Failure if the layout that was asked for has another number of channels.
ChannelMapping mapChannels(std::span<const int> positions, int channels, SpeakerOrder order,
                           std::optional<ChannelLayout> wanted);

/// The layout's channels in a file with these speakers: those of `mapping`, maybe in another order.
std::vector<int> fileOrder(const ChannelMapping& mapping, std::span<const int> speakers);

}  // namespace vanta
