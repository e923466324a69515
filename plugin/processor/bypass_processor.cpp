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
    : processor_(owner), dryMix_(owner.environment(), 0.0f), scratch_(owner.environment()) {
    if (owner.processingMode != 1) return;
    for (int c = 0; c < channelCount(owner.channelLayout); ++c) {
        dryDelays_.push_back(std::make_unique<wave::Delay>(owner.environment()));
    }
}

void GenericPluginProcessor::BypassProcessor::prepare(int largestLatency) {
    for (auto& delay : dryDelays_) {
        delay->setMaxDelay(largestLatency);
        delay->setDelay(dryLatency_);
    }
}

void GenericPluginProcessor::BypassProcessor::fadeTo(float dry) {
    dryMix_.setValue(dry, kFadeMs);
}

void GenericPluginProcessor::BypassProcessor::setBypassed(bool state) {
    if (state == bypassed_) return;
    bypassed_ = state;
    fadeInPending_ = !state && rested_ && processor_.latency() > 0;
    holdSamples_ = fadeInPending_ ? processor_.latency() : 0;
    if (!fadeInPending_) fadeTo(state ? 1.0f : 0.0f);
    if (!state) rested_ = false;
}

void GenericPluginProcessor::BypassProcessor::reset() {
    resetPending_ = true;
    followLatency();
    for (auto& delay : dryDelays_) delay->clear();
}

// What was delayed by another latency would come at the wrong time.
void GenericPluginProcessor::BypassProcessor::followLatency() {
    const int latency = processor_.latency();
    if (latency == dryLatency_) return;
    dryLatency_ = latency;
    for (auto& delay : dryDelays_) {
        delay->setDelay(latency);
        delay->clear();
    }
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
    if (fadeInPending_ && holdSamples_ <= 0) {
        fadeInPending_ = false;
        fadeTo(0.0f);
    }
}

void GenericPluginProcessor::BypassProcessor::process(const float* const* inputs, float* const* outputs,
                                                      int channelCount, int offset, int samples) {
    followLatency();
    wave::Environment& environment = processor_.environment();
    environment.advanceTick();
    beginFade();
    if (fadeInPending_) holdSamples_ -= samples;

    bool constant = false;
    const float* mix = dryMix_.read(samples, &constant).data();
    writeDry(inputs, channelCount, offset, samples);

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
        readDry(inputs[c] ? inputs[c] + offset : nullptr, c, out, samples);
        if (!wholeDry) kernel::crossfade(wet, out, mix, out, count);
    }
}

void GenericPluginProcessor::BypassProcessor::writeDry(const float* const* inputs, int channelCount,
                                                       int offset, int samples) {
    if (!hasDryDelay()) return;
    for (int c = 0; c < channelCount; ++c) {
        if (inputs[c]) {
            kernel::sanitize(inputs[c] + offset, scratch_.data(), static_cast<std::size_t>(samples));
        } else {
            std::fill(scratch_.data(), scratch_.data() + samples, 0.0f);
        }
        dryDelays_[static_cast<std::size_t>(c)]->write(scratch_.data(), samples);
    }
}

void GenericPluginProcessor::BypassProcessor::readDry(const float* input, int channel, float* out,
                                                      int samples) {
    if (hasDryDelay()) {
        const wave::Delay& delay = *dryDelays_[static_cast<std::size_t>(channel)];
        delay.read(delay.delay(), out, samples);
    } else if (processor_.processingMode != 1 || !input) {
        std::fill(out, out + samples, 0.0f);
    } else {
        kernel::sanitize(input, out, static_cast<std::size_t>(samples));
    }
}

}  // namespace vanta
