#include "gui/controls/control_bar.hpp"

namespace vanta::gui {

ControlBar::ControlBar(UserInterface& interface) : Control(interface) {
    anchor = anchor::kTop;
}

void ControlBar::childChanged(Control* child, Change change) {
    Control::childChanged(child, change);
    if (change == Change::Alpha || change == Change::OpaqueRegion) return;
    if (change == Change::Added && child) child->anchor = anchorChildren.value();
    layOut();
}

void ControlBar::resized() {
    Control::resized();
    layOut();
}

void ControlBar::propertyChanged(AbstractProperty& property) {
    Control::propertyChanged(property);
    if (&property == &alignment || &property == &reverse || &property == &layout || &property == &spacing ||
        &property == &margin) {
        layOut();
    }
}

void ControlBar::layOut() {
    if (layingOut_ || isDestroying()) return;
    layingOut_ = true;
    const bool isRow = layout == Layout::Row;
    const float room = isRow ? localBounds().width() : localBounds().height();
    float at = margin;
    for (std::size_t i = 0; i < children().size(); ++i) {
        Control& child = *children()[i];
        if (!child.visible) continue;
        const Rect& size = child.bounds.value();
        const float length = isRow ? size.width() : size.height();
        const float along = reverse ? room - at - length : at;
        if (isRow) {
            child.setPosition({along, alignedOffset(alignment, localBounds().height(), size.height())});
        } else {
            child.setPosition({alignedOffset(alignment, localBounds().width(), size.width()), along});
        }
        at += length + spacing;
    }
    layingOut_ = false;
}

}  // namespace vanta::gui
