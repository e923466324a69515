#include "gui/x11/x11_popup_menu.hpp"

#include <algorithm>

#include "gui/x11/menu_stack.hpp"
#include "gui/x11/x11_control.hpp"
#include "gui/x11/x11_interface.hpp"

namespace vanta::gui {

X11PopupMenu::X11PopupMenu(X11Interface& interface, std::shared_ptr<X11Session> session)
    : PopupMenu(interface), owner_(interface), session_(std::move(session)) {}

MenuItem* X11PopupMenu::choose(Point point) {
    // Locals: the interface may take this menu along.
    const std::shared_ptr<X11Session> session = session_;
    const std::shared_ptr<EventRelay> relay = owner_.relay();
    auto& root = static_cast<X11Control&>(owner_.rootControl());
    const DeviceRect window = areaOnScreen(session->display, root.window());
    if (window.isEmpty()) return nullptr;
    // The release of the press that opens the menu is the menu's.
    root.platformCancelMode();
    if (!relay->isOpen()) return nullptr;
    const float scale = session->backing.scale();
    MenuStack stack(*session, *this,
                    {window.left + toDevice(point.x, scale), window.top + toDevice(point.y, scale)});
    if (!stack.takePointer()) return nullptr;
    owner_.runNested([&] { return stack.isDone(); });
    if (!relay->isOpen()) return nullptr;
    MenuItem* chosen = stack.chosen();
    // Somebody may have changed the menu meanwhile.
    const std::vector<MenuItem*> items = flattened();
    return std::find(items.begin(), items.end(), chosen) == items.end() ? nullptr : chosen;
}

}  // namespace vanta::gui
