#include <algorithm>
#include <utility>

#include "limiter/modulation/modulation_matrix.hpp"
#include "limiter/modulation/voice_matrix.hpp"

// Which slots are connected, for all voices together or for each by itself, and by which factor.
namespace vanta {

void ModulationMatrix::updateSlot(SlotState& slot, int flags) {
    environment().noteChange();
    if (updateDepth_ > 0) {
        dirty_ = slot.pending = true;
        return;
    }
    ++wiringChanges_;
    const SlotMode old = slot.mode;
    const bool connected = flags & kKeepConnected ? old != SlotMode::Off : canConnect(slot);
    slot.mode = connected ? modeWhenConnected(slot) : SlotMode::Off;
    const bool voiceChanged = (old == SlotMode::PerVoice) != (slot.mode == SlotMode::PerVoice);
    if (slot.target >= 0 && ((flags & kRefreshTarget) || voiceChanged)) {
        TargetState& fed = target(slot.target);
        refreshAllGlobal(fed);
        if (fed.levelOfSlot && fed.levelOfSlot->mode != SlotMode::Off) {
            updateSlot(*fed.levelOfSlot, kKeepConnected);
        }
    }
    if ((flags & kRefreshLevel) || (old == SlotMode::Off && connected)) refreshLevel(slot);
}

// A loop that kept a slot off may have gone.
void ModulationMatrix::updateOffSlots(const SlotState* except) {
    if (updateDepth_ > 0) return;
    for (SlotState& slot : slots_) {
        if (&slot == except || slot.mode != SlotMode::Off) continue;
        if (slot.source >= 0 || slot.target >= 0) updateSlot(slot, kRefreshLevel);
    }
}

bool ModulationMatrix::canConnect(const SlotState& slot) {
    if (slot.source < 0 || slot.target < 0 || slot.bypassed) return false;
    std::fill(visited_.begin(), visited_.end(), char{0});
    visitUpstream(slot);
    return !visited_[static_cast<std::size_t>(slot.target)];
}

void ModulationMatrix::visitUpstream(const SlotState& slot) {
    const auto visit = [this](int index) {
        if (visited_[static_cast<std::size_t>(index)]) return;
        visited_[static_cast<std::size_t>(index)] = 1;
        for (const SlotState* feeding : target(index).slots) {
            if (feeding->mode != SlotMode::Off) visitUpstream(*feeding);
        }
    };
    const SourceInfo& source = layout_.sources[static_cast<std::size_t>(slot.source)];
    visit(slot.levelTarget);
    if (source.control >= 0) visit(source.control);
    for (int input : source.inputs) visit(input);
}

std::uint32_t ModulationMatrix::originsOf(int index) {
    std::fill(visited_.begin(), visited_.end(), char{0});
    return collectOrigins(index);
}

std::uint32_t ModulationMatrix::collectOrigins(int index) {
    if (std::exchange(visited_[static_cast<std::size_t>(index)], char{1})) return 0;
    std::uint32_t origins = 0;
    for (const SlotState* slot : target(index).slots) {
        if (slot->mode == SlotMode::Off) continue;
        const SourceInfo& source = layout_.sources[static_cast<std::size_t>(slot->source)];
        if (source.inputs.empty() && slot->source < 32) origins |= std::uint32_t{1} << slot->source;
        if (source.control >= 0) origins |= collectOrigins(source.control);
        origins |= collectOrigins(slot->levelTarget);
        for (const int input : source.inputs) origins |= collectOrigins(input);
    }
    return origins;
}

ModulationMatrix::SlotMode ModulationMatrix::modeWhenConnected(const SlotState& slot) {
    if (!globalSources_[static_cast<std::size_t>(slot.source)]) return SlotMode::PerVoice;
    for (const SlotState* feeding : target(slot.levelTarget).slots) {
        if (feeding->mode == SlotMode::PerVoice) return SlotMode::PerVoice;
    }
    return SlotMode::Global;
}

void ModulationMatrix::refreshAllGlobal(TargetState& state) {
    state.allGlobal = std::none_of(state.slots.begin(), state.slots.end(),
                                   [](const SlotState* slot) { return slot->mode == SlotMode::PerVoice; });
}

void ModulationMatrix::refreshLevel(SlotState& slot) {
    environment().noteChange();
    if (updateDepth_ > 0) {
        dirty_ = slot.pending = true;
        return;
    }
    if (slot.mode == SlotMode::Off) return;
    const TargetState& fed = target(slot.target);
    const int sourceType = layout_.sources[static_cast<std::size_t>(slot.source)].type;
    const float factor = fed.scale * (fed.range ? fed.range->factorFor(sourceType) : 1.0f);

    TargetState& level = target(slot.levelTarget);
    level.scale = slot.inverted ? -factor : factor;
    setLimits(level);
    level.base->setValue(level.baseValue * level.scale, 0.0f);
    for (SlotState* feeding : level.slots) refreshLevel(*feeding);
}

void ModulationMatrix::setLimits(TargetState& state) {
    const float minimum = state.range ? state.range->minimum : 0.0f;
    const float maximum = state.range ? state.range->maximum : 1.0f;
    state.lowLimit = std::min(minimum * state.scale, maximum * state.scale);
    state.highLimit = std::max(minimum * state.scale, maximum * state.scale);
    if (state.base) state.base->setRange(state.lowLimit, state.highLimit);
}

void ModulationMatrix::moveSlot(SlotState& slot, int newTarget) {
    const int oldTarget = slot.target;
    slot.target = newTarget;
    if (oldTarget >= 0) {
        TargetState& old = target(oldTarget);
        std::erase(old.slots, &slot);
        refreshAllGlobal(old);
        if (old.levelOfSlot) updateSlot(*old.levelOfSlot, 0);
    }
    if (newTarget >= 0) target(newTarget).slots.push_back(&slot);
    updateSlot(slot, kRefreshLevel | kRefreshTarget);
    updateOffSlots(&slot);
}

}  // namespace vanta
