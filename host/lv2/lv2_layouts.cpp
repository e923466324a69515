#include "host/lv2/lv2_layouts.hpp"

#include <lv2/port-groups/port-groups.h>

#include <algorithm>
#include <array>

#include "host/common/product_identity.hpp"
#include "host/common/speakers.hpp"

namespace vanta {
namespace {

struct SpeakerRow {
    Speaker speaker;
    int number;  ///< the place among the ports; two that no layout has together share one
    std::string_view symbol;
    std::string_view name;
    std::string_view designation;  ///< as port-groups calls it
    bool isOwn = false;
};

/// The groups of port-groups call the one pair behind the front rear, whatever its angle.
constexpr auto kSpeakers = std::to_array<SpeakerRow>({
    {Speaker::Mono, 0, "mono", "Mono", "center"},
    {Speaker::Left, 0, "left", "Left", "left"},
    {Speaker::Right, 1, "right", "Right", "right"},
    {Speaker::Center, 2, "center", "Center", "center"},
    {Speaker::Lfe, 3, "lfe", "LFE", "lowFrequencyEffects"},
    {Speaker::SurroundLeft, 4, "rear_left", "Surround Left", "rearLeft"},
    {Speaker::SurroundRight, 5, "rear_right", "Surround Right", "rearRight"},
    {Speaker::RearLeft, 4, "rear_left", "Rear Left", "rearLeft"},
    {Speaker::RearRight, 5, "rear_right", "Rear Right", "rearRight"},
    {Speaker::SideLeft, 6, "side_left", "Side Left", "sideLeft"},
    {Speaker::SideRight, 7, "side_right", "Side Right", "sideRight"},
    {Speaker::TopLeft, 8, "top_left", "Top Left", "topLeft", true},
    {Speaker::TopRight, 9, "top_right", "Top Right", "topRight", true},
});

const SpeakerRow& rowOf(Speaker speaker) {
    return *std::ranges::find(kSpeakers, speaker, &SpeakerRow::speaker);
}

ChannelLayout layoutNamed(std::string_view name) {
    ChannelLayout layout = 0;
    while (channelLayoutName(layout) != name) ++layout;
    return layout;
}

std::string term(std::string_view name, bool isOwn) {
    return isOwn ? ownTerm(name) : std::string(LV2_PORT_GROUPS_PREFIX).append(name);
}

}  // namespace

std::string ownTerm(std::string_view name) {
    return std::string(productIdentity().uri).append("#").append(name);
}

std::string Lv2Layout::uri() const {
    return std::string(productIdentity().uri).append(":").append(name());
}

std::string Lv2Layout::groupUri() const {
    return term(group, isOwnGroup);
}

std::span<const Lv2Layout> lv2Layouts() {
    static const auto layouts = std::to_array<Lv2Layout>({
        {kMonoLayout, "MonoGroup"},
        {kStereoLayout, "StereoGroup"},
        {layoutNamed("5.0"), "FivePointZeroGroup"},
        {layoutNamed("5.1"), "FivePointOneGroup"},
        {layoutNamed("7.1"), "SevenPointOneGroup"},
        {layoutNamed("7.1.2"), "SevenPointOnePointTwoGroup", true},
    });
    return layouts;
}

const Lv2Layout* lv2LayoutOf(std::string_view pluginUri) {
    const auto found = std::ranges::find_if(
        lv2Layouts(), [&](const Lv2Layout& layout) { return layout.uri() == pluginUri; });
    return found == lv2Layouts().end() ? nullptr : &*found;
}

std::vector<Lv2Channel> lv2Channels(ChannelLayout layout) {
    const auto speakers = speakersOf(layout);
    const ChannelMap map = mapByNumber(layout, [](Speaker speaker) { return rowOf(speaker).number; });
    std::vector<Lv2Channel> channels(speakers.size());
    for (std::size_t i = 0; i < speakers.size(); ++i) {
        const SpeakerRow& row = rowOf(speakers[i]);
        channels[static_cast<std::size_t>(map.hostChannel[i])] = {
            row.symbol, row.name, term(row.designation, row.isOwn), row.isOwn, static_cast<int>(i)};
    }
    return channels;
}

}  // namespace vanta
