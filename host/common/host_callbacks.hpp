#pragma once

#include "foundation/realtime.hpp"

namespace vanta {

/// What an instance tells its host; each format says it in its own words.
class HostCallbacks {
public:
    /// What has happened to a value.
    enum class Edit {
        Begin,  ///< a user takes hold of the control
        Value,  ///< it has moved, by a user's hand between Begin and End, else by MIDI or a preset
        End,    ///< the user lets go
    };

    virtual ~HostCallbacks() = default;

    // On the thread that pumps.

    /// `value` in the parameter's own numbers. Only what the host does not know yet.
    virtual void parameterEdited(int index, Edit edit, float value) = 0;
    /// Around the edits of a change that concerns all parameters, such as a preset.
    virtual void beginEdits() {}
    virtual void endEdits() {}
    /// The host has restored a state and may have to read all values anew.
    virtual void stateRestored() {}
    /// Something that is stored with a session has changed, but for values of parameters.
    virtual void stateChanged() {}
    /// HostedPlugin::latency has changed.
    virtual void latencyChanged() = 0;
    /// A round of the thread of our own is over, if there is one: see HostedPlugin::pumpByThread.
    virtual void pumpedByThread() {}

    // On the audio thread.

    /// A MIDI controller was moved.
    VANTA_REALTIME virtual void controllerMoved(int /*number*/) {}

    // On any thread, the audio thread included.

    /// HostedPlugin::pump has something to do, and should be called on the host's main thread soon.
    VANTA_REALTIME virtual void pumpRequested() = 0;
};

}  // namespace vanta
