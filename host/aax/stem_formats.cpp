#include "host/aax/stem_formats.hpp"

#include <array>

namespace vanta {
namespace {

struct StemRow {
    AAX_EStemFormat stem;
    char character;
    std::array<int, kMaxChannels> hostChannels;
};

// In the order of the layouts. The host begins with left, centre and right where there is a centre, and keeps
// the LFE behind the last pair of the bed.
constexpr std::array<StemRow, kChannelLayoutCount> kStems{{
    {0x1, '1', {0}},
    {0x10002, '2', {0, 1}},
    {0x20003, '3', {0, 2, 1}},
    {0x40004, 'q', {0, 1, 2, 3}},
    {0x30004, '4', {0, 2, 1, 3}},
    {0x50005, '5', {0, 2, 3, 4, 1}},
    {0x60006, '6', {0, 2, 3, 4, 1, 5}},
    {0x70006, 'a', {0, 2, 3, 5, 1, 4}},
    {0x80007, 'b', {0, 2, 3, 5, 1, 4, 6}},
    {0x90007, 's', {0, 4, 1, 3, 5, 6, 2}},
    {0xb0007, 'd', {0, 2, 3, 4, 5, 6, 1}},
    {0xa0008, 'S', {0, 4, 1, 3, 5, 6, 2, 7}},
    {0xc0008, 'D', {0, 2, 3, 4, 5, 6, 1, 7}},
    {0x140009, '9', {0, 2, 3, 4, 5, 6, 7, 8, 1}},
    {0xd000a, 'x', {0, 2, 3, 4, 5, 6, 8, 9, 1, 7}},
}};

const StemRow& rowOf(ChannelLayout layout) {
    return kStems[static_cast<std::size_t>(checkedLayout(layout))];
}

}  // namespace

AAX_EStemFormat stemOf(ChannelLayout layout) {
    return rowOf(layout).stem;
}

std::optional<ChannelLayout> layoutOfStem(AAX_EStemFormat stem) {
    for (ChannelLayout layout = 0; layout < kChannelLayoutCount; ++layout) {
        if (rowOf(layout).stem == stem) return layout;
    }
    return {};
}

char stemCharacter(ChannelLayout layout) {
    return rowOf(layout).character;
}

std::span<const int> hostChannelsOf(ChannelLayout layout) {
    return std::span(rowOf(layout).hostChannels).first(static_cast<std::size_t>(channelCount(layout)));
}

}  // namespace vanta
