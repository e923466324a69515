#pragma once

#include <array>
#include <cstdint>

#include "foundation/realtime.hpp"
#include "plugin/midi/event_receiver.hpp"

namespace vanta {

class MidiMessageReceiver {
public:
    virtual ~MidiMessageReceiver() = default;
    /// A status byte and two data bytes (MIDI 1.0); shorter messages are padded with zeros.
    VANTA_REALTIME virtual void receive(const std::uint8_t message[3]) = 0;
};

/// Turns messages into calls on a music receiver: each goes to the slot for all channels and to its
/// channel's.
class MidiDecoder final : public MidiMessageReceiver {
public:
    explicit MidiDecoder(AbstractMusicEventReceiver& receiver) : receiver_(receiver) {}
    void receive(const std::uint8_t message[3]) override;

private:
    struct Record {
        int bank = 0;  ///< what bank select has chosen, 14 bits
    };

    void decode(std::size_t slot, int status, int data1, int data2);
    void decodeController(Record& record, AbstractChannelEventReceiver& channel, int number, int data2);

    std::array<Record, AbstractMusicEventReceiver::kSlots> channels_;
    AbstractMusicEventReceiver& receiver_;
};

}  // namespace vanta
