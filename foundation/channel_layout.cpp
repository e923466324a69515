#include "foundation/channel_layout.hpp"

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>

#include "foundation/ascii.hpp"

namespace vanta {

namespace {

struct Layout {
    std::string_view name;
    std::span<const int> types;
    int centers;
    int lfes;
};

constexpr int kMono[] = {0x100};
constexpr int kStereo[] = {0x21E, 0x41E};
constexpr int kLcr[] = {0x21E, 0x41E, 0x900};
constexpr int kQuad[] = {0x22D, 0x42D, 0x287, 0x487};
constexpr int kLcrs[] = {0x21E, 0x41E, 0x900, 0x9B4};
constexpr int k50[] = {0x21E, 0x41E, 0x26E, 0x46E, 0x900};
constexpr int k51[] = {0x21E, 0x41E, 0x26E, 0x46E, 0x900, 0x1100};
constexpr int k60[] = {0x21E, 0x41E, 0x26E, 0x46E, 0x900, 0x9B4};
constexpr int k61[] = {0x21E, 0x41E, 0x26E, 0x46E, 0x900, 0x9B4, 0x1100};
constexpr int k70Sdds[] = {0x22D, 0x42D, 0x216, 0x416, 0x287, 0x487, 0x900};
constexpr int k70[] = {0x21E, 0x41E, 0x25A, 0x45A, 0x287, 0x487, 0x900};
constexpr int k71Sdds[] = {0x22D, 0x42D, 0x216, 0x416, 0x287, 0x487, 0x900, 0x1100};
constexpr int k71[] = {0x21E, 0x41E, 0x25A, 0x45A, 0x287, 0x487, 0x900, 0x1100};
constexpr int k702[] = {0x21E, 0x41E, 0x25A, 0x45A, 0x287, 0x487, 0x222D, 0x242D, 0x900};
constexpr int k712[] = {0x21E, 0x41E, 0x25A, 0x45A, 0x287, 0x487, 0x222D, 0x242D, 0x900, 0x1100};

// In LCRS neither centre nor surround take part in linking as centres.
constexpr std::array<Layout, kChannelLayoutCount> kLayouts{{
    {"mono", kMono, 0, 0},
    {"stereo", kStereo, 0, 0},
    {"LCR", kLcr, 1, 0},
    {"quad", kQuad, 0, 0},
    {"LCRS", kLcrs, 0, 0},
    {"5.0", k50, 1, 0},
    {"5.1", k51, 1, 1},
    {"6.0", k60, 2, 0},
    {"6.1", k61, 2, 1},
    {"7.0 SDDS", k70Sdds, 1, 0},
    {"7.0", k70, 1, 0},
    {"7.1 SDDS", k71Sdds, 1, 1},
    {"7.1", k71, 1, 1},
    {"7.0.2", k702, 1, 0},
    {"7.1.2", k712, 1, 1},
}};

const Layout& at(ChannelLayout layout) {
    return kLayouts[static_cast<std::size_t>(checkedLayout(layout))];
}

std::string normalised(std::string_view name) {
    std::string result;
    for (const char c : name) {
        if (c != ' ' && c != '-' && c != '_') result += c;
    }
    return result;
}

}  // namespace

ChannelLayout checkedLayout(ChannelLayout layout) {
    if (layout >= 0 && layout < kChannelLayoutCount) return layout;
    throw std::invalid_argument("there is no channel layout " + std::to_string(layout) + ": use 0 to " +
                                std::to_string(kChannelLayoutCount - 1));
}

std::span<const int> channelTypes(ChannelLayout layout) {
    return at(layout).types;
}
std::string_view channelLayoutName(ChannelLayout layout) {
    return at(layout).name;
}
std::optional<ChannelLayout> findLayout(std::string_view name) {
    const std::string typed = normalised(name);
    for (ChannelLayout layout = 0; layout < kChannelLayoutCount; ++layout) {
        if (equalsIgnoringCase(typed, normalised(channelLayoutName(layout)))) return layout;
    }
    return std::nullopt;
}

int linkedCenterCount(ChannelLayout layout) {
    return at(layout).centers;
}
int linkedLfeCount(ChannelLayout layout) {
    return at(layout).lfes;
}

}  // namespace vanta
