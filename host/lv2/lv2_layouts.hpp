#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/channel_layout.hpp"

namespace vanta {

/// A plug-in of ours: as LV2 fixes the ports of each, every layout on offer has one of its own.
struct Lv2Layout {
    ChannelLayout layout;
    std::string_view group;  ///< the class of its groups of ports, in the vocabulary that `isOwnGroup` says
    bool isOwnGroup = false;

    std::string_view name() const { return channelLayoutName(layout); }
    std::string uri() const;
    std::string groupUri() const;
};

/// For good, as hosts keep the URIs in their sessions.
std::span<const Lv2Layout> lv2Layouts();
/// That of a plug-in; null if it is none of ours.
const Lv2Layout* lv2LayoutOf(std::string_view pluginUri);

/// A channel as LV2 hosts know it.
struct Lv2Channel {
    std::string_view symbol;  ///< "left"
    std::string_view name;    ///< "Left"
    std::string designation;  ///< the URI of its role
    bool isOwnDesignation;    ///< which port-groups does not have
    int channel;              ///< its place in the layout
};

/// In the order of the ports, which is that of WAVE files: left, right, centre, LFE, then the pairs behind
/// and above.
std::vector<Lv2Channel> lv2Channels(ChannelLayout layout);

/// A term of our own vocabulary.
std::string ownTerm(std::string_view name);

}  // namespace vanta
