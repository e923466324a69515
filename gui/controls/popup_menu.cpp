#include "gui/controls/popup_menu.hpp"

#include "gui/tree/user_interface.hpp"

namespace vanta::gui {

void PopupMenu::show(Point point) {
    const std::shared_ptr<EventRelay> relay = ui_.relay();
    onOpen.raise(this);
    if (flattened().empty()) return;
    ui_.menuGuard().opened();
    MenuItem* chosen = choose(point);
    // A window that died under the menu has taken the menu along.
    if (!relay->isOpen()) return;
    ui_.menuGuard().closed();
    if (chosen && chosen->isSelectable()) chosen->picked();
}

}  // namespace vanta::gui
