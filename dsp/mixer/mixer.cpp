#include "dsp/mixer/mixer.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/numbers.hpp"
#include "kernel/mix.hpp"

namespace vanta {

namespace {

constexpr std::size_t kMostInputsToSum = 16;
constexpr float kSmallestDivisor = 1e-9f;

bool isKnown(int operation) {
    return operation >= Mixer::Add && operation <= Mixer::Minimize;
}

bool isUnity(const kernel::MixTerm& term) {
    return term.constantGain && nearlyEqual(term.gain[0], 1.0f);
}

}  // namespace

Mixer::Mixer(wave::Environment& owner, int inputs)
    : Source(owner), inputCount(this, inputs), operation(this, Add) {
    resize(inputs);
    makeResettable();
}

Mixer::~Mixer() = default;

void Mixer::propertyChanged(AbstractProperty& property) {
    if (&property == &inputCount) resize(inputCount);
    updatePath();
}

void Mixer::resize(int count) {
    const auto wanted = static_cast<std::size_t>(std::max(count, 0));
    while (inputs_.size() > wanted) inputs_.pop_back();
    while (inputs_.size() < wanted) {
        inputs_.push_back(std::make_unique<Input>(environment(), lowestGain_, highestGain_));
    }
    // The audio thread lists its terms here without growing it.
    terms_.reserve(wanted);
    updatePath();
}

void Mixer::setInput(int index, wave::Producer* producer) {
    at(index).producer = producer;
    updatePath();
}

void Mixer::widenGainRange() {
    highestGain_ = 2.0f;
    for (const auto& input : inputs_) input->gain.parameter().setRange(lowestGain_, highestGain_);
}

void Mixer::updatePath() {
    useSum_ = operation == Add && inputs_.size() <= kMostInputsToSum &&
              std::all_of(inputs_.begin(), inputs_.end(), [](const auto& input) { return input->producer; });
}

void Mixer::produce(wave::BasicBlock<float>* block, int samples, int) {
    terms_.clear();
    allConstant_ = true;
    const Input* only = nullptr;
    if (useSum_) {
        only = collectForSum(samples);
    } else {
        collectAll(samples);
    }
    if (terms_.empty()) {
        publishSilence();
        return;
    }
    if (only && isUnity(terms_[0])) {
        publish(*only->producer);
        return;
    }
    const std::size_t count = allConstant_ ? 1 : static_cast<std::size_t>(samples);
    float* out = block->data();
    if (useSum_) {
        kernel::sumProducts(terms_, out, count);
    } else {
        combine(out, count);
    }
    if (!allConstant_) return;
    kernel::fill(out[0], out, static_cast<std::size_t>(samples));
    setConstant(true);
}

/// Leaves out what is turned off or silent. Returns the input that is alone, or null.
const Mixer::Input* Mixer::collectForSum(int samples) {
    const Input* last = nullptr;
    for (const auto& input : inputs_) {
        const float* gain = input->gain.pullData(samples);
        if (input->gain.isConstant() && nearlyEqual(gain[0], 0.0f)) continue;
        const float* signal = input->producer->pullData(samples);
        if (input->producer->isConstant() && signal[0] == 0.0f) continue;
        list(*input, gain, samples);
        last = input.get();
    }
    return terms_.size() == 1 ? last : nullptr;
}

void Mixer::collectAll(int samples) {
    for (const auto& input : inputs_) {
        if (input->producer) list(*input, input->gain.pullData(samples), samples);
    }
}

void Mixer::list(Input& input, const float* gain, int samples) {
    const bool constantGain = input.gain.isConstant();
    terms_.push_back({input.producer->pullData(samples), gain, constantGain});
    allConstant_ = allConstant_ && constantGain && input.producer->isConstant();
}

void Mixer::combine(float* out, std::size_t count) {
    const float* result = applyFirst(out, count);
    if (operation == DivideHolding) {
        divideHolding(out, count);
        return;
    }
    for (std::size_t i = 1; i < terms_.size(); ++i) {
        applyFurther(result, terms_[i], out, count);
        result = out;
    }
}

/// Returns where the first summand stands: in `out`, or, to save a copy, where it came from.
const float* Mixer::applyFirst(float* out, std::size_t count) const {
    const kernel::MixTerm& term = terms_[0];
    const bool magnitude = operation == LargestMagnitude || operation == DivideLimited ||
                           operation == Divide || operation == DivideHolding;
    if (magnitude) kernel::magnitude(term.signal, out, count);
    if (magnitude && isUnity(term)) return out;
    const bool moreFollow = terms_.size() > 1 && isKnown(operation);
    if (!magnitude && moreFollow && term.constantGain && term.gain[0] == 1.0f) return term.signal;
    const float* signal = magnitude ? out : term.signal;
    if (term.constantGain) {
        kernel::scale(signal, term.gain[0], out, count);
    } else {
        kernel::multiply(signal, term.gain, out, count);
    }
    return out;
}

void Mixer::applyFurther(const float* result, const kernel::MixTerm& term, float* out,
                         std::size_t count) const {
    static constexpr const kernel::TernaryKernel* kKernels[] = {
        &kernel::multiplyAdd,
        &kernel::subtractProduct,
        &kernel::maximumMagnitude,
        &kernel::multiplyTwice,
        &kernel::divideLimited,
        &kernel::divideFloored,
        nullptr,  // holds from sample to sample, see divideHolding
        &kernel::maximumProduct,
        &kernel::minimumProduct,
    };
    if (isKnown(operation)) (*kKernels[operation])(result, term.signal, term.gain, out, count);
}

/// Sample by sample through all inputs, so that what is held does not depend on the size of the blocks.
void Mixer::divideHolding(float* out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t t = 1; t < terms_.size(); ++t) {
            const float divisor = std::abs(terms_[t].signal[i] * terms_[t].gain[i]);
            if (divisor > kSmallestDivisor)
                held_ = std::min(out[i] / divisor, std::numeric_limits<float>::max());
            out[i] = held_;
        }
    }
}

}  // namespace vanta
