#pragma once

#include <jack/jack.h>

#include <array>
#include <atomic>
#include <cstdint>
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
    /// How late things are one way, for a limiter that is late by `samples`, as JACK asks in its latency
    /// callback. Tells only what has changed: PipeWire's JACK (0.3.65) may wait for itself if it is told
    /// within a question.
    void answerLatency(jack_latency_callback_mode_t mode, int samples);
    /// The same both ways, whatever was told before. The main thread: nobody waits there.
    void tellLatency(int samples);

    /// Audio thread: the buffers of this cycle, channels in the order of the layout. They hold until the
    /// next.
    VANTA_REALTIME HostBlock block(jack_nframes_t frames, bool sideChain);

private:
    /// The ranges that a group of ports was told last, minimum and maximum in one number.
    using Told = std::array<std::atomic<std::uint64_t>, kMaxChannels>;

    void tell(jack_port_t* port, jack_latency_callback_mode_t mode, jack_latency_range_t range,
              std::atomic<std::uint64_t>& told);
    void forgetWhatWasTold();

    template <typename Sample>
    using Buffers = std::array<Sample*, kMaxChannels>;

    Ports inputs_;
    Ports sideChain_;
    Ports outputs_;
    jack_port_t* midi_;

    Told toldInputs_{};
    Told toldSideChain_{};
    Told toldOutputs_{};
    std::atomic<std::uint64_t> toldMidi_{0};

    ChannelMap map_;
    Buffers<const float> inputBuffers_{};
    Buffers<const float> sideChainBuffers_{};
    Buffers<float> outputBuffers_{};
};

}  // namespace vanta
