#include "host/common/speakers.hpp"

#include <vector>

namespace vanta {
namespace {

Speaker speakerOf(int typeWord) {
    const bool left = (typeWord & kLeftChannel) != 0;
    const auto side = [left](Speaker ofLeft, Speaker ofRight) { return left ? ofLeft : ofRight; };
    if (typeWord & kHeightChannel) return side(Speaker::TopLeft, Speaker::TopRight);
    if (typeWord & kLfeChannel) return Speaker::Lfe;
    const int angle = typeWord & kAngleMask;
    if (typeWord & kCenterChannel) return angle == 0 ? Speaker::Center : Speaker::RearCenter;
    if (typeWord & kUnpairedChannel) return Speaker::Mono;
    if (angle < 30) return side(Speaker::LeftOfCenter, Speaker::RightOfCenter);
    if (angle < 90) return side(Speaker::Left, Speaker::Right);
    if (angle == 90) return side(Speaker::SideLeft, Speaker::SideRight);
    if (angle <= 110) return side(Speaker::SurroundLeft, Speaker::SurroundRight);
    return side(Speaker::RearLeft, Speaker::RearRight);
}

std::vector<std::vector<Speaker>> allSpeakers() {
    std::vector<std::vector<Speaker>> all;
    for (ChannelLayout layout = 0; layout < kChannelLayoutCount; ++layout) {
        std::vector<Speaker>& speakers = all.emplace_back();
        for (const int word : channelTypes(layout)) speakers.push_back(speakerOf(word));
    }
    return all;
}

}  // namespace

std::span<const Speaker> speakersOf(ChannelLayout layout) {
    static const std::vector<std::vector<Speaker>> all = allSpeakers();
    return all[static_cast<std::size_t>(checkedLayout(layout))];
}

ChannelMap mapByNumber(ChannelLayout layout, int (*numberOf)(Speaker)) {
    const auto speakers = speakersOf(layout);
    ChannelMap map;
    map.count = static_cast<int>(speakers.size());
    for (std::size_t i = 0; i < speakers.size(); ++i) {
        for (const Speaker other : speakers) {
            if (numberOf(other) < numberOf(speakers[i])) ++map.hostChannel[i];
        }
    }
    return map;
}

std::uint64_t speakerMask(ChannelLayout layout, int (*numberOf)(Speaker)) {
    std::uint64_t mask = 0;
    for (const Speaker speaker : speakersOf(layout)) mask |= std::uint64_t{1} << numberOf(speaker);
    return mask;
}

std::optional<ChannelLayout> layoutOfMask(std::uint64_t mask, int (*numberOf)(Speaker)) {
    for (ChannelLayout layout = 0; layout < kChannelLayoutCount; ++layout) {
        if (speakerMask(layout, numberOf) == mask) return layout;
    }
    return {};
}

}  // namespace vanta
