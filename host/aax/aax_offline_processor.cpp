#include "host/aax/aax_offline_processor.hpp"

#include <algorithm>

#include "host/aax/aax_plugin_adapter.hpp"
#include "host/aax/transport_position.hpp"

namespace vanta {

/// The effect's description makes the two for each other.
AaxPluginAdapter& AaxOfflineProcessor::adapter() const {
    return static_cast<AaxPluginAdapter&>(present(GetEffectParameters()));
}

AAX_Result AaxOfflineProcessor::begin(std::int32_t windowSize) {
    return guarded([&] {
        if (windowSize < 0) return AAX_ERROR_INVALID_ARGUMENT;
        scratch_.resize(static_cast<std::size_t>(windowSize));
        adapter().prepareOffline();
        tempo_ = tempoOf(GetTransport());
        return AAX_SUCCESS;
    });
}

AAX_Result AaxOfflineProcessor::PreRender(std::int32_t, std::int32_t, std::int32_t windowSize) {
    return begin(windowSize);
}

AAX_Result AaxOfflineProcessor::PreAnalyze(std::int32_t, std::int32_t windowSize) {
    return begin(windowSize);
}

AAX_Result AaxOfflineProcessor::AnalyzeAudio(float* const* inputs, std::int32_t inputCount,
                                             const std::int32_t* windowSize) {
    return guarded([&] {
        if (!windowSize) return AAX_SUCCESS;
        const auto samples = static_cast<std::size_t>(std::max(*windowSize, 0));
        if (scratch_.size() < samples) scratch_.resize(samples);
        float* const output = scratch_.data();
        return RenderAudio(inputs, inputCount, &output, 1, windowSize);
    });
}

AAX_Result AaxOfflineProcessor::RenderAudio(float* const* inputs, std::int32_t inputCount,
                                            float* const* outputs, std::int32_t outputCount,
                                            const std::int32_t* windowSize) {
    return guarded([&] {
        if (!windowSize || *windowSize < 1 || !inputs || inputCount < 1 || !outputs || outputCount < 1)
            return AAX_SUCCESS;
        const Window window{inputs, std::min(inputCount, kMaxChannels), outputs, outputCount, *windowSize};
        const std::int32_t latency = adapter().model().latency();
        if (latency >= 1) {
            if (GetLocation() == 0) prime(window, latency);
            readAhead(window, GetLocation() + latency);
        }
        process(window, window.samples);
        return AAX_SUCCESS;
    });
}

/// Fills the limiter with the beginning of the selection, as far as its latency. What comes out is not yet
/// the selection's.
void AaxOfflineProcessor::prime(const Window& window, std::int32_t latency) const {
    for (std::int32_t left = latency; left > 0;) {
        std::int32_t samples = std::min(left, window.samples);
        check(GetAudio(window.inputs, window.inputCount, latency - left, &samples));
        process(window, samples);
        left -= samples;
    }
}

void AaxOfflineProcessor::readAhead(const Window& window, std::int64_t location) const {
    for (std::int32_t have = 0; have < window.samples;) {
        std::array<float*, kMaxChannels> rest{};
        for (std::int32_t i = 0; i < window.inputCount; ++i)
            rest[static_cast<std::size_t>(i)] = window.inputs[i] + have;
        std::int32_t samples = window.samples - have;
        check(GetAudio(rest.data(), window.inputCount, location + have, &samples));
        have += samples;
    }
}

void AaxOfflineProcessor::process(const Window& window, std::int32_t samples) const {
    adapter().processWindow(window.inputs, window.inputCount, window.outputs, window.outputCount, samples,
                            tempo_);
}

}  // namespace vanta
