#pragma once

#include <vector>

#include "gui/tree/key_press.hpp"
#include "gui/x11/x11_display.hpp"

namespace vanta::gui {

/// Makes key presses out of X's, with dead keys and input methods where there are any.
class X11Keys {
public:
    explicit X11Keys(X11Display& display);
    ~X11Keys();
    X11Keys(const X11Keys&) = delete;
    X11Keys& operator=(const X11Keys&) = delete;

    /// Which window is typed into; 0 for none.
    void setWindow(Window window);
    /// Empty for what is no key of ours; several for a text that was composed.
    std::vector<KeyPress> read(XKeyEvent& event);

private:
    X11Display& display_;
    XIM method_;             ///< null where there is none: then Latin-1 is all that can be typed
    XIC context_ = nullptr;  ///< of the window
};

}  // namespace vanta::gui
