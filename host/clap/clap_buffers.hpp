#pragma once

#include <clap/process.h>

#include <array>

#include "host/common/host_block.hpp"
#include "host/common/speakers.hpp"

namespace vanta {

/// The buffers of a CLAP block in the order of a layout.
class ClapBuffers {
public:
    VANTA_REALTIME ClapBuffers(const clap_process_t& process, const ChannelMap& map);

    /// Whether there are buffers that we cannot use: double precision alone.
    bool areUnusable() const { return unusable_; }
    VANTA_REALTIME HostBlock block() const;

private:
    const clap_audio_buffer_t* port(const clap_audio_buffer_t* ports, std::uint32_t count,
                                    std::uint32_t index);
    float* channel(const clap_audio_buffer_t* port, std::size_t channel) const;

    const ChannelMap& map_;
    const clap_process_t& process_;
    std::array<const float*, kMaxChannels> inputs_{};
    std::array<const float*, kMaxChannels> sideChain_{};
    std::array<float*, kMaxChannels> outputs_{};
    bool hasSideChain_ = false;
    bool unusable_ = false;
};

}  // namespace vanta
