#include "host/aax_host/stem_speakers.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

#include "host/common/speakers.hpp"

namespace vanta {
namespace {

using enum Speaker;

struct Stem {
    AAX_EStemFormat format;
    std::vector<Speaker> speakers;
};

/// In the order of the layouts.
const std::array<Stem, kChannelLayoutCount>& stems() {
    static const std::array<Stem, kChannelLayoutCount> all{{
        {0x1, {Mono}},
        {0x10002, {Left, Right}},
        {0x20003, {Left, Center, Right}},
        {0x40004, {Left, Right, RearLeft, RearRight}},
        {0x30004, {Left, Center, Right, RearCenter}},
        {0x50005, {Left, Center, Right, SurroundLeft, SurroundRight}},
        {0x60006, {Left, Center, Right, SurroundLeft, SurroundRight, Lfe}},
        {0x70006, {Left, Center, Right, SurroundLeft, RearCenter, SurroundRight}},
        {0x80007, {Left, Center, Right, SurroundLeft, RearCenter, SurroundRight, Lfe}},
        {0x90007, {Left, LeftOfCenter, Center, RightOfCenter, Right, RearLeft, RearRight}},
        {0xb0007, {Left, Center, Right, SideLeft, SideRight, RearLeft, RearRight}},
        {0xa0008, {Left, LeftOfCenter, Center, RightOfCenter, Right, RearLeft, RearRight, Lfe}},
        {0xc0008, {Left, Center, Right, SideLeft, SideRight, RearLeft, RearRight, Lfe}},
        {0x140009, {Left, Center, Right, SideLeft, SideRight, RearLeft, RearRight, TopLeft, TopRight}},
        {0xd000a, {Left, Center, Right, SideLeft, SideRight, RearLeft, RearRight, Lfe, TopLeft, TopRight}},
    }};
    return all;
}

std::string_view nameOf(Speaker speaker) {
    // In the order of the enumeration.
    constexpr std::array kNames{"M",   "L",  "R",  "Lc", "Rc", "C",  "LFE", "Lss",
                                "Rss", "Ls", "Rs", "Lr", "Rr", "Cs", "Lts", "Rts"};
    return kNames[static_cast<std::size_t>(speaker)];
}

}  // namespace

AAX_EStemFormat stemFormatOf(ChannelLayout layout) {
    return stems()[static_cast<std::size_t>(checkedLayout(layout))].format;
}

std::optional<ChannelLayout> layoutOfStemFormat(AAX_EStemFormat stem) {
    const auto found = std::ranges::find(stems(), stem, &Stem::format);
    if (found == stems().end()) return {};
    return static_cast<ChannelLayout>(found - stems().begin());
}

std::string stemSpeakers(AAX_EStemFormat stem) {
    const auto layout = layoutOfStemFormat(stem);
    if (!layout) return {};
    std::vector<std::string_view> names;
    for (const Speaker speaker : stems()[static_cast<std::size_t>(*layout)].speakers)
        names.push_back(nameOf(speaker));
    return fmt::format("{}", fmt::join(names, " "));
}

std::vector<std::size_t> stemChannels(ChannelLayout layout) {
    const auto& order = stems()[static_cast<std::size_t>(checkedLayout(layout))].speakers;
    std::vector<std::size_t> channels;
    for (const Speaker speaker : speakersOf(layout))
        channels.push_back(static_cast<std::size_t>(std::ranges::find(order, speaker) - order.begin()));
    return channels;
}

}  // namespace vanta
