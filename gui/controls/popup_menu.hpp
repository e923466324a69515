#pragma once

#include "gui/controls/menu.hpp"
#include "gui/graphics/geometry.hpp"

namespace vanta::gui {

class UserInterface;

/// A menu that pops up over the window. The platform shows it.
class PopupMenu : public Menu {
public:
    explicit PopupMenu(UserInterface& interface) : ui_(interface) {}

    /// Before the menu opens, for whoever fills it.
    NotifyEvent onOpen;
    /// Shows the visible items at a point of the window, on the interface's thread, until one is chosen or
    /// the user turns away. What is chosen is picked when the menu has gone. Afterwards the interface may
    /// have gone.
    void show(Point point);

protected:
    /// The item chosen, or null. Gives the root's lock away while it waits, and comes back, with null, when
    /// the window dies.
    virtual MenuItem* choose(Point point) = 0;
    UserInterface& ui() const { return ui_; }

private:
    UserInterface& ui_;
};

}  // namespace vanta::gui
