#pragma once

#include <cstdint>

#include "host/common/host_block.hpp"

namespace vanta {

/// The channel messages that came with a cycle, as events of its block. What else comes by MIDI, such as
/// system exclusive, concerns nobody here.
class MidiInput final : public HostEventSource {
public:
    /// `buffer` as jack_port_get_buffer gives it.
    explicit MidiInput(void* buffer);
    VANTA_REALTIME bool next(HostEvent& event) override;

private:
    void* buffer_;
    std::uint32_t next_ = 0;
    std::uint32_t count_;
};

}  // namespace vanta
