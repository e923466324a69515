#include "limiter/modulation/modulation_matrix.hpp"

#include <utility>

#include "limiter/modulation/voice_matrix.hpp"

namespace vanta {

class ModulationMatrix::InternalController final : public Controller {
public:
    explicit InternalController(ModulationMatrix& matrix) : matrix_(matrix) {}

    bool isBypassed(int slot) const override { return at(slot).bypassed; }
    bool isInverted(int slot) const override { return at(slot).inverted; }
    float level(int slot) const override { return matrix_.target(at(slot).levelTarget).baseValue; }
    int source(int slot) const override { return at(slot).source; }
    int target(int slot) const override { return at(slot).target; }

    void setBypassed(int slot, bool bypassed) override {
        if (std::exchange(at(slot).bypassed, bypassed) != bypassed) reconnect(at(slot));
    }
    void setInverted(int slot, bool inverted) override {
        if (std::exchange(at(slot).inverted, inverted) != inverted) matrix_.refreshLevel(at(slot));
    }
    void setLevel(int slot, float level) override { matrix_.setBaseValue(at(slot).levelTarget, level); }
    void setSource(int slot, int source) override {
        if (std::exchange(at(slot).source, source) != source) reconnect(at(slot));
    }
    void setTarget(int slot, int target) override {
        if (at(slot).target != target) matrix_.moveSlot(at(slot), target);
    }
    std::vector<int> slotsInto(int target) const override {
        std::vector<int> result;
        for (const SlotState* slot : matrix_.target(target).slots) result.push_back(slot->index);
        return result;
    }
    std::vector<int> slotsFrom(int source) const override {
        std::vector<int> result;
        for (const SlotState& slot : matrix_.slots_) {
            if (slot.source == source) result.push_back(slot.index);
        }
        return result;
    }

private:
    void reconnect(SlotState& slot) {
        matrix_.updateSlot(slot, kRefreshLevel);
        matrix_.updateOffSlots(&slot);
    }
    SlotState& at(int slot) const { return matrix_.slots_[static_cast<std::size_t>(slot)]; }
    ModulationMatrix& matrix_;
};

ModulationMatrix::ModulationMatrix(wave::Environment& environment, ModulationLayout layout)
    : Component(environment),
      layout_(std::move(layout)),
      globalSources_(layout_.sources.size(), nullptr),
      targets_(static_cast<std::size_t>(layout_.targetCount())),
      slots_(static_cast<std::size_t>(layout_.slotCount)),
      internalController_(std::make_unique<InternalController>(*this)),
      visited_(targets_.size(), 0) {
    for (std::size_t t = 0; t < targets_.size(); ++t) {
        const int range = layout_.rangeOf[t];
        TargetState& state = targets_[t];
        if (range >= 0) state.range = &layout_.ranges[static_cast<std::size_t>(range)];
        // A style may send every slot to one target; room for that keeps style changes free of allocation.
        state.slots.reserve(slots_.size());
        if (isAudio(state)) continue;
        state.base = std::make_unique<wave::FloatParameter>(environment, 0.0f);
        setLimits(state);
    }
    for (std::size_t s = 0; s < slots_.size(); ++s) {
        slots_[s].index = static_cast<int>(s);
        slots_[s].levelTarget = layout_.elementTargetCount + static_cast<int>(s);
        target(slots_[s].levelTarget).levelOfSlot = &slots_[s];
        globalProducer(slots_[s].levelTarget);
    }
}

ModulationMatrix::~ModulationMatrix() = default;

ModulationMatrix::Controller& ModulationMatrix::controller() {
    return *internalController_;
}

ModulationMatrix::VoiceMatrix& ModulationMatrix::createVoice() {
    voices_.push_back(std::make_unique<VoiceMatrix>(*this));
    for (const SlotState& slot : slots_) voices_.back()->controller(slot.levelTarget);
    // A global reader may ask the first voice for a target that none of its elements reads.
    for (std::size_t t = 0; t < targets_.size(); ++t) {
        if (targets_[t].globalController) voices_.back()->controller(static_cast<int>(t));
    }
    return *voices_.back();
}

void ModulationMatrix::setGlobalSource(int source, wave::Producer& producer) {
    globalSources_[static_cast<std::size_t>(source)] = &producer;
    for (auto& voice : voices_) voice->setSource(source, producer);
}

wave::Producer& ModulationMatrix::globalTarget(int index) {
    TargetState& state = target(index);
    if (!state.globalController) {
        state.globalController = std::make_unique<GlobalTargetController>(*this, index);
        for (auto& voice : voices_) voice->controller(index);
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
    if (--updateDepth_ != 0 || !dirty_) return;
    dirty_ = false;
    // All that has changed starts from off, so that the order of the slots alone decides which of two slots
    // that close a loop stays off, and not what stood there before.
    for (SlotState& slot : slots_) {
        if (slot.pending) slot.mode = SlotMode::Off;
    }
    for (SlotState& slot : slots_) {
        if (!slot.pending) continue;
        slot.pending = false;
        updateSlot(slot, kRefreshLevel | kRefreshTarget);
    }
    updateOffSlots(nullptr);
}

}  // namespace vanta
