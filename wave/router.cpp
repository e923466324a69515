#include "wave/router.hpp"

#include <cstring>

#include "foundation/numbers.hpp"
#include "kernel/mix.hpp"

namespace vanta::wave {

Router::Router(Environment& owner, int inputCount)
    : Source(owner), selected(this, 0), fadeTime(this, 20.0f), warmUpSamples(nullptr, 0) {
    for (int i = 0; i < inputCount; ++i) inputs_.push_back(std::make_unique<Input>(owner));
}

void Router::setInput(int index, Producer& input) {
    Input& entry = *inputs_[static_cast<std::size_t>(index)];
    entry.source = &input;
    environment().noteChange();
    entry.gain.setValue(index == selected ? 1.0f : 0.0f, 0.0f);
}

void Router::propertyChanged(AbstractProperty& property) {
    if (&property != &selected) return;
    // What is heard already is filled with signal, and what nobody listens to needs no preparation.
    const bool heard = inputs_[static_cast<std::size_t>(selected)]->gain.value() > 0.0f;
    const int wait = heard || !runs() ? 0 : warmUpSamples;
    for (int i = 0; i < inputCount(); ++i) {
        inputs_[static_cast<std::size_t>(i)]->gain.setValue(i == selected ? 1.0f : 0.0f, fadeTime, wait);
    }
}

/// Whether the last block ended here.
bool Router::runs() const {
    const std::int64_t position = environment().position();
    return continues(expectedPosition_) && position > environment().discontinuityPosition();
}

void Router::produce(BasicBlock<float>* block, int samples, int) {
    expectedPosition_ = environment().position() + samples;
    // A channel has many routers, and hardly ever does one of them fade.
    if (onlyEpoch_ == environment().epoch()) {
        only_->pull(samples);
        publish(*only_);
        return;
    }
    const auto count = static_cast<std::size_t>(samples);
    Producer* remembered = nullptr;
    bool mixed = false;
    bool steady = true;
    for (const auto& input : inputs_) {
        bool constant = false;
        const float* gain = input->gain.readInStream(samples, &constant).data();
        steady = steady && constant;
        if (!input->source || (constant && nearlyEqual(gain[0], 0.0f))) continue;
        const float* in = input->source->pullData(samples);
        if (!mixed && !remembered && constant && nearlyEqual(gain[0], 1.0f)) {
            remembered = input->source;
            continue;
        }
        if (!mixed) {
            if (remembered) {
                std::memcpy(block->data(), remembered->current().data(), count * sizeof(float));
            } else {
                std::memset(block->data(), 0, count * sizeof(float));
            }
            mixed = true;
        }
        kernel::multiplyAdd(block->data(), in, gain, block->data(), count);
    }
    if (mixed) return;
    if (!remembered) {
        publishSilence();
        return;
    }
    publish(*remembered);
    only_ = remembered;
    onlyEpoch_ = steady ? environment().epoch() : 0;
}

}  // namespace vanta::wave
