#pragma once

#include <optional>

#include "gui/x11/x11_interface.hpp"
#include "host/common/embedded_view.hpp"
#include "interface/layout/vanta_interface.hpp"

namespace vanta {

/// The interface of an instance in a window, embedded or of its own. The host's main thread. Sizes are
/// pixels.
class EditorWindow {
public:
    /// It shows `model`, and asks `editor` for all that a host does. `parent` 0 makes a window of its own.
    /// `hostScale` is the pixels per unit that the host wants, or 0. Throws std::runtime_error if there is no
    /// display or no such parent.
    EditorWindow(GenericPlugin& model, interface::Editor& editor, NativeWindow parent, double hostScale);

    gui::X11Interface& ui() { return ui_; }
    void setScale(double hostScale);
    double scale();
    ViewSize size();
    /// Of so many units.
    ViewSize pixels(InterfaceSize size);
    ViewSize nearestSize(ViewSize wanted);
    void resize(ViewSize size);
    /// At a point of the window, in units; -1 for none.
    int parameterAt(gui::Point point);
    bool keyPressed(const ViewKey& key);
    /// The screen, in units.
    InterfaceSize workArea();

private:
    gui::X11Desktop desktop_;
    GenericPlugin& model_;
    gui::X11Interface ui_;
    std::optional<interface::VantaInterface> interface_;
};

/// The pixels per unit that a window has where a host wants so many, or 0 if it says nothing: then those of
/// the desktop.
double editorScale(double hostScale);

}  // namespace vanta
