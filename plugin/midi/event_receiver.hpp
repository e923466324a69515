#pragma once

#include <array>
#include <memory>
#include <vector>

#include "foundation/property.hpp"
#include "foundation/realtime.hpp"
#include "plugin/midi/midi_controlled.hpp"

namespace vanta {

/// Listens beside a channel receiver. Values are 0 to 1, pitch bend -0.5 to 0.5.
class ChannelEventListener {
public:
    virtual ~ChannelEventListener() = default;
    virtual void channelPressure(float) {}
    virtual void polyPressure(int, float) {}
    virtual void controller(int, int, float) {}
    virtual void modulation(float) {}
    virtual void noteOff(int, float) {}
    virtual void noteOn(int, float) {}
    virtual void pitchBend(float) {}
};

/// Reacts to the events of one channel. Audio thread.
class AbstractChannelEventReceiver {
public:
    virtual ~AbstractChannelEventReceiver() = default;
    VANTA_REALTIME virtual void rawMessage(int /*status*/, int /*data1*/, int /*data2*/) {}
    VANTA_REALTIME virtual void channelPressure(float value);
    VANTA_REALTIME virtual void polyPressure(int key, float value);
    VANTA_REALTIME virtual void controller(int number, int rawValue, float value);
    VANTA_REALTIME virtual void noteOff(int key, float velocity);
    VANTA_REALTIME virtual void noteOn(int key, float velocity);
    VANTA_REALTIME virtual void pitchBend(float value);
    VANTA_REALTIME virtual void programChange(int /*bank*/, int /*program*/) {}

    std::vector<ChannelEventListener*> listeners;  ///< not owned
};

class SystemEventReceiver {
public:
    virtual ~SystemEventReceiver() = default;
    VANTA_REALTIME virtual void systemReset() = 0;
};

/// One slot for all channels and one per channel.
class AbstractMusicEventReceiver {
public:
    static constexpr std::size_t kSlots = 17;

    virtual ~AbstractMusicEventReceiver() = default;
    AbstractChannelEventReceiver* channelReceiver(std::size_t slot) const { return slots[slot]; }
    SystemEventReceiver* systemReceiver() const { return system_; }
    void setSystemReceiver(SystemEventReceiver* receiver) { system_ = receiver; }

protected:
    std::array<AbstractChannelEventReceiver*, kSlots> slots{};

private:
    SystemEventReceiver* system_ = nullptr;
};

/// Moves parameters with controllers and asks the host side for presets with program changes.
class DefaultChannelEventReceiver final : public AbstractChannelEventReceiver {
public:
    explicit DefaultChannelEventReceiver(MidiControlled& controlled) : controlled_(controlled) {}
    void controller(int number, int rawValue, float value) override;
    void programChange(int bank, int program) override;

private:
    MidiControlled& controlled_;
};

/// Keeps one channel receiver in the slot that is in use; slot 0 takes every channel.
class DefaultEventReceiver final : public AbstractMusicEventReceiver, public PropertyOwner {
public:
    explicit DefaultEventReceiver(MidiControlled& controlled);

    LimitedProperty<int> channel;

private:
    void propertyChanged(AbstractProperty& property) override;

    int previousChannel_ = 0;
    DefaultChannelEventReceiver receiver_;
};

}  // namespace vanta
