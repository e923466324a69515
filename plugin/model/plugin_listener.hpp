#pragma once

#include <optional>
#include <variant>

namespace vanta {

/// The value of a parameter has changed.
struct ParameterChanged {
    std::optional<int> index;  ///< nothing: any of them may have
};
/// The name, the path or the modified mark of the current preset.
struct PresetChanged {};
/// A MIDI controller was moved.
struct ControllerMoved {
    int number;
};
/// A restored state brought opaque bytes of its own.
struct ExtraStateReplaced {};
/// An instance of this process has changed the controller map that all of them share. On the owner thread.
struct ControllerMapChanged {};

/// What a model tells its listener. A plain value: a listener may carry it to a thread of its own.
using PluginEvent =
    std::variant<ParameterChanged, PresetChanged, ControllerMoved, ExtraStateReplaced, ControllerMapChanged>;

/// An open interface.
class PluginListener {
public:
    virtual ~PluginListener() = default;
    /// On the thread of whatever caused the event, never the audio thread. None of the locks that instances
    /// share is held: it may take locks of its own, and open or close other instances.
    virtual void onEvent(const PluginEvent& event) = 0;
    /// The lock of the interface, held while the level proxies take over new readings.
    virtual void lockInterface() {}
    virtual void unlockInterface() {}
};

}  // namespace vanta
