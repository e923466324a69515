// Blocks, on the audio thread.

#include <algorithm>
#include <cmath>
#include <thread>

#include "foundation/numbers.hpp"
#include "host/aax/aax_plugin_adapter.hpp"
#include "host/aax/stem_formats.hpp"
#include "host/aax/transport_position.hpp"

namespace vanta {
namespace {

/// In the host's order; channels that it lacks are its last one.
template <typename T>
void pick(T* const* host, int hostCount, std::span<const int> map, T** channels) {
    for (std::size_t i = 0; i < map.size(); ++i) channels[i] = host[std::min(map[i], hostCount - 1)];
}

}  // namespace

void aaxRender(void* const* const* contexts, std::int32_t count) {
    for (std::int32_t i = 0; i < count; ++i) {
        const AaxRenderContext context(contexts[i]);
        if (AaxPluginAdapter* const adapter = context.adapter()) adapter->render(context);
    }
}

void AaxPluginAdapter::render(const AaxRenderContext& context) {
    processor().setBypassed(context.value<std::int32_t>(AaxField::MasterBypass, 0) != 0, 0);
    takeSampleRate(context.value(AaxField::SampleRate, 0.0f));
    takeMidi(context.at<AAX_IMIDINode>(AaxField::MidiIn));
    takeTransport(context.at<AAX_IMIDINode>(AaxField::Transport));
    if (auto* const request = context.at<std::int32_t>(AaxField::ResetRequest); request && *request) {
        *request = 0;
        processor().reset();
    }
    const auto* const inputs = context.at<const float* const>(AaxField::AudioIn);
    auto* const outputs = context.at<float* const>(AaxField::AudioOut);
    const auto samples = context.value<std::int32_t>(AaxField::BufferLength, 0);
    if (!inputs || !outputs || samples < 0) return;

    const auto map = hostChannelsOf(layout_);
    const int count = static_cast<int>(map.size());
    Inputs in{};
    std::array<float*, kMaxChannels> out{};
    pick(inputs, monoToStereo_ ? 1 : count, map, in.data());
    pick(outputs, count, map, out.data());
    if (std::find(out.begin(), out.begin() + count, nullptr) != out.begin() + count) return;
    const int sides = takeSideChain(inputs, context.value<std::int32_t>(AaxField::SideChain, -1), in);
    processor().processBlock(in.data(), count + sides, out.data(), count, samples);
    if (auto* const meters = context.at<float>(AaxField::Meters)) showGainReduction(meters);
}

void AaxPluginAdapter::takeSampleRate(float rate) {
    if (isSupportedRate(rate) && !nearlyEqual(rate, processor().sampleRate())) prepare(rate);
}

void AaxPluginAdapter::takeMidi(AAX_IMIDINode* node) {
    const AAX_CMidiStream* const stream = node ? node->GetNodeBuffer() : nullptr;
    if (!stream) return;
    for (std::uint32_t i = 0; i < stream->count; ++i) {
        const AAX_CMidiPacket& packet = stream->packets[i];
        if (packet.length == 0) continue;
        const auto byte = [&packet](std::uint32_t at) -> std::uint8_t {
            return at < packet.length ? packet.data[at] : std::uint8_t{0};
        };
        queueMidi(static_cast<int>(std::min(packet.timestamp, std::uint32_t{1} << 30)),
                  {byte(0), byte(1), byte(2)});
    }
}

void AaxPluginAdapter::takeTransport(AAX_IMIDINode* node) {
    const AAX_ITransport* const ofNode = node ? node->GetTransport() : nullptr;
    const TransportPosition position = positionOf(ofNode ? ofNode : transport_);
    processor().updateTransport(static_cast<float>(position.tempo), static_cast<float>(position.beats));
}

/// The result is the number of channels that were added.
int AaxPluginAdapter::takeSideChain(const float* const* inputs, int index, Inputs& channels) {
    const int count = channelCount(layout_);
    // Some hosts name a main channel where nothing is connected.
    const bool isConnected = model().sideChainAvailable && index >= count;
    processor().setSideChainInUse(isConnected);
    if (!isConnected) return 0;
    std::fill_n(channels.begin() + count, count, inputs[index]);
    return count;
}

void AaxPluginAdapter::transferLevels() {
    while (levelsTaken_.test_and_set(std::memory_order_acquire)) std::this_thread::yield();
    UnifiedPluginAdapter::transferLevels();
    levelsTaken_.clear(std::memory_order_release);
}

void AaxPluginAdapter::showGainReduction(float* meter) {
    if (model().gainReductionSource < 0) return;
    if (!levelsTaken_.test_and_set(std::memory_order_acquire)) {
        shownReduction_ = static_cast<float>(1.0 - gainFromDb(static_cast<double>(gainReductionDb())));
        levelsTaken_.clear(std::memory_order_release);
    }
    *meter = shownReduction_;
}

/// 0 or less; of two channels that which is turned down further.
float AaxPluginAdapter::gainReductionDb() {
    const auto levels = processor().levels();
    const auto source = static_cast<std::size_t>(model().gainReductionSource);
    const float first = levels[source]->value(wave::LevelSource::Current);
    const bool ofChannel = model().gainReductionSource >= model().globalLevelSources;
    if (!ofChannel || channelCount(layout_) != 2) return first;
    const std::size_t second = source + static_cast<std::size_t>(model().levelSourcesPerChannel);
    return std::min(first, levels[second]->value(wave::LevelSource::Current));
}

// Offline

void AaxPluginAdapter::prepareOffline() {
    deliverBeforeRender();
    processor().reset();
}

void AaxPluginAdapter::processWindow(const float* const* inputs, int inputCount, float* const* outputs,
                                     int outputCount, int samples, double tempo) {
    const auto map = hostChannelsOf(layout_);
    const int count = static_cast<int>(map.size());
    Inputs in{};
    std::array<float*, kMaxChannels> out{};
    pick(inputs, inputCount, map, in.data());
    pick(outputs, outputCount, map, out.data());
    const bool hasSideChain = model().sideChainAvailable && model().sideChainWanted;
    if (hasSideChain) std::copy_n(in.begin(), count, in.begin() + count);
    processor().setSideChainInUse(hasSideChain);
    processor().updateTransport(static_cast<float>(tempo), 0.0f);
    processor().processBlock(in.data(), hasSideChain ? 2 * count : count, out.data(), count, samples);
}

}  // namespace vanta
