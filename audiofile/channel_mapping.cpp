#include "audiofile/channel_mapping.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <sndfile.h>

#include <algorithm>
#include <array>

#include "audiofile/speaker_mask.hpp"
#include "foundation/failure.hpp"

namespace vanta {

namespace {

constexpr int kRearCenter = 180;

/// Speakers in the order of the bits of a WAV's channel mask, after the one that has none.
constexpr auto kWaveOrder = [] {
    std::array<int, kSpeakerOfMaskBit.size() + 1> order{SF_CHANNEL_MAP_MONO};
    std::ranges::copy(kSpeakerOfMaskBit, order.begin() + 1);
    return order;
}();

/// The order of Xiph's codecs (Vorbis I specification, 4.3.9), continued for what it leaves open.
constexpr std::array<int, 16> kVorbisOrder{
    SF_CHANNEL_MAP_MONO,
    SF_CHANNEL_MAP_LEFT,
    SF_CHANNEL_MAP_CENTER,
    SF_CHANNEL_MAP_RIGHT,
    SF_CHANNEL_MAP_FRONT_LEFT_OF_CENTER,
    SF_CHANNEL_MAP_FRONT_RIGHT_OF_CENTER,
    SF_CHANNEL_MAP_SIDE_LEFT,
    SF_CHANNEL_MAP_SIDE_RIGHT,
    SF_CHANNEL_MAP_REAR_LEFT,
    SF_CHANNEL_MAP_REAR_RIGHT,
    SF_CHANNEL_MAP_REAR_CENTER,
    SF_CHANNEL_MAP_TOP_FRONT_LEFT,
    SF_CHANNEL_MAP_TOP_FRONT_RIGHT,
    SF_CHANNEL_MAP_TOP_REAR_LEFT,
    SF_CHANNEL_MAP_TOP_REAR_RIGHT,
    SF_CHANNEL_MAP_LFE,
};

/// The usual layout of each number of channels.
constexpr std::array<std::string_view, kMaxChannels> kUsual{"mono", "stereo", "LCR", "quad",  "5.0",
                                                            "5.1",  "6.1",    "7.1", "7.0.2", "7.1.2"};

/// Two names for one place become one number.
int plain(int speaker) {
    switch (speaker) {
        case SF_CHANNEL_MAP_FRONT_LEFT:
            return SF_CHANNEL_MAP_LEFT;
        case SF_CHANNEL_MAP_FRONT_RIGHT:
            return SF_CHANNEL_MAP_RIGHT;
        case SF_CHANNEL_MAP_FRONT_CENTER:
            return SF_CHANNEL_MAP_CENTER;
        default:
            return speaker;
    }
}

bool hasRearCenter(ChannelLayout layout) {
    return std::ranges::any_of(channelTypes(layout),
                               [](int type) { return (type & kAngleMask) == kRearCenter; });
}

/// Left speakers of a pair by its angle and place, the likeliest first. The right one is the next number.
std::vector<int> leftSpeakers(int type, ChannelLayout layout) {
    if (type & kHeightChannel) return {SF_CHANNEL_MAP_TOP_FRONT_LEFT, SF_CHANNEL_MAP_TOP_REAR_LEFT};
    switch (type & kAngleMask) {
        case 22:
            return {SF_CHANNEL_MAP_FRONT_LEFT_OF_CENTER};
        case 30:
        case 45:
            return {SF_CHANNEL_MAP_LEFT};
        case 90:
            return {SF_CHANNEL_MAP_SIDE_LEFT};
        case 110:
            // Beside a rear centre the pair stands at the sides; else either name is in use for it.
            if (hasRearCenter(layout)) return {SF_CHANNEL_MAP_SIDE_LEFT, SF_CHANNEL_MAP_REAR_LEFT};
            [[fallthrough]];
        default:
            return {SF_CHANNEL_MAP_REAR_LEFT, SF_CHANNEL_MAP_SIDE_LEFT};
    }
}

std::vector<int> speakersFor(int type, ChannelLayout layout) {
    if (type & kUnpairedChannel) {
        if (type & kLfeChannel) return {SF_CHANNEL_MAP_LFE};
        if ((type & kAngleMask) == kRearCenter) return {SF_CHANNEL_MAP_REAR_CENTER};
        if (type & kCenterChannel) return {SF_CHANNEL_MAP_CENTER};
        return {SF_CHANNEL_MAP_MONO};
    }
    return leftSpeakers(type, layout);
}

constexpr int kNowhere = -1;

/// Where a file with these speakers has each channel of the layout, or kNowhere.
std::vector<int> placesOf(std::span<const int> speakers, ChannelLayout layout) {
    std::vector<int> places;
    for (const int type : channelTypes(layout)) {
        int place = kNowhere;
        for (const int left : speakersFor(type, layout)) {
            const int speaker = type & kRightChannel ? left + 1 : left;
            const auto at = std::ranges::find(speakers, speaker, plain);
            const int position = static_cast<int>(at - speakers.begin());
            if (at == speakers.end() || std::ranges::find(places, position) != places.end()) continue;
            place = position;
            break;
        }
        places.push_back(place);
    }
    return places;
}

/// The same; empty if they do not match.
std::vector<int> match(std::span<const int> speakers, ChannelLayout layout) {
    std::vector<int> found = placesOf(speakers, layout);
    if (found.size() != speakers.size() || std::ranges::find(found, kNowhere) != found.end()) found.clear();
    return found;
}

/// For as many speakers as the layout has: those that it does not know go where it has no other.
std::vector<int> matchNearest(std::span<const int> speakers, ChannelLayout layout) {
    std::vector<int> places = placesOf(speakers, layout);
    int next = 0;
    for (int& place : places) {
        if (place != kNowhere) continue;
        while (std::ranges::find(places, next) != places.end()) ++next;
        place = next;
    }
    return places;
}

bool areDistinct(std::vector<int> speakers) {
    std::ranges::sort(speakers);
    return std::ranges::adjacent_find(speakers) == speakers.end();
}

/// The layout whose speakers these are, the usual one of that many channels first.
std::optional<ChannelLayout> layoutOf(std::span<const int> speakers) {
    if (speakers.empty()) return std::nullopt;
    const int channels = static_cast<int>(speakers.size());
    const ChannelLayout usual = usualLayout(channels);
    if (!match(speakers, usual).empty()) return usual;
    for (ChannelLayout layout = 0; layout < kChannelLayoutCount; ++layout) {
        if (channelCount(layout) == channels && !match(speakers, layout).empty()) return layout;
    }
    return std::nullopt;
}

template <std::size_t N>
std::vector<int> sortBy(const std::array<int, N>& order, std::vector<int> speakers) {
    std::ranges::stable_sort(
        speakers, {}, [&](int speaker) { return std::ranges::find(order, plain(speaker)) - order.begin(); });
    return speakers;
}

}  // namespace

std::string layoutNames(int channels) {
    std::vector<std::string_view> names;
    for (ChannelLayout layout = 0; layout < kChannelLayoutCount; ++layout) {
        if (channelCount(layout) == channels) names.push_back(channelLayoutName(layout));
    }
    return fmt::format("{}", fmt::join(names, " or "));
}

ChannelLayout usualLayout(int channels) {
    if (channels < 1 || channels > kMaxChannels) {
        throw Failure(fmt::format("has {} channels: up to {} are supported", channels, kMaxChannels));
    }
    return *findLayout(kUsual[static_cast<std::size_t>(channels - 1)]);
}

std::vector<int> standardSpeakers(ChannelLayout layout, SpeakerOrder order) {
    std::vector<int> speakers;
    for (const int type : channelTypes(layout)) {
        const int left = speakersFor(type, layout).front();
        speakers.push_back(type & kRightChannel ? left + 1 : left);
    }
    return sortSpeakers(std::move(speakers), order);
}

bool isUsualOrder(std::span<const int> speakers, SpeakerOrder order) {
    return std::ranges::equal(speakers,
                              standardSpeakers(usualLayout(static_cast<int>(speakers.size())), order));
}

std::vector<int> sortSpeakers(std::vector<int> speakers, SpeakerOrder order) {
    return order == SpeakerOrder::Vorbis ? sortBy(kVorbisOrder, std::move(speakers))
                                         : sortBy(kWaveOrder, std::move(speakers));
}

ChannelMapping mapChannels(std::span<const int> positions, int channels, SpeakerOrder order,
                           std::optional<ChannelLayout> wanted) {
    const ChannelLayout usual = usualLayout(channels);
    if (wanted && channelCount(*wanted) != channels) {
        throw Failure(fmt::format("has {} channels, but the layout {} has {}: use {}", channels,
                                  channelLayoutName(*wanted), channelCount(*wanted), layoutNames(channels)));
    }
    ChannelMapping mapping;
    mapping.speakers.assign(positions.begin(), positions.end());
    // One channel is mono and two are stereo, whatever they are called.
    if (channels <= 2) mapping.speakers = standardSpeakers(usual, order);
    const bool said = !mapping.speakers.empty();
    mapping.layout = wanted ? *wanted : layoutOf(mapping.speakers).value_or(usual);
    mapping.fileChannel = match(mapping.speakers, mapping.layout);
    if (mapping.fileChannel.empty()) {
        mapping.positionsIgnored = said;
        if (said && !wanted && areDistinct(mapping.speakers)) {
            mapping.fileChannel = matchNearest(mapping.speakers, mapping.layout);
            return mapping;
        }
        mapping.speakers = standardSpeakers(mapping.layout, order);
        mapping.fileChannel = match(mapping.speakers, mapping.layout);
    }
    return mapping;
}

std::vector<int> fileOrder(const ChannelMapping& mapping, std::span<const int> speakers) {
    std::vector<int> order;
    for (const int channel : mapping.fileChannel) {
        const int speaker = mapping.speakers[static_cast<std::size_t>(channel)];
        order.push_back(static_cast<int>(std::ranges::find(speakers, speaker) - speakers.begin()));
    }
    return order;
}

}  // namespace vanta
