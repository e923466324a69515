#include "interface/controls/hotspot_button.hpp"

#include <memory>

#include "gui/tree/user_interface.hpp"

namespace vanta::interface {

void HotspotButton::click() {
    if (!openMenu) return;
    const int spot = hotSpotAt(lastMouse());
    gui::Rect area = localBounds();
    for (const HotSpot& each : hotSpots) {
        if (each.index == spot) area = each.area;
    }
    const std::shared_ptr<gui::EventRelay> relay = ui().relay();
    on = true;
    openMenu(spot, toWindow(gui::Point{area.left, area.bottom}));
    if (!relay->isOpen()) return;
    PopupButton::click();  // off again
}

}  // namespace vanta::interface
