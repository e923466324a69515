#include "cli/chosen_layout.hpp"

#include <vector>

#include "cli/suggestion.hpp"

namespace vanta {

std::optional<ChannelLayout> chosenLayout(const std::string& name) {
    if (name.empty()) return std::nullopt;
    if (const auto layout = findLayout(name)) return layout;
    std::vector<std::string> names;
    for (ChannelLayout i = 0; i < kChannelLayoutCount; ++i) names.emplace_back(channelLayoutName(i));
    throw unknownName("layout", name, names);
}

}  // namespace vanta
