#include "plugin/processor/bypass_processor.hpp"

#include <algorithm>
#include <cstring>

#include "foundation/numbers.hpp"
#include "kernel/mix.hpp"

namespace vanta {

namespace {

constexpr float kFadeMs = 50.0f;

}  // namespace

GenericPluginProcessor::BypassProcessor::BypassProcessor(GenericPluginProcessor& owner)
    : processor_(owner),
      dryMix_(owner.environment(), 0.0f),
      dry_(owner.environment(), channelCount(owner.channelLayout)) {}

void GenericPluginProcessor::BypassProcessor::prepare(int largestLatency) {
    if (hasInput()) dry_.prepare(largestLatency);
}

void GenericPluginProcessor::BypassProcessor::fadeTo(float dry) {
    dryMix_.setValue(dry, kFadeMs);
}

void GenericPluginProcessor::BypassProcessor::setBypassed(bool state) {
    if (state == bypassed_) return;
    bypassed_ = state;
    fadeInPending_ = !state && rested_ && processor_.latency() > 0;
    if (!fadeInPending_) fadeTo(state ? 1.0f : 0.0f);
    if (!state) rested_ = false;
}

void GenericPluginProcessor::BypassProcessor::reset() {
    resetPending_ = true;
    dry_.clear();
}

// Since it was last reset the graph has taken in as much signal as its position has moved: a graph that is
// started anew meanwhile, or with another latency, fills anew.
int GenericPluginProcessor::BypassProcessor::samplesToFill() const {
    const wave::Environment& environment = processor_.environment();
    const std::int64_t filled = environment.position() - environment.resetPosition();
    return static_cast<int>(std::max<std::int64_t>(processor_.latency() - filled, 0));
}

int GenericPluginProcessor::BypassProcessor::samplesToSeam() const {
    int nearest = 0;
    for (const int next :
         {fadeInPending_ ? samplesToFill() : 0, dryMix_.samplesToTarget(), dry_.samplesToSeam()}) {
        if (next > 0) nearest = nearest > 0 ? std::min(nearest, next) : next;
    }
    return nearest;
}

bool GenericPluginProcessor::BypassProcessor::isWet() const {
    return !dryMix_.isMoving() && nearlyEqual(dryMix_.target(), 0.0f);
}

void GenericPluginProcessor::BypassProcessor::beginFade() {
    if (resetPending_) {
        resetPending_ = false;
        if (fadeInPending_) {
            fadeInPending_ = false;
            dryMix_.setValue(0.0f, -1.0f);
        }
        dryMix_.jumpToTarget();
    }
    if (fadeInPending_ && samplesToFill() == 0) {
        fadeInPending_ = false;
        fadeTo(0.0f);
    }
}

void GenericPluginProcessor::BypassProcessor::process(const float* const* inputs, float* const* outputs,
                                                      int channelCount, int offset, int samples) {
    wave::Environment& environment = processor_.environment();
    environment.advanceTick();
    beginFade();
    if (hasInput()) {
        dry_.beginBlock(processor_.latency(), !isWet(), samples);
        for (int c = 0; c < channelCount; ++c)
            dry_.write(c, inputs[c] ? inputs[c] + offset : nullptr, samples);
    }

    bool constant = false;
    const float* mix = dryMix_.read(samples, &constant).data();
    const bool wholeDry = constant && nearlyEqual(mix[0], 1.0f);
    const bool wholeWet = constant && nearlyEqual(mix[0], 0.0f);
    const bool processed = !wholeDry || fadeInPending_;
    if (processed) {
        processor_.fetchOutputs(wetPointers_.data(), channelCount, samples);
    } else {
        rested_ = true;
    }
    environment.run(samples, processed ? 0 : wave::Environment::kPositionOnly);

    const auto count = static_cast<std::size_t>(samples);
    for (int c = 0; c < channelCount; ++c) {
        float* out = outputs[c] + offset;
        const float* wet = wetPointers_[static_cast<std::size_t>(c)];
        if (wholeWet) {
            std::memcpy(out, wet, count * sizeof(float));
            continue;
        }
        readDry(c, out, samples);
        if (!wholeDry) kernel::crossfade(wet, out, mix, out, count);
    }
}

void GenericPluginProcessor::BypassProcessor::readDry(int channel, float* out, int samples) {
    if (hasInput()) {
        dry_.read(channel, out, samples);
    } else {
        std::fill(out, out + samples, 0.0f);
    }
}

}  // namespace vanta
