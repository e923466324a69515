#include "host/offline/offline_host.hpp"

#include <algorithm>

#include "foundation/numbers.hpp"

namespace vanta {

OfflineHost::OfflineHost(const LimiterSettings& settings, ChannelLayout layout, float sampleRate,
                         int blockSamples, int sideChainChannels)
    : processor(layout), channels(static_cast<std::size_t>(channelCount(layout))), blockLength(blockSamples) {
    processor.setSampleRate(sampleRate);
    processor.setSideChainInUse(sideChainChannels > 0);
    settings.applyTo(processor);
    // Takes the settings up before the first sample, so that nothing moves while audio runs.
    processor.reset();

    for (std::size_t i = 0; i < channels; ++i) {
        auto& gain = processor.channel(static_cast<int>(i)).totalGain();
        meters.push_back(std::make_unique<GainReductionMeter>(gain));
        meters.back()->start(latency());
    }
    const std::size_t buffers = channels + static_cast<std::size_t>(sideChainChannels);
    const auto length = static_cast<std::size_t>(blockLength);
    samples.resize(buffers * length);
    for (std::size_t i = 0; i < buffers; ++i) pointers.push_back(samples.data() + i * length);
}

void OfflineHost::process() {
    processor.processBlock(pointers.data(), static_cast<int>(pointers.size()), pointers.data(),
                           static_cast<int>(channels), blockLength);
}

double OfflineHost::largestReductionDb() const {
    float smallest = 1.0f;
    for (const auto& meter : meters) smallest = std::min(smallest, meter->smallestGain());
    return std::max(0.0, -dbFromGain(static_cast<double>(smallest)));
}

double OfflineHost::meanReductionDb() const {
    double sum = 0.0;
    for (const auto& meter : meters) sum += meter->meanReductionDb();
    return sum / static_cast<double>(meters.size());
}

double OfflineHost::reducedShare() const {
    double sum = 0.0;
    for (const auto& meter : meters) sum += meter->reducedShare();
    return sum / static_cast<double>(meters.size());
}

void OfflineHost::endReductionAfter(std::int64_t count) {
    for (const auto& meter : meters) meter->endAfter(count);
}

}  // namespace vanta
