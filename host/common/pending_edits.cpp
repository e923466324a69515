#include "host/common/pending_edits.hpp"

namespace vanta {

void PendingEdits::Waiting::setValue(float newValue) {
    hasValue = 1;
    value = newValue;
    valueAt = turns;
}

void PendingEdits::Waiting::add(HostCallbacks::Edit edit, float newValue) {
    if (edit == HostCallbacks::Edit::Value) return setValue(newValue);
    const bool begins = edit == HostCallbacks::Edit::Begin;
    if (begins == (isHeld != 0)) return;
    isHeld = begins;
    if (++turns <= kMostTurns) return;
    turns -= 2;
    valueAt -= std::min<std::uint16_t>(valueAt, 2);
}

void PendingEdits::Waiting::putBack(const Waiting& former) {
    if (hasValue) return;
    hasValue = 1;
    value = former.value;
    valueAt = std::min(former.valueAt, turns);
}

PendingEdits::Waiting PendingEdits::Waiting::followedBy(const Waiting& later) const {
    Waiting both = later;
    both.turns += turns;
    if (later.hasValue) {
        both.valueAt += turns;
    } else if (hasValue) {
        both.hasValue = hasValue;
        both.value = value;
        both.valueAt = valueAt;
    }
    while (both.turns > kMostTurns) both.turns -= 2;
    both.valueAt = std::min(both.valueAt, both.turns);
    return both;
}

void PendingEdits::add(int index, HostCallbacks::Edit edit, float value) {
    exchange(parameters_[static_cast<std::size_t>(index)],
             [&](Waiting& waiting) { waiting.add(edit, value); });
    any_.store(true);
}

void PendingEdits::forgetValues() {
    for (auto& parameter : parameters_) exchange(parameter, [](Waiting& waiting) { waiting.hasValue = 0; });
}

}  // namespace vanta
