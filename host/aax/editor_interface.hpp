#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "gui/tree/user_interface.hpp"
#include "host/common/embedded_view.hpp"

namespace vanta {

class GenericPlugin;

/// What an interface tells whoever shows it to a host.
class EditorListener {
public:
    virtual ~EditorListener() = default;
    /// A user has moved a control; `value` in the parameter's own numbers.
    virtual void setParameter(int index, float value) = 0;
    virtual void beginGesture(int index) = 0;
    virtual void endGesture(int index) = 0;
    /// In the interface's own units. False: the host keeps its window as it is.
    virtual bool resize(int width, int height) = 0;
};

/// The interface of an instance, as far as an editor asks for it. It lives in a window of the host's and goes
/// with its end.
class EditorInterface {
public:
    virtual ~EditorInterface() = default;
    /// Pixels per unit.
    virtual double scale() const = 0;
    /// The parameter whose control is at a point, or -1.
    virtual int parameterAt(gui::Point point) const = 0;
    /// Draws and handles input.
    virtual void idle() = 0;
};

/// What an editor needs of the platform. Both may be empty: there is then no interface, or no way to ask.
struct EditorPlatform {
    /// Opens the interface, from 0, 0 to the size that the model wants. Null if that cannot be done.
    std::function<std::unique_ptr<EditorInterface>(EditorListener&, gui::UserInterface::MouseHook&,
                                                   GenericPlugin&, NativeWindow)>
        open;
    /// The scale of each monitor.
    std::function<std::vector<double>()> monitorScales;
};

}  // namespace vanta
