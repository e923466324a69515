#include "host/vst3/audio_processor.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace vanta::vst3 {
namespace {

constexpr std::uint32_t kInfiniteTail = std::numeric_limits<std::uint32_t>::max();

template <typename Sample>
Sample* channelOf(const v3_audio_bus_buffers& bus, int channel) {
    return bus.channel_buffers_32 && channel < bus.num_channels ? bus.channel_buffers_32[channel] : nullptr;
}

HostTransport transportOf(const v3_process_context* context, double sampleRate) {
    HostTransport transport;
    if (!context) return transport;
    const auto has = [context](std::uint32_t flag) { return (context->state & flag) != 0; };
    if (has(V3_PROCESS_CTX_TEMPO_VALID) && std::isfinite(context->bpm) && context->bpm > 0.0) {
        transport.tempo = context->bpm;
    }
    transport.beats =
        has(V3_PROCESS_CTX_PROJECT_TIME_VALID)
            ? context->project_time_quarters
            : static_cast<double>(context->project_time_in_samples) / sampleRate * transport.tempo / 60.0;
    if (!std::isfinite(transport.beats)) transport.beats = 0.0;
    transport.isRolling = has(V3_PROCESS_CTX_PLAYING);
    return transport;
}

}  // namespace

const v3_audio_processor_cpp AudioProcessor::kTable{
    kUnknown,
    {
        .set_bus_arrangements = entry<&AudioProcessor::setBusArrangements>,
        .get_bus_arrangement = entry<&AudioProcessor::busArrangement>,
        .can_process_sample_size = entry<&AudioProcessor::canProcessSampleSize>,
        .get_latency_samples = entry<&AudioProcessor::latency>,
        .setup_processing = entry<&AudioProcessor::setupProcessing>,
        .set_processing = entry<&AudioProcessor::setProcessing>,
        .process = entry<&AudioProcessor::process>,
        .get_tail_samples = entry<&AudioProcessor::tail>,
    },
};

AudioProcessor::AudioProcessor(ComObject& object, Instance& instance)
    : ComInterface(kTable, object),
      instance_(instance),
      events_(instance.parameters, instance.programs, instance.automation) {}

v3_result AudioProcessor::setBusArrangements(v3_speaker_arrangement* inputs, std::int32_t inputCount,
                                             v3_speaker_arrangement* outputs, std::int32_t outputCount) {
    if (inputCount < 0 || outputCount < 0 || (inputCount && !inputs) || (outputCount && !outputs)) {
        return V3_INVALID_ARG;
    }
    if (instance_.active.load()) return V3_FALSE;
    const bool taken = instance_.buses.arrange({inputs, static_cast<std::size_t>(inputCount)},
                                               {outputs, static_cast<std::size_t>(outputCount)});
    try {
        instance_.changeLayout();
    } catch (...) {
        instance_.buses.arrange(instance_.plugin.layout());
        throw;
    }
    return taken ? V3_TRUE : V3_FALSE;
}

v3_result AudioProcessor::busArrangement(std::int32_t direction, std::int32_t index,
                                         v3_speaker_arrangement* arrangement) {
    return arrangement && instance_.buses.arrangement(direction, index, *arrangement) ? V3_OK
                                                                                      : V3_INVALID_ARG;
}

v3_result AudioProcessor::canProcessSampleSize(std::int32_t size) noexcept {
    return size == V3_SAMPLE_32 ? V3_TRUE : V3_FALSE;
}

std::uint32_t AudioProcessor::latency() noexcept {
    return static_cast<std::uint32_t>(std::max(instance_.plugin.latency(), 0));
}

std::uint32_t AudioProcessor::tail() noexcept {
    const int samples = instance_.plugin.processor().tailLength();
    return samples < 0 ? kInfiniteTail : static_cast<std::uint32_t>(samples);
}

v3_result AudioProcessor::setupProcessing(v3_process_setup* setup) {
    if (!setup) return V3_INVALID_ARG;
    if (instance_.active.load() || setup->symbolic_sample_size != V3_SAMPLE_32) return V3_FALSE;
    const double rate = setup->sample_rate;
    if (!(rate >= HostedPlugin::kLowestRate && rate <= HostedPlugin::kHighestRate)) return V3_FALSE;
    instance_.setup = *setup;
    return V3_OK;
}

