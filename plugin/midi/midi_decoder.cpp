#include "plugin/midi/midi_decoder.hpp"

namespace vanta {

namespace {

constexpr float kDataScale = 1.0f / 127.0f;
constexpr float kBendScale = 1.0f / 16383.0f;

constexpr int kBankSelectMsb = 0;
constexpr int kBankSelectLsb = 32;
constexpr int kAllNotesOff = 123;

}  // namespace

void MidiDecoder::receive(const std::uint8_t message[3]) {
    const int status = message[0];
    const int data1 = message[1];
    const int data2 = message[2];
    if (auto* all = receiver_.channelReceiver(0)) all->rawMessage(status, data1, data2);
    if (status < 0x80) return;
    if (status < 0xF0) {
        decode(0, status, data1, data2);
        decode(static_cast<std::size_t>((status & 15) + 1), status, data1, data2);
    } else if (status == 0xFF && receiver_.systemReceiver()) {
        receiver_.systemReceiver()->systemReset();
    }
}

void MidiDecoder::decode(std::size_t slot, int status, int data1, int data2) {
    AbstractChannelEventReceiver* channel = receiver_.channelReceiver(slot);
    if (!channel) return;
    const float value = static_cast<float>(data2) * kDataScale;
    switch (status >> 4) {
        case 0x8:
            return channel->noteOff(data1, value);
        case 0x9:
            return data2 ? channel->noteOn(data1, value) : channel->noteOff(data1, 0.0f);
        case 0xA:
            return channel->polyPressure(data1, value);
        case 0xB:
            return decodeController(channels_[slot], *channel, data1, data2);
        case 0xC:
            return channel->programChange(channels_[slot].bank, data1);
        case 0xD:
            return channel->channelPressure(static_cast<float>(data1) * kDataScale);
        case 0xE:
            return channel->pitchBend(static_cast<float>(data2 * 128 + data1) * kBendScale - 0.5f);
        default:
            return;
    }
}

// Bank select belongs to the record and never reaches a map.
void MidiDecoder::decodeController(Record& record, AbstractChannelEventReceiver& channel, int number,
                                   int data2) {
    switch (number) {
        case kBankSelectMsb:
            record.bank = data2 * 128 + (record.bank & 127);
            break;
        case kBankSelectLsb:
            record.bank = data2 + (record.bank & 0x3F80);
            break;
        case kAllNotesOff:
            channel.noteOff(0, 0.0f);
            break;
        default:
            channel.controller(number, data2, static_cast<float>(data2) * kDataScale);
    }
}

}  // namespace vanta
