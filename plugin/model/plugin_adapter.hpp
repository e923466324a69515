#pragma once

#include <span>

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
    /// The host is to hear of a parameter, `index` or GenericPlugin::kAllParameters.
    virtual void parameterUpdated(int index) = 0;
    /// The processor takes over all values together, at once. With `reset` they have nothing to do with those
    /// before, nor with what of these still waits for the model. On the thread that changed them.
    virtual void sendAllParameters(bool reset) = 0;
    /// The same, with reset, of values that the model is about to restore. On the thread that restores them.
    virtual void sendState(std::span<const float> values) = 0;
    virtual void presetNameChanged() {}
    /// Exchanges levels with the processor, on the listener's thread.
    virtual void syncLevels() = 0;
    /// Hands a value to the host.
    virtual void reportParameter(int index, float value) = 0;
};

}  // namespace vanta