v3_result AudioProcessor::setProcessing(v3_bool processing) {
    if (!processing) instance_.automation.stopped();
    if (!instance_.active.load()) return processing ? V3_NOT_INITIALIZED : V3_OK;
    if (processing) instance_.plugin.reset();
    return V3_OK;
}

// Audio

v3_result AudioProcessor::process(v3_process_data* data) {
    const RealtimeScope scope;
    if (!data || data->nframes < 0 || data->symbolic_sample_size != V3_SAMPLE_32) return V3_INVALID_ARG;
    if (!instance_.active.load()) return V3_NOT_INITIALIZED;
    point(*data);
    const auto channels = static_cast<std::size_t>(instance_.buses.channels().count);
    const HostBlock block{
        .inputs = {inputs_.data(), channels},
        .sideChain = {sideChain_.data(), static_cast<std::size_t>(pointSideChain(*data))},
        .outputs = {outputs_.data(), channels},
        .samples = data->nframes,
        .transport = transportOf(data->ctx, instance_.plugin.sampleRate()),
    };
    events_.begin(data->input_params, data->input_events);
    instance_.plugin.process(block, events_);
    instance_.automation.played(data->nframes);
    instance_.reports.tellWithBlock(data->output_params);
    finish(*data);
    return V3_OK;
}

void AudioProcessor::point(const v3_process_data& data) {
    const ChannelMap& map = instance_.buses.channels();
    const bool hasInput = data.num_input_buses > 0 && data.inputs;
    const bool hasOutput = data.num_output_buses > 0 && data.outputs;
    for (int i = 0; i < map.count; ++i) {
        const auto channel = static_cast<std::size_t>(i);
        const int hostChannel = map.hostChannel[channel];
        inputs_[channel] = hasInput ? channelOf<const float>(data.inputs[0], hostChannel) : nullptr;
        outputs_[channel] = hasOutput ? channelOf<float>(data.outputs[0], hostChannel) : nullptr;
    }
}

/// The result is the number of channels: none if there is nothing that could be a key. A mono one is for all.
int AudioProcessor::pointSideChain(const v3_process_data& data) {
    if (!instance_.buses.hasSideChain() || data.num_input_buses < 2 || !data.inputs) return 0;
    const v3_audio_bus_buffers& bus = data.inputs[1];
    if (bus.num_channels <= 0 || !bus.channel_buffers_32) return 0;
    const ChannelMap& map = instance_.buses.channels();
    for (int i = 0; i < map.count; ++i) {
        const auto channel = static_cast<std::size_t>(i);
        const int hostChannel = bus.num_channels == 1 ? 0 : map.hostChannel[channel];
        sideChain_[channel] = channelOf<const float>(bus, hostChannel);
    }
    return map.count;
}

/// Nothing that a host hands over stays as it was.
void AudioProcessor::finish(const v3_process_data& data) const {
    for (int i = 0; data.outputs && i < data.num_output_buses; ++i) {
        v3_audio_bus_buffers& bus = data.outputs[i];
        bus.channel_silence_bitset = 0;
        for (int channel = i == 0 ? instance_.buses.channels().count : 0; channel < bus.num_channels;
             ++channel) {
            if (float* unused = channelOf<float>(bus, channel)) std::fill_n(unused, data.nframes, 0.0f);
        }
    }
}

// Context

const v3_process_context_requirements_cpp ContextRequirements::kTable{
    kUnknown,
    {.get_process_context_requirements = entry<&ContextRequirements::requirements>},
};

ContextRequirements::ContextRequirements(ComObject& object) : ComInterface(kTable, object) {}

std::uint32_t ContextRequirements::requirements() noexcept {
    return V3_PROCESS_CTX_NEED_TEMPO | V3_PROCESS_CTX_NEED_PROJECT_TIME | V3_PROCESS_CTX_NEED_TRANSPORT_STATE;
}

}  // namespace vanta::vst3
