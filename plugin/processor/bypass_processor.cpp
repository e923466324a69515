#include "plugin/processor/bypass_processor.hpp"

#include <algorithm>
#include <cstring>

#include "dsp/kernel/mix.hpp"
#include "foundation/numbers.hpp"

namespace vanta {

namespace {

constexpr float kFadeMs = 50.0f;

}  // namespace

GenericPluginProcessor::BypassProcessor::BypassProcessor(GenericPluginProcessor& owner)
    : processor(owner), dryMix(owner.environment(), 0.0f), scratch(owner.environment()) {}

void GenericPluginProcessor::BypassProcessor::fadeTo(float dry) {
    dryMix.setValue(dry, kFadeMs);
}

void GenericPluginProcessor::BypassProcessor::setBypassed(bool state) {
    if (state == bypassed_) return;
    bypassed_ = state;
    fadeInPending = !state && rested && processor.latency() > 0;
    holdSamples = fadeInPending ? processor.latency() : 0;
    if (!fadeInPending) fadeTo(state ? 1.0f : 0.0f);
    if (!state) rested = false;
}

void GenericPluginProcessor::BypassProcessor::reset() {
    resetPending = true;
    matchLatency();
    for (auto& delay : dryDelays) {
        if (delay) delay->clear();
    }
}

// Allocates, but only when the latency has changed.
void GenericPluginProcessor::BypassProcessor::matchLatency() {
    const int latency = processor.latency();
    if (processor.processingMode != 1 || latency == dryDelayLength) return;
    dryDelayLength = latency;
    const int channelTotal = channelCount(processor.channelLayout);
    for (int c = 0; c < kMaxChannels; ++c) {
        auto& delay = dryDelays[static_cast<std::size_t>(c)];
        delay.reset();
        if (latency < 1 || c >= channelTotal) continue;
        delay = std::make_unique<wave::Delay>(processor.environment(), latency);
        delay->setDelay(latency);
    }
}

void GenericPluginProcessor::BypassProcessor::beginFade() {
    if (resetPending) {
        resetPending = false;
        if (fadeInPending) {
            fadeInPending = false;
            dryMix.setValue(0.0f, -1.0f);
        }
        dryMix.jumpToTarget();
    }
    if (fadeInPending && holdSamples <= 0) {
        fadeInPending = false;
        fadeTo(0.0f);
    }
}

void GenericPluginProcessor::BypassProcessor::process(const float* const* inputs, float* const* outputs,
                                                      int channelCount, int offset, int samples) {
    matchLatency();
    wave::Environment& environment = processor.environment();
    environment.advanceTick();
    beginFade();
    if (fadeInPending) holdSamples -= samples;

    bool constant = false;
    const float* mix = dryMix.read(samples, &constant).data();
    writeDry(inputs, channelCount, offset, samples);

    const bool wholeDry = constant && nearlyEqual(mix[0], 1.0f);
    const bool wholeWet = constant && nearlyEqual(mix[0], 0.0f);
    const bool processed = !wholeDry || fadeInPending;
    if (processed) {
        processor.fetchOutputs(wetPointers.data(), channelCount, samples);
    } else {
        rested = true;
    }
    environment.run(samples, processed ? 0 : wave::Environment::kPositionOnly);

    const auto count = static_cast<std::size_t>(samples);
    for (int c = 0; c < channelCount; ++c) {
        float* out = outputs[c] + offset;
        const float* wet = wetPointers[static_cast<std::size_t>(c)];
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
    if (dryDelayLength < 1) return;
    for (int c = 0; c < channelCount; ++c) {
        auto& delay = dryDelays[static_cast<std::size_t>(c)];
        if (!delay) continue;
        if (inputs[c]) {
            kernel::sanitize(inputs[c] + offset, scratch.data(), static_cast<std::size_t>(samples));
        } else {
            std::fill(scratch.data(), scratch.data() + samples, 0.0f);
        }
        delay->write(scratch.data(), samples);
    }
}

void GenericPluginProcessor::BypassProcessor::readDry(const float* input, int channel, float* out,
                                                      int samples) {
    const auto& delay = dryDelays[static_cast<std::size_t>(channel)];
    if (processor.processingMode != 1 || (!input && !delay)) {
        std::fill(out, out + samples, 0.0f);
    } else if (delay) {
        delay->read(dryDelayLength, out, samples);
    } else {
        kernel::sanitize(input, out, static_cast<std::size_t>(samples));
    }
}

}  // namespace vanta
