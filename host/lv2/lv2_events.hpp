#pragma once

#include <lv2/atom/atom.h>

#include <span>

#include "host/common/host_block.hpp"
#include "host/lv2/lv2_uris.hpp"

namespace vanta {

/// Walks the events of a sequence, in the host's memory.
class Lv2SequenceReader {
public:
    /// Null, or what is no sequence, has no events.
    VANTA_REALTIME Lv2SequenceReader(const LV2_Atom_Sequence* sequence, const Lv2Uris& uris);
    /// Null after the last. What does not fit into the sequence ends it.
    VANTA_REALTIME const LV2_Atom_Event* next();

private:
    const std::byte* position_ = nullptr;
    const std::byte* end_ = nullptr;
};

/// The events of a block: what the control ports say at its start, then MIDI as it comes.
class Lv2Events final : public HostEventSource {
public:
    Lv2Events(std::span<const HostEvent> values, const LV2_Atom_Sequence* sequence, const Lv2Uris& uris)
        : values_(values), sequence_(sequence, uris), uris_(uris) {}

    bool next(HostEvent& event) override;

private:
    std::span<const HostEvent> values_;
    Lv2SequenceReader sequence_;
    const Lv2Uris& uris_;
};

/// Where the transport stands, from what the host tells of it now and then.
class Lv2Transport {
public:
    /// Takes the positions of a block; the result is where the transport stands as the block begins.
    VANTA_REALTIME HostTransport read(const LV2_Atom_Sequence* sequence, const Lv2Uris& uris,
                                      double sampleRate);
    /// The block is over.
    VANTA_REALTIME void advance(int samples, double sampleRate);

private:
    /// Whether it says where the transport stands.
    bool take(const LV2_Atom_Object& position, const Lv2Uris& uris);
    double beatsPerSample(double sampleRate) const;

    HostTransport now_;
    double speed_ = 0.0;
};

}  // namespace vanta
