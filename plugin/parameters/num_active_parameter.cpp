#include "plugin/parameters/num_active_parameter.hpp"

#include <utility>

namespace vanta {

int NumActiveParameter::attach(std::vector<Slot> group) {
    groups_.push_back(std::move(group));
    for (std::size_t i = 0; i < groups_.back().size(); ++i) activate(groups_.back()[i], i);
    return static_cast<int>(groups_.size()) - 1;
}

int NumActiveParameter::attach(const std::vector<wave::Producer*>& group) {
    std::vector<Slot> slots;
    for (wave::Producer* producer : group) slots.push_back({producer});
    return attach(std::move(slots));
}

void NumActiveParameter::replace(int group, int slot, Slot producers) {
    const auto position = static_cast<std::size_t>(slot);
    Slot& place = groups_[static_cast<std::size_t>(group)][position];
    place = std::move(producers);
    activate(place, position);
}

void NumActiveParameter::applyValue(float value) {
    IndexedPluginParameter<int>::applyValue(value);
    applied_ = indexFrom(value);
    for (const auto& group : groups_) {
        for (std::size_t i = 0; i < group.size(); ++i) activate(group[i], i);
    }
}

void NumActiveParameter::activate(const Slot& slot, std::size_t position) const {
    if (applied_ < 0) return;
    for (wave::Producer* producer : slot) {
        if (producer) producer->setActive(position < static_cast<std::size_t>(applied_));
    }
}

}  // namespace vanta
