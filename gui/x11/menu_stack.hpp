#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "gui/x11/menu_artwork.hpp"
#include "gui/x11/menu_panel.hpp"
#include "gui/x11/pointer_event.hpp"
#include "gui/x11/x11_keys.hpp"

namespace vanta::gui {

/// A menu and those of its submenus that are open, with the pointer and the keyboard to itself.
class MenuStack final : public X11EventTarget {
public:
    /// `at` is on the screen.
    MenuStack(X11Session& session, const Menu& menu, DevicePoint at);
    ~MenuStack() override;

    /// False: somebody else holds the pointer, and no press would ever end the menu.
    bool takePointer();
    bool isDone() const { return done_; }
    /// Null if the user has turned away.
    MenuItem* chosen() const { return chosen_; }

    void handleEvent(XEvent& event) override;
    void handlePointer(const PointerEvent& event) override;

private:
    /// The topmost panel there, or null.
    MenuPanel* panelAt(Point onScreen) const;
    void hover(Point onScreen);
    void released(const PointerEvent& event);
    void key(const KeyPress& press);
    void openSubmenu(bool byKey);
    void closeAbove(const MenuPanel& panel);
    void finish(MenuItem* item);

    X11Session& session_;
    const Menu& menu_;
    X11Keys keys_;
    MenuArtwork artwork_;
    std::vector<std::unique_ptr<MenuPanel>> panels_;  ///< from the menu to the innermost submenu
    std::optional<Point> openedAt_;                   ///< the pointer's first position
    bool armed_ = false;                              ///< the next release chooses, or ends the menu
    bool done_ = false;
    MenuItem* chosen_ = nullptr;
};

}  // namespace vanta::gui
