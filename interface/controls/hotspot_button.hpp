#pragma once

#include <functional>

#include "gui/controls/popup_button.hpp"

namespace vanta::interface {

/// Opens a menu below the hot spot that was pressed, or below itself where it has none. It is `on` while the
/// menu is open.
class HotspotButton : public gui::PopupButton {
public:
    using PopupButton::PopupButton;

    /// Shows the menu of a hot spot, -1 for the whole button, at a point of the window. Returns when the menu
    /// has gone; the interface may have gone with it.
    std::function<void(int spot, gui::Point windowPoint)> openMenu;

    void click() override;
};

}  // namespace vanta::interface
