#include "plugin/parameters/num_active_parameter.hpp"

#include <utility>

namespace vanta {

void NumActiveParameter::attach(std::vector<Slot> group) {
    groups_.push_back(std::move(group));
    activate(groups_.back());
}

void NumActiveParameter::attach(const std::vector<wave::Producer*>& group) {
    std::vector<Slot> slots;
    for (wave::Producer* producer : group) slots.push_back({producer});
    attach(std::move(slots));
}

void NumActiveParameter::applyValue(float value) {
    IndexedPluginParameter<int>::applyValue(value);
    applied_ = limit(value);
    for (const auto& group : groups_) activate(group);
}

void NumActiveParameter::activate(const std::vector<Slot>& group) const {
    if (applied_ < 0) return;
    for (std::size_t i = 0; i < group.size(); ++i) {
        for (wave::Producer* producer : group[i]) {
            if (producer) producer->setActive(i < static_cast<std::size_t>(applied_));
        }
    }
}

}  // namespace vanta
