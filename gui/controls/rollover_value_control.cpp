#include "gui/controls/rollover_value_control.hpp"

namespace vanta::gui {

void RolloverValueControl::mouseEnter() {
    hoveredOver_ = true;
    updateRollover();
    ValueControl::mouseEnter();
}

void RolloverValueControl::mouseLeave() {
    hoveredOver_ = false;
    updateRollover();
    ValueControl::mouseLeave();
}

void RolloverValueControl::propertyChanged(AbstractProperty& property) {
    if (&property == &highlighted) {
        updateRollover();
    } else if (&property == &restAlpha) {
        rollover_.restAlpha = restAlpha;
        markDirty();
    } else {
        ValueControl::propertyChanged(property);
    }
}

}  // namespace vanta::gui
