#pragma once

#include <span>

#include "foundation/realtime.hpp"
#include "plugin/midi/midi_message.hpp"

namespace vanta {

/// Where the host's transport stands.
struct HostTransport {
    double tempo = 120.0;  ///< beats per minute
    double beats = 0.0;    ///< quarters since the start
    bool isRolling = false;
};

/// Something that happens within a block, at a sample of it.
struct HostEvent {
    enum class Kind { Value, Midi, Transport };

    int offset = 0;  ///< samples from the start of the block; what lies outside counts as its nearest end
    Kind kind = Kind::Value;
    int index = -1;      ///< of a parameter
    double value = 0.0;  ///< in the parameter's own numbers
    MidiMessage midi{};
    HostTransport transport{};  ///< from this sample on
};

/// The events of a block, drawn one by one, so that nobody has to keep room for them all.
class HostEventSource {
public:
    virtual ~HostEventSource() = default;
    /// The next in the order of time; false when there is none left.
    VANTA_REALTIME virtual bool next(HostEvent& event) = 0;
};

/// Of a block in which nothing happens.
class NoHostEvents final : public HostEventSource {
public:
    bool next(HostEvent&) override { return false; }
};

/// A block of audio, channels in the order of the layout. Buffers of inputs may be those of outputs.
struct HostBlock {
    std::span<const float* const> inputs;     ///< null is silence; missing channels at the end as well
    std::span<const float* const> sideChain;  ///< the same; empty if none is connected
    std::span<float* const> outputs;          ///< null is not wanted
    int samples = 0;
    HostTransport transport{};  ///< as the block begins
};

}  // namespace vanta
