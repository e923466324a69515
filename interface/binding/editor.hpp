#pragma once

#include <optional>

#include "plugin/settings/plugin_settings.hpp"

namespace vanta::interface {

/// What an interface asks of the host that shows it. On the interface's thread. Whoever has no host, as a
/// program of its own, does what it can and refuses the rest.
class Editor {
public:
    virtual ~Editor() = default;

    /// A user takes hold of a parameter, moves it, and lets go. The value itself reaches the host by the
    /// model's adapter, before `gestureMoved`.
    virtual void beginGesture(int parameter) = 0;
    virtual void gestureMoved(int /*parameter*/, float /*value*/) {}
    virtual void endGesture(int parameter) = 0;

    /// Whether the window can take any size while it is open.
    virtual bool canResize() const = 0;
    /// Logical units. False: the window stays as it is.
    virtual bool resize(InterfaceSize size) = 0;
    /// Of the monitor that the window is on, without what the desktop keeps for itself; logical units.
    /// Nothing if that is not known.
    virtual std::optional<InterfaceSize> workArea() const { return {}; }
    /// False: the host has nothing to do with it, the window does it itself.
    virtual bool toggleFullScreen() { return false; }
    /// Other controls stand for the parameters than before, for hosts that mark them.
    virtual void refreshView() {}
};

}  // namespace vanta::interface
