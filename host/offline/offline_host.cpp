#include "host/offline/offline_host.hpp"

#include <algorithm>

#include "foundation/binary_data.hpp"
#include "foundation/numbers.hpp"

namespace vanta {

OfflineHost::OfflineHost(const LimiterSettings& settings, ChannelLayout layout, float sampleRate,
                         int blockSamples, int sideChainChannels, const StylePatch* patch)
    : processor_(layout, patch),
      channels_(static_cast<std::size_t>(channelCount(layout))),
      blockLength_(blockSamples) {
    processor_.prepare(sampleRate, blockSamples);
    processor_.setSideChainInUse(sideChainChannels > 0);
    settings.applyTo(processor_);
    // Takes the settings up before the first sample, so that nothing moves while audio runs.
    processor_.reset();

    for (std::size_t i = 0; i < channels_; ++i) {
        auto& gain = processor_.channel(static_cast<int>(i)).totalGain();
        meters_.push_back(std::make_unique<GainReductionMeter>(gain));
        meters_.back()->start(latency());
    }
    const std::size_t buffers = channels_ + static_cast<std::size_t>(sideChainChannels);
    const auto length = static_cast<std::size_t>(blockLength_);
    samples_.resize(buffers * length);
    for (std::size_t i = 0; i < buffers; ++i) pointers_.push_back(samples_.data() + i * length);
}

void OfflineHost::process() {
    processor_.processBlock(pointers_.data(), static_cast<int>(pointers_.size()), pointers_.data(),
                            static_cast<int>(channels_), blockLength_);
}

void OfflineHost::readLevels(LevelExchange& levels) {
    transfer_.clear();
    transfer_.seekp(0);
    transfer_.seekg(0);
    BinaryDataWriter writer(transfer_);
    processor_.writeVisualData(writer);
    BinaryDataReader reader(transfer_);
    levels.read(reader);
}

double OfflineHost::largestReductionDb() const {
    float smallest = 1.0f;
    for (const auto& meter : meters_) smallest = std::min(smallest, meter->smallestGain());
    return std::max(0.0, -dbFromGain(static_cast<double>(smallest)));
}

double OfflineHost::meanReductionDb() const {
    double sum = 0.0;
    for (const auto& meter : meters_) sum += meter->meanReductionDb();
    return sum / static_cast<double>(meters_.size());
}

double OfflineHost::reducedShare() const {
    double sum = 0.0;
    for (const auto& meter : meters_) sum += meter->reducedShare();
    return sum / static_cast<double>(meters_.size());
}

void OfflineHost::endReductionAfter(std::int64_t count) {
    for (const auto& meter : meters_) meter->endAfter(count);
}

}  // namespace vanta
