#include "limiter/modulation/voice_matrix.hpp"

#include <algorithm>

#include "dsp/kernel/mix.hpp"
#include "foundation/numbers.hpp"

namespace vanta {

void ModulationMatrix::TargetSum::start(const float* block, bool isConstant) {
    if (!block) return;
    empty = false;
    constant = isConstant;
    value = block[0];
    first = block;
}

// Leaves the running result in `out`, whole.
void ModulationMatrix::TargetSum::expand() {
    if (constant) {
        std::fill(out, out + count, value);
    } else if (first) {
        std::copy(first, first + count, out);
    }
    first = nullptr;
    constant = false;
}

void ModulationMatrix::TargetSum::add(const float* source, bool sourceConstant, const float* level,
                                      bool levelConstant) {
    const auto n = static_cast<std::size_t>(count);
    if (constant && sourceConstant && levelConstant) {
        value += source[0] * level[0];
        empty = false;
        first = nullptr;
        return;
    }
    if (empty || (constant && value == 0.0f)) {
        // Nothing to add to yet: the first signal is written, not added.
        if (levelConstant) {
            kernel::scale(source, level[0], out, n);
        } else {
            kernel::multiply(source, level, out, n);
        }
        empty = constant = false;
        first = nullptr;
        return;
    }
    const float* running = first && !constant ? first : out;
    if (constant) expand();
    first = nullptr;
    if (levelConstant) {
        kernel::addScaled(running, source, level[0], out, n);
    } else {
        kernel::multiplyAdd(running, source, level, out, n);
    }
}

void ModulationMatrix::TargetSum::clamp(float low, float high) {
    if (constant) {
        value = value < low ? low : std::min(value, high);
    } else {
        kernel::clamp(first ? first : out, low, high, out, static_cast<std::size_t>(count));
        first = nullptr;
    }
}

bool ModulationMatrix::TargetSum::finish() {
    const bool wasConstant = constant;
    if (constant || first) expand();
    return wasConstant;
}

ModulationMatrix::GlobalModulationProducer::GlobalModulationProducer(ModulationMatrix& owner,
                                                                     TargetState& targetState)
    : Source(owner.environment()), matrix(owner), state(targetState) {}

void ModulationMatrix::GlobalModulationProducer::produce(wave::BasicBlock<float>* block, int samples, int) {
    const wave::BasicBlock<float>* base = nullptr;
    bool baseConstant = true;
    if (state.base) base = &state.base->readInStream(samples, &baseConstant);

    TargetSum sum(block->data(), samples);
    sum.start(base ? base->data() : nullptr, baseConstant);
    bool contributed = false;
    for (const SlotState* slot : state.slots) {
        if (slot->mode != SlotMode::Global) continue;
        wave::Producer& source = *matrix.globalSources[static_cast<std::size_t>(slot->source)];
        GlobalModulationProducer& level = *matrix.target(slot->levelTarget).producer;
        const float* in = source.pullData(samples);
        const float* gain = level.pullData(samples);
        sum.add(in, source.isConstant(), gain, level.isConstant());
        contributed = true;
    }
    if (!contributed) {
        if (base) {
            publish(*base, baseConstant ? kConstant : 0);
        } else {
            publishSilence();
        }
        return;
    }
    if (state.allGlobal && !matrix.isAudio(state)) sum.clamp(state.lowLimit, state.highLimit);
    setConstant(sum.finish());
}

ModulationMatrix::VoiceMatrix::VoiceMatrix(ModulationMatrix& owner)
    : matrix(owner), sources(owner.globalSources), targetControllers(owner.targets.size()) {}

ModulationMatrix::VoiceMatrix::~VoiceMatrix() = default;

ModulationMatrix::VoiceMatrix::TargetController& ModulationMatrix::VoiceMatrix::controller(int target) {
    auto& entry = targetControllers[static_cast<std::size_t>(target)];
    if (!entry) entry = std::make_unique<TargetController>(*this, target);
    return *entry;
}

ModulationMatrix::VoiceMatrix::TargetController::TargetController(VoiceMatrix& owner, int targetIndex)
    : Source(owner.matrix.environment()),
      voice(owner),
      state(owner.matrix.target(targetIndex)),
      global(owner.matrix.globalProducer(targetIndex)) {}

void ModulationMatrix::VoiceMatrix::TargetController::produce(wave::BasicBlock<float>* block, int samples,
                                                              int) {
    global.pull(samples);
    if (state.allGlobal) {
        publish(global);
        return;
    }
    const bool audio = voice.matrix.isAudio(state);
    if (audio && state.slots.size() == 1 && publishSingleSlot(samples)) return;

    TargetSum sum(block->data(), samples);
    sum.start(global.current().data(), global.isConstant());
    for (const SlotState* slot : state.slots) {
        if (slot->mode != SlotMode::PerVoice) continue;
        wave::Producer* source = voice.source(slot->source);
        if (!source) continue;
        TargetController& level = voice.controller(slot->levelTarget);
        const float* in = source->pullData(samples);
        const float* gain = level.pullData(samples);
        sum.add(in, source->isConstant(), gain, level.isConstant());
    }
    if (!audio) sum.clamp(state.lowLimit, state.highLimit);
    setConstant(sum.finish());
}

// A plain connection adds neither copy nor multiplication.
bool ModulationMatrix::VoiceMatrix::TargetController::publishSingleSlot(int samples) {
    const SlotState& slot = *state.slots.front();
    wave::Producer* source = voice.source(slot.source);
    if (!source) return false;
    TargetController& level = voice.controller(slot.levelTarget);
    const float* gain = level.pullData(samples);
    if (!level.isConstant() || !nearlyEqual(gain[0], 1.0f)) return false;
    source->pull(samples);
    publish(*source);
    return true;
}

ModulationMatrix::GlobalTargetController::GlobalTargetController(ModulationMatrix& owner, int targetIndex)
    : Source(owner.environment(), wave::OwnBlock::No), matrix(owner), target(targetIndex) {
    matrix.globalProducer(target);
}

void ModulationMatrix::GlobalTargetController::produce(wave::BasicBlock<float>*, int samples, int) {
    TargetState& state = matrix.target(target);
    wave::Producer& value = state.allGlobal || matrix.voices.empty()
                                ? static_cast<wave::Producer&>(*state.producer)
                                : matrix.voices.front()->controller(target);
    value.pull(samples);
    publish(value);
}

}  // namespace vanta
