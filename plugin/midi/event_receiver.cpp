#include "plugin/midi/event_receiver.hpp"

namespace vanta {

namespace {

constexpr int kModulationWheel = 1;

}  // namespace

void AbstractChannelEventReceiver::channelPressure(float value) {
    for (auto* listener : listeners) listener->channelPressure(value);
}

void AbstractChannelEventReceiver::polyPressure(int key, float value) {
    for (auto* listener : listeners) listener->polyPressure(key, value);
}

void AbstractChannelEventReceiver::controller(int number, int rawValue, float value) {
    for (auto* listener : listeners) {
        listener->controller(number, rawValue, value);
        if (number == kModulationWheel) listener->modulation(value);
    }
}

void AbstractChannelEventReceiver::noteOff(int key, float velocity) {
    for (auto* listener : listeners) listener->noteOff(key, velocity);
}

void AbstractChannelEventReceiver::noteOn(int key, float velocity) {
    for (auto* listener : listeners) listener->noteOn(key, velocity);
}

void AbstractChannelEventReceiver::pitchBend(float value) {
    for (auto* listener : listeners) listener->pitchBend(value);
}

void DefaultChannelEventReceiver::controller(int number, int rawValue, float value) {
    controlled_.controllerChanged(number, value);
    AbstractChannelEventReceiver::controller(number, rawValue, value);
}

void DefaultChannelEventReceiver::programChange(int bank, int program) {
    controlled_.programChanged(bank, program);
}

DefaultEventReceiver::DefaultEventReceiver(MidiControlled& controlled)
    : channel(this, 0, static_cast<int>(kSlots) - 1, 0), receiver_(controlled) {
    slots[0] = &receiver_;
}

void DefaultEventReceiver::propertyChanged(AbstractProperty&) {
    slots[static_cast<std::size_t>(previousChannel_)] = nullptr;
    slots[static_cast<std::size_t>(channel.value())] = &receiver_;
    previousChannel_ = channel;
}

}  // namespace vanta
