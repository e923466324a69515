#include "host/jack/port_names.hpp"

namespace vanta {
namespace {

struct Row {
    int order;
    std::string_view name;
};

/// As the bits of a channel mask order them (Microsoft, WAVEFORMATEXTENSIBLE); a single pair behind the front
/// has the place of the side.
Row rowOf(Speaker speaker) {
    switch (speaker) {
        case Speaker::Mono:
            return {0, "mono"};
        case Speaker::Left:
            return {1, "L"};
        case Speaker::Right:
            return {2, "R"};
        case Speaker::Center:
            return {3, "C"};
        case Speaker::Lfe:
            return {4, "LFE"};
        case Speaker::RearLeft:
            return {5, "Lrs"};
        case Speaker::RearRight:
            return {6, "Rrs"};
        case Speaker::LeftOfCenter:
            return {7, "Lc"};
        case Speaker::RightOfCenter:
            return {8, "Rc"};
        case Speaker::RearCenter:
            return {9, "Cs"};
        case Speaker::SideLeft:
            return {10, "Lss"};
        case Speaker::SideRight:
            return {11, "Rss"};
        case Speaker::SurroundLeft:
            return {12, "Ls"};
        case Speaker::SurroundRight:
            return {13, "Rs"};
        case Speaker::TopLeft:
            return {14, "Lt"};
        case Speaker::TopRight:
            return {15, "Rt"};
    }
    return {0, {}};
}

int orderOf(Speaker speaker) {
    return rowOf(speaker).order;
}

}  // namespace

ChannelMap portOrder(ChannelLayout layout) {
    return mapByNumber(layout, orderOf);
}

std::vector<std::string_view> portSpeakers(ChannelLayout layout) {
    const auto speakers = speakersOf(layout);
    const ChannelMap map = portOrder(layout);
    std::vector<std::string_view> names(speakers.size());
    for (std::size_t i = 0; i < speakers.size(); ++i) {
        names[static_cast<std::size_t>(map.hostChannel[i])] = rowOf(speakers[i]).name;
    }
    return names;
}

}  // namespace vanta
