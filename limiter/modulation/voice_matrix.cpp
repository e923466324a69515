#include "limiter/modulation/voice_matrix.hpp"

#include <algorithm>

#include "foundation/numbers.hpp"
#include "kernel/mix.hpp"

namespace vanta {

void ModulationMatrix::TargetSum::start(const float* block, bool isConstant) {
    if (!block) return;
    empty_ = false;
    constant_ = isConstant;
    value_ = block[0];
    first_ = block;
}

// Leaves the running result in `out`, whole.
void ModulationMatrix::TargetSum::expand() {
    if (constant_) {
        std::fill(out_, out_ + count_, value_);
    } else if (first_) {
        std::copy(first_, first_ + count_, out_);
    }
    first_ = nullptr;
    constant_ = false;
}

void ModulationMatrix::TargetSum::add(const float* source, bool sourceConstant, const float* level,
                                      bool levelConstant) {
    const auto n = static_cast<std::size_t>(count_);
    if (constant_ && sourceConstant && levelConstant) {
        value_ += source[0] * level[0];
        empty_ = false;
        first_ = nullptr;
        return;
    }
    if (empty_ || (constant_ && value_ == 0.0f)) {
        // Nothing to add to yet: the first signal is written, not added.
        if (levelConstant) {
            kernel::scale(source, level[0], out_, n);
        } else {
            kernel::multiply(source, level, out_, n);
        }
        empty_ = constant_ = false;
        first_ = nullptr;
        return;
    }
    const float* running = first_ && !constant_ ? first_ : out_;
    if (constant_) expand();
    first_ = nullptr;
    if (levelConstant) {
        kernel::addScaled(running, source, level[0], out_, n);
    } else {
        kernel::multiplyAdd(running, source, level, out_, n);
    }
}

void ModulationMatrix::TargetSum::clamp(float low, float high) {
    if (constant_) {
        value_ = value_ < low ? low : std::min(value_, high);
    } else {
        kernel::clamp(first_ ? first_ : out_, low, high, out_, static_cast<std::size_t>(count_));
        first_ = nullptr;
    }
}

void ModulationMatrix::TargetSum::sanitize() {
    if (constant_) {
        kernel::sanitize(&value_, &value_, 1);
        return;
    }
    kernel::sanitize(first_ ? first_ : out_, out_, static_cast<std::size_t>(count_));
    first_ = nullptr;
}

bool ModulationMatrix::TargetSum::finish() {
    const bool wasConstant = constant_;
    if (constant_ || first_) expand();
    return wasConstant;
}

ModulationMatrix::GlobalModulationProducer::GlobalModulationProducer(ModulationMatrix& matrix,
                                                                     TargetState& state)
    : Source(matrix.environment()), matrix_(matrix), state_(state) {}

void ModulationMatrix::GlobalModulationProducer::produce(wave::BasicBlock<float>* block, int samples, int) {
    const wave::BasicBlock<float>* base = nullptr;
    bool baseConstant = true;
    if (state_.base) base = &state_.base->readInStream(samples, &baseConstant);

    TargetSum sum(block->data(), samples);
    sum.start(base ? base->data() : nullptr, baseConstant);
    bool contributed = false;
    for (const SlotState* slot : state_.slots) {
        if (slot->mode != SlotMode::Global) continue;
        wave::Producer& source = *matrix_.globalSources_[static_cast<std::size_t>(slot->source)];
        GlobalModulationProducer& level = *matrix_.target(slot->levelTarget).producer;
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
    if (state_.allGlobal && !matrix_.isAudio(state_)) sum.clamp(state_.lowLimit, state_.highLimit);
    setConstant(sum.finish());
}

ModulationMatrix::VoiceMatrix::VoiceMatrix(ModulationMatrix& matrix)
    : matrix_(matrix), sources_(matrix.globalSources_), targetControllers_(matrix.targets_.size()) {}

ModulationMatrix::VoiceMatrix::~VoiceMatrix() = default;

ModulationMatrix::VoiceMatrix::TargetController& ModulationMatrix::VoiceMatrix::controller(int target) {
    auto& entry = targetControllers_[static_cast<std::size_t>(target)];
    if (!entry) entry = std::make_unique<TargetController>(*this, target);
    return *entry;
}

ModulationMatrix::VoiceMatrix::TargetController::TargetController(VoiceMatrix& voice, int target)
    : Source(voice.matrix_.environment()),
      voice_(voice),
      state_(voice.matrix_.target(target)),
      global_(voice.matrix_.globalProducer(target)) {}

void ModulationMatrix::VoiceMatrix::TargetController::produce(wave::BasicBlock<float>* block, int samples,
                                                              int) {
    if (plainEpoch_ == environment().epoch()) {
        plain_->pull(samples);
        publish(*plain_);
        return;
    }
    global_.pull(samples);
    if (state_.allGlobal) {
        publish(global_);
        return;
    }
    const bool audio = voice_.matrix_.isAudio(state_);
    const bool mayPass = audio && !voice_.matrix_.layout_.limitsSignals;
    if (mayPass && state_.slots.size() == 1 && publishSingleSlot(samples)) return;

    TargetSum sum(block->data(), samples);
    sum.start(global_.current().data(), global_.isConstant());
    for (const SlotState* slot : state_.slots) {
        if (slot->mode != SlotMode::PerVoice) continue;
        wave::Producer* source = voice_.source(slot->source);
        if (!source) continue;
        TargetController& level = voice_.controller(slot->levelTarget);
        const float* in = source->pullData(samples);
        const float* gain = level.pullData(samples);
        sum.add(in, source->isConstant(), gain, level.isConstant());
    }
    if (voice_.matrix_.layout_.limitsSignals) sum.sanitize();
    if (!audio) sum.clamp(state_.lowLimit, state_.highLimit);
    setConstant(sum.finish());
}

// A plain connection adds neither copy nor multiplication.
bool ModulationMatrix::VoiceMatrix::TargetController::publishSingleSlot(int samples) {
    const SlotState& slot = *state_.slots.front();
    wave::Producer* source = voice_.source(slot.source);
    if (!source) return false;
    TargetController& level = voice_.controller(slot.levelTarget);
    const float* gain = level.pullData(samples);
    if (!level.isConstant() || !nearlyEqual(gain[0], 1.0f)) return false;
    source->pull(samples);
    publish(*source);
    plain_ = source;
    plainEpoch_ = level.isRestingForGood() ? environment().epoch() : 0;
    return true;
}

ModulationMatrix::GlobalTargetController::GlobalTargetController(ModulationMatrix& matrix, int target)
    : Source(matrix.environment(), wave::OwnBlock::No), matrix_(matrix), target_(target) {
    matrix_.globalProducer(target_);
}

void ModulationMatrix::GlobalTargetController::produce(wave::BasicBlock<float>*, int samples, int) {
    TargetState& state = matrix_.target(target_);
    wave::Producer& value = state.allGlobal || matrix_.voices_.empty()
                                ? static_cast<wave::Producer&>(*state.producer)
                                : matrix_.voices_.front()->controller(target_);
    value.pull(samples);
    publish(value);
}

}  // namespace vanta
