#include "limiter/modulation/modulation_matrix.hpp"

#include <algorithm>

#include "limiter/modulation/voice_matrix.hpp"

namespace vanta {

class ModulationMatrix::InternalController final : public Controller {
public:
    explicit InternalController(ModulationMatrix& owner) : matrix(owner) {}

    bool isBypassed(int slot) const override { return at(slot).bypassed; }
    bool isInverted(int slot) const override { return at(slot).inverted; }
    float level(int slot) const override { return matrix.target(at(slot).levelTarget).baseValue; }
    int source(int slot) const override { return at(slot).source; }
    int target(int slot) const override { return at(slot).target; }

    void setBypassed(int slot, bool bypassed) override {
        if (at(slot).bypassed == bypassed) return;
        at(slot).bypassed = bypassed;
        matrix.updateSlot(at(slot), kRefreshLevel);
        matrix.updateOffSlots(&at(slot));
    }
    void setInverted(int slot, bool inverted) override {
        if (at(slot).inverted == inverted) return;
        at(slot).inverted = inverted;
        matrix.refreshLevel(at(slot));
    }
    void setLevel(int slot, float level) override { matrix.setBaseValue(at(slot).levelTarget, level); }
    void setSource(int slot, int source) override {
        if (at(slot).source == source) return;
        at(slot).source = source;
        matrix.updateSlot(at(slot), kRefreshLevel);
        matrix.updateOffSlots(&at(slot));
    }
    void setTarget(int slot, int target) override {
        if (at(slot).target != target) matrix.moveSlot(at(slot), target);
    }
    std::vector<int> slotsInto(int target) const override {
        std::vector<int> result;
        for (const SlotState* slot : matrix.target(target).slots) result.push_back(slot->index);
        return result;
    }
    std::vector<int> slotsFrom(int source) const override {
        std::vector<int> result;
        for (const SlotState& slot : matrix.slots) {
            if (slot.source == source) result.push_back(slot.index);
        }
        return result;
    }

private:
    SlotState& at(int slot) const { return matrix.slots[static_cast<std::size_t>(slot)]; }
    ModulationMatrix& matrix;
};

ModulationMatrix::ModulationMatrix(wave::Environment& environment, ModulationLayout matrixLayout)
    : Component(environment),
      layout_(std::move(matrixLayout)),
      globalSources(layout_.sources.size(), nullptr),
      targets(static_cast<std::size_t>(layout_.targetCount())),
      slots(static_cast<std::size_t>(layout_.slotCount)),
      internalController(std::make_unique<InternalController>(*this)),
      visited(targets.size(), 0) {
    for (std::size_t t = 0; t < targets.size(); ++t) {
        const int range = layout_.rangeOf[t];
        TargetState& state = targets[t];
        if (range >= 0) state.range = &layout_.ranges[static_cast<std::size_t>(range)];
        // A style may send every slot to one target; room for that keeps style changes free of allocation.
        state.slots.reserve(slots.size());
        if (isAudio(state)) continue;
        state.base = std::make_unique<FloatParameter>(environment, 0.0f);
        setLimits(state);
    }
    for (std::size_t s = 0; s < slots.size(); ++s) {
        slots[s].index = static_cast<int>(s);
        slots[s].levelTarget = layout_.elementTargetCount + static_cast<int>(s);
        target(slots[s].levelTarget).levelOfSlot = &slots[s];
        globalProducer(slots[s].levelTarget);
    }
}

ModulationMatrix::~ModulationMatrix() = default;

ModulationMatrix::Controller& ModulationMatrix::controller() {
    return *internalController;
}

ModulationMatrix::VoiceMatrix& ModulationMatrix::createVoice() {
    voices.push_back(std::make_unique<VoiceMatrix>(*this));
    for (const SlotState& slot : slots) voices.back()->controller(slot.levelTarget);
    // A global reader may ask the first voice for a target that none of its elements reads.
    for (std::size_t t = 0; t < targets.size(); ++t) {
        if (targets[t].globalController) voices.back()->controller(static_cast<int>(t));
    }
    return *voices.back();
}

void ModulationMatrix::setGlobalSource(int source, wave::Producer& producer) {
    globalSources[static_cast<std::size_t>(source)] = &producer;
    for (auto& voice : voices) voice->setSource(source, producer);
}

wave::Producer& ModulationMatrix::globalTarget(int index) {
    TargetState& state = target(index);
    if (!state.globalController) {
        state.globalController = std::make_unique<GlobalTargetController>(*this, index);
        for (auto& voice : voices) voice->controller(index);
    }
    return *state.globalController;
}

ModulationMatrix::GlobalModulationProducer& ModulationMatrix::globalProducer(int index) {
    TargetState& state = target(index);
    if (!state.producer) state.producer = std::make_unique<GlobalModulationProducer>(*this, state);
    return *state.producer;
}

void ModulationMatrix::setBaseValue(int index, float value) {
    TargetState& state = target(index);
    state.baseValue = value;
    if (state.base) state.base->setValue(state.scale * value, -1.0f);
}

void ModulationMatrix::endUpdate() {
    if (--updateDepth != 0 || !dirty) return;
    dirty = false;
    // All that has changed starts from off, so that the order of the slots alone decides which of two slots
    // that close a loop stays off, and not what stood there before.
    for (SlotState& slot : slots) {
        if (slot.pending) slot.mode = SlotMode::Off;
    }
    for (SlotState& slot : slots) {
        if (!slot.pending) continue;
        slot.pending = false;
        updateSlot(slot, kRefreshLevel | kRefreshTarget);
    }
    updateOffSlots(nullptr);
}

void ModulationMatrix::updateSlot(SlotState& slot, int flags) {
    if (updateDepth > 0) {
        dirty = slot.pending = true;
        return;
    }
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
    if (updateDepth > 0) return;
    for (SlotState& slot : slots) {
        if (&slot == except || slot.mode != SlotMode::Off) continue;
        if (slot.source >= 0 || slot.target >= 0) updateSlot(slot, kRefreshLevel);
    }
}

bool ModulationMatrix::canConnect(const SlotState& slot) {
    if (slot.source < 0 || slot.target < 0 || slot.bypassed) return false;
    std::fill(visited.begin(), visited.end(), char{0});
    visitUpstream(slot);
    return !visited[static_cast<std::size_t>(slot.target)];
}

void ModulationMatrix::visitUpstream(const SlotState& slot) {
    const auto visit = [this](int index) {
        if (visited[static_cast<std::size_t>(index)]) return;
        visited[static_cast<std::size_t>(index)] = 1;
        for (const SlotState* feeding : target(index).slots) {
            if (feeding->mode != SlotMode::Off) visitUpstream(*feeding);
        }
    };
    visit(slot.levelTarget);
    for (int input : layout_.sources[static_cast<std::size_t>(slot.source)].inputs) visit(input);
}

ModulationMatrix::SlotMode ModulationMatrix::modeWhenConnected(const SlotState& slot) {
    if (!globalSources[static_cast<std::size_t>(slot.source)]) return SlotMode::PerVoice;
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
    if (updateDepth > 0) {
        dirty = slot.pending = true;
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
