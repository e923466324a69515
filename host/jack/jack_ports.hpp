#pragma once

#include <jack/jack.h>

#include <array>
#include <span>
#include <vector>

#include "host/common/host_block.hpp"
#include "host/common/speakers.hpp"

namespace vanta {

/// The ports of a limiter: in_L and its like, side_L, out_L, midi_in.
class JackPorts {
public:
    using Ports = std::vector<jack_port_t*>;

    /// Failure if the server has no room for them.
    JackPorts(jack_client_t& client, ChannelLayout layout, bool sideChain);

    // In the order of portSpeakers.

    const Ports& inputs() const { return inputs_; }
    const Ports& sideChain() const { return sideChain_; }
    const Ports& outputs() const { return outputs_; }
    jack_port_t* midi() const { return midi_; }

    /// Any connection to a port of the side chain. The main thread: JACK may lock.
    bool isSideChainConnected() const;
    /// How late things are, for a limiter that is late by `samples`. Within JACK's latency callback.
    void tellLatency(jack_latency_callback_mode_t mode, int samples) const;

    /// Audio thread: the buffers of this cycle, channels in the order of the layout. They hold until the
    /// next.
    VANTA_REALTIME HostBlock block(jack_nframes_t frames, bool sideChain);

private:
    template <typename Sample>
    using Buffers = std::array<Sample*, kMaxChannels>;

    Ports inputs_;
    Ports sideChain_;
    Ports outputs_;
    jack_port_t* midi_;

    ChannelMap map_;
    Buffers<const float> inputBuffers_{};
    Buffers<const float> sideChainBuffers_{};
    Buffers<float> outputBuffers_{};
};

}  // namespace vanta
