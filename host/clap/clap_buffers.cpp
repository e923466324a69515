#include "host/clap/clap_buffers.hpp"

#include "host/clap/clap_events.hpp"

namespace vanta {

ClapBuffers::ClapBuffers(const clap_process_t& process, const ChannelMap& map)
    : map_(map), process_(process) {
    const clap_audio_buffer_t* in = port(process.audio_inputs, process.audio_inputs_count, 0);
    const clap_audio_buffer_t* side = port(process.audio_inputs, process.audio_inputs_count, 1);
    const clap_audio_buffer_t* out = port(process.audio_outputs, process.audio_outputs_count, 0);
    hasSideChain_ = side != nullptr;
    for (std::size_t i = 0; i < static_cast<std::size_t>(map.count); ++i) {
        inputs_[i] = channel(in, i);
        outputs_[i] = channel(out, i);
        // One key is everybody's.
        sideChain_[i] = side && side->channel_count == 1 ? side->data32[0] : channel(side, i);
    }
    // A host's hint about last time's silence does not hold for what we write.
    if (process.audio_outputs && process.audio_outputs_count > 0) process.audio_outputs[0].constant_mask = 0;
}

/// Null if it has no samples for us.
const clap_audio_buffer_t* ClapBuffers::port(const clap_audio_buffer_t* ports, std::uint32_t count,
                                             std::uint32_t index) {
    if (!ports || index >= count) return nullptr;
    if (!ports[index].data32 && ports[index].data64) unusable_ = true;
    return ports[index].data32 && ports[index].channel_count > 0 ? &ports[index] : nullptr;
}

float* ClapBuffers::channel(const clap_audio_buffer_t* port, std::size_t channel) const {
    const auto at = static_cast<std::uint32_t>(map_.hostChannel[channel]);
    return port && at < port->channel_count ? port->data32[at] : nullptr;
}

HostBlock ClapBuffers::block() const {
    const auto channels = static_cast<std::size_t>(map_.count);
    HostBlock block;
    block.inputs = std::span(inputs_).first(channels);
    block.sideChain = std::span(sideChain_).first(hasSideChain_ ? channels : 0);
    block.outputs = std::span(outputs_).first(channels);
    block.samples = static_cast<int>(process_.frames_count);
    block.transport = transportOf(process_.transport);
    return block;
}

}  // namespace vanta
