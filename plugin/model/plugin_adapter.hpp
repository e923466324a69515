#pragma once

#include "plugin/midi/midi_message.hpp"

namespace vanta {

/// What a model calls on the host side, on its owner thread unless stated otherwise.
class PluginAdapter {
public:
    virtual ~PluginAdapter() = default;
    /// The controller map that processors follow has changed. On the thread that changed it.
    virtual void midiMapChanged() = 0;
    virtual void reportLatency() = 0;
    virtual void sendMidi(const MidiMessage& message) = 0;
    /// `index` or GenericPlugin::kAllParameters. With `reset` the new values have nothing to do with the old
    /// ones.
    virtual void parameterUpdated(int index, bool reset) = 0;
    virtual void presetNameChanged() {}
    /// Exchanges levels with the processor, on the listener's thread.
    virtual void syncLevels() = 0;
    /// Hands a value to the host.
    virtual void reportParameter(int index, float value) = 0;
};

}  // namespace vanta
