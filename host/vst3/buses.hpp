#pragma once

#include <atomic>
#include <span>

#include <travesty/component.h>

#include "host/vst3/speaker_arrangements.hpp"

namespace vanta::vst3 {

/// The buses of an instance: audio in and out, a side chain that may be mono, and MIDI. The host's main
/// thread, but for what is said otherwise.
class Buses {
public:
    explicit Buses(ChannelLayout layout) { arrange(layout); }

    /// What a host wants. True if it is all taken as it is; if not, the buses are what comes nearest, for the
    /// host to ask for.
    bool arrange(std::span<const v3_speaker_arrangement> inputs,
                 std::span<const v3_speaker_arrangement> outputs);
    /// As they are at first.
    void arrange(ChannelLayout layout);
    ChannelLayout layout() const { return layout_; }

    int count(int mediaType, int direction) const;
    /// False if there is no such bus, as with those that follow.
    bool describe(int mediaType, int direction, int index, v3_bus_info& info) const;
    bool arrangement(int direction, int index, v3_speaker_arrangement& arrangement) const;
    bool activate(int mediaType, int direction, int index, bool active);

    /// Which of a bus's channels is which of ours. Any thread while no bus changes.
    const ChannelMap& channels() const { return channels_; }
    /// Any thread.
    bool hasSideChain() const { return sideChainActive_.load() && sideChain_ != kNoSpeakers; }

private:
    bool has(int mediaType, int direction, int index) const;
    bool arrangeSideChain(v3_speaker_arrangement wanted);

    ChannelLayout layout_ = kStereoLayout;
    v3_speaker_arrangement main_ = kNoSpeakers;
    v3_speaker_arrangement sideChain_ = kNoSpeakers;
    ChannelMap channels_;
    std::atomic<bool> sideChainActive_{false};
};

}  // namespace vanta::vst3
